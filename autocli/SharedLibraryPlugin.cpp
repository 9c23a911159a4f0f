#include "kestrel/autocli/SharedLibraryPlugin.h"
