// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/types.h>

/// The functions that Kestrel uses from the host's base library. They have the host's names.

extern "C" {

/// Whether the `length` bytes at `buffer` are valid text. A length of -1 means up to the first NUL.
/// Encoding 0 is UTF-8.
bool Unicode_IsBufferValid(const void* buffer, ssize_t length, int encoding);

/// Returns a NUL-terminated copy of the `length` bytes at `buffer` with the invalid bytes escaped;
/// a length of -1 means up to the first NUL. The caller releases it with `free`. Null when memory
/// runs out.
char* Unicode_EscapeBuffer(const void* buffer, ssize_t length, int encoding);

/// Prepares the feature state of this process.
void FeatureState_InitDeltaMode(void);
}
