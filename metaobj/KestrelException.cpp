#include "kestrel/KestrelException.h"
