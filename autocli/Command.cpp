#include "kestrel/autocli/Command.h"
