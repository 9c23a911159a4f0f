#include "kestrel/callspec/CallTarget.h"
