#include "kestrel/metaobj/MetaBool.h"
