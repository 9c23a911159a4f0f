#include "kestrel/metaobj/MetaInt.h"
