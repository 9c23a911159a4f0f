// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// A shared object without the entry point of a plug-in.

#include <kestrel/Export.h>

extern "C" KESTREL_API int SomethingElse();

int SomethingElse() { return 1; }
