// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace Kestrel::AutoCli {

/// Returns whether `path` is a shared object that was cut short: a segment that its headers declare
/// extends beyond the end of the file. The loader maps such a file without a check, and SIGBUS then
/// ends the process.
///
/// Returns false for everything else, including the files that the loader itself rejects: one that
/// ends within its headers, and one whose header is not for this machine.
bool IsSharedObjectCutShort(const std::string& path);

/// Returns whether `path` is a shared object that refers to its own folder, because the name of a
/// library or a search path for libraries contains $ORIGIN. False for a file that was cut short or
/// that the loader rejects.
bool UsesOrigin(const std::string& path);

}  // namespace Kestrel::AutoCli
