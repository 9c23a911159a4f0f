#include "kestrel/autocli/FormatParameters.h"
