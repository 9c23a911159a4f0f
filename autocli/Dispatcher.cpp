#include "kestrel/autocli/Dispatcher.h"
