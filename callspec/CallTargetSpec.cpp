#include "kestrel/callspec/CallTargetSpec.h"
