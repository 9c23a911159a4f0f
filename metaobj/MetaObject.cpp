#include "kestrel/metaobj/MetaObject.h"
