#include "callspec/TextValue.h"
