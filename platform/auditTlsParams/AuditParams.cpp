#include "kestrel/platform/AuditTls.h"
