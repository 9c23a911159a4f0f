#include "kestrel/autocli/SimpleFormatter.h"
