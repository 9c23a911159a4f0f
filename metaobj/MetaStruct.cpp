#include "kestrel/metaobj/MetaStruct.h"
