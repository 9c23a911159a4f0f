#include "kestrel/autocli/OptionParser.h"
