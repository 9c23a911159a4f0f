#include "kestrel/platform/Zoluser.h"
