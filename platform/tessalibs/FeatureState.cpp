#include "kestrel/platform/TessaLibs.h"

namespace {

unsigned long initCalls = 0;

}  // namespace

void FeatureState_InitDeltaMode() { ++initCalls; }

unsigned long FeatureState_CountInitCalls() { return initCalls; }
