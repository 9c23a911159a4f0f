// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// A library that a plug-in needs.

extern "C" __attribute__((visibility("default"))) int OriginHelper_GetNumber();

int OriginHelper_GetNumber() { return 1; }
