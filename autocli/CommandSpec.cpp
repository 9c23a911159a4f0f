#include "kestrel/autocli/CommandSpec.h"
