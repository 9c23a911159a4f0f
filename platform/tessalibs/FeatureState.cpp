#include "kestrel/platform/TessaLibs.h"
