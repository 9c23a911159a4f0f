#include "kestrel/callspec/InputSpec.h"
