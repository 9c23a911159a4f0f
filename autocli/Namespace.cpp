#include "kestrel/autocli/Namespace.h"
