#include "kestrel/autocli/CommandHelpFormatter.h"
