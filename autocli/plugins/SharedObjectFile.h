// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace Kestrel::AutoCli {

/// Returns whether `path` is a shared object that was cut short: a segment that its headers declare
/// extends beyond the end of the file. The loader maps such a file without a check, and SIGBUS then
/// ends the process.
///
/// Returns false for everything else, including files that the loader itself rejects: one that ends
/// within its headers, and one whose header has another word size, byte order or type.
bool IsSharedObjectCutShort(const std::string& path);

/// Returns whether `path` is a shared object that refers to its own folder, because the name of a
/// library or a search path for libraries contains $ORIGIN. False if these strings cannot be read
/// or the loader rejects the header.
bool UsesOrigin(const std::string& path);

}  // namespace Kestrel::AutoCli
