#include "kestrel/autocli/Util.h"
