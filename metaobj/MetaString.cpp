#include "kestrel/metaobj/MetaString.h"
