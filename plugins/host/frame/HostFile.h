// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>
#include <vector>

namespace Kestrel::Host {

/// The folders in which the kernel publishes its data. Readers take the folder as an argument, so
/// that a test can pass another one.
extern const char* const kProc;
extern const char* const kSys;

/// The whole content of a file. Nothing, with `errno` set, when it cannot be opened or read to its
/// end.
std::optional<std::string> ReadFile(const std::string& path);

/// The whole content of a file that must be readable. Throws KestrelException with the path and the
/// system's text.
std::string ReadRequiredFile(const std::string& path);

/// The content of a file of one line, trimmed; empty when it cannot be read.
std::string ReadLine(const std::string& path);

/// The names in a folder without "." and "..", in byte order; none when it cannot be read.
std::vector<std::string> ListFolder(const std::string& path);

/// Throws KestrelException when the folder is missing or empty. A kernel folder that is not mounted
/// is, and a list made from it would look as if there were nothing to list.
void RequireEntries(const std::string& folder);

/// The target of a symbolic link; nothing when `path` is no link or cannot be read.
std::optional<std::string> ReadLink(const std::string& path);

}  // namespace Kestrel::Host
