// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/platform/TessaLibs.h"

// There is no feature state to prepare without the host.
void FeatureState_InitDeltaMode() {}
