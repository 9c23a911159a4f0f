// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>
#include <vector>

namespace Kestrel::Host {

// What may be missing, but must be readable if it is there. Each throws KestrelException with the
// path and the system's text for every other error.

/// Returns the content of a file, or nothing if there is no such file.
std::optional<std::string> ReadOptionalFile(const std::string& path);

/// Returns the names in a folder except "." and "..", in byte order, or nothing if there is no such
/// folder.
std::optional<std::vector<std::string>> ListOptionalFolder(const std::string& path);

/// Whether there is anything at `path`; a link counts even if its target is missing.
bool Exists(const std::string& path);

}  // namespace Kestrel::Host
