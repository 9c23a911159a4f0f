#include "kestrel/metaobj/MetaList.h"
