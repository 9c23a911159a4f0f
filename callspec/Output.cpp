#include "kestrel/callspec/Output.h"
