#include "kestrel/callspec/ParameterSpec.h"
