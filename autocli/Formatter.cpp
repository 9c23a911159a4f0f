#include "kestrel/autocli/Formatter.h"
