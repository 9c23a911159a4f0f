#include "kestrel/callspec/OutputSpec.h"
