#include "kestrel/autocli/CliDispatcher.h"
