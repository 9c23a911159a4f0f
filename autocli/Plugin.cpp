#include "kestrel/autocli/Plugin.h"
