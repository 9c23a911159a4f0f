#include "kestrel/callspec/ParameterConstraint.h"
