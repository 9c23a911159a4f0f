#include "kestrel/callspec/Input.h"
