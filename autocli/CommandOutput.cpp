#include "kestrel/autocli/CommandOutput.h"
