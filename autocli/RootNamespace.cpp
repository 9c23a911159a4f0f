#include "kestrel/autocli/RootNamespace.h"
