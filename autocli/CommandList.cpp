#include "kestrel/autocli/CommandList.h"
