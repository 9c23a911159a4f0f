#include "kestrel/autocli/TableFormatter.h"
