// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/platform/TessaLibs.h"

namespace {

unsigned long initCalls = 0;

}  // namespace

void FeatureState_InitDeltaMode() { ++initCalls; }

unsigned long FeatureState_CountInitCalls() { return initCalls; }
