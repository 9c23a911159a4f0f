#include "kestrel/autocli/InternalPlugin.h"
