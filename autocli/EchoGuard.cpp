#include "autocli/EchoGuard.h"
