// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace Kestrel::AutoCli {

/// Whether `path` is a shared object that ends before the last of what it says it is made of, as a
/// copy does that ran out of room. The loader maps such a file without a look at its size and is
/// then ended by SIGBUS. False for everything else, above all for what the loader itself refuses:
/// a file that ends within its headers, or one with a header that is not for this machine.
bool IsSharedObjectCutShort(const std::string& path);

}  // namespace Kestrel::AutoCli
