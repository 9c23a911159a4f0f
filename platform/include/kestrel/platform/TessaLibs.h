// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/types.h>

/// What the host's base library offers to this one, under the host's own names.

extern "C" {

/// Whether `length` bytes are valid text. A length of -1 means up to the first NUL.
/// Encoding 0 is UTF-8.
bool Unicode_IsBufferValid(const void* buffer, ssize_t length, int encoding);

/// A copy of `length` bytes, -1 as above, with every byte that is no part of valid text made
/// readable. Ended by a NUL and released with `free`; null when memory is short.
char* Unicode_EscapeBuffer(const void* buffer, ssize_t length, int encoding);

/// Prepares the feature state of this process.
void FeatureState_InitDeltaMode(void);
}
