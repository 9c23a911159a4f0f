#include "kestrel/autocli/NamespaceNode.h"
