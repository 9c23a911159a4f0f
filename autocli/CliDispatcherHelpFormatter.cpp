#include "kestrel/autocli/CliDispatcherHelpFormatter.h"
