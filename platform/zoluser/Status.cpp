#include <cstring>

#include "kestrel/platform/Zoluser.h"

const char* ZoluserStatus_CodeToString(ZoluserStatus status) { return std::strerror(status); }
