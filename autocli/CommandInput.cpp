#include "kestrel/autocli/CommandInput.h"
