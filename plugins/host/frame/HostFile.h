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

/// Returns the content of a file. Returns nothing, with `errno` set, if the file cannot be opened
/// or read completely.
std::optional<std::string> ReadFile(const std::string& path);

/// Returns the content of a file; nothing if the file does not exist. Throws KestrelException with
/// the path and the system's message if it cannot be read for any other reason.
std::optional<std::string> ReadExistingFile(const std::string& path);

/// Returns the content of a file. Throws KestrelException with the path and the system's message if
/// it cannot be read.
std::string ReadRequiredFile(const std::string& path);

/// Returns the content of a file that has one line, without white space at its ends. Returns an
/// empty string if the file cannot be read.
std::string ReadLine(const std::string& path);

/// Returns the content of a file; nothing if the file does not exist or if its process or device
/// has gone (see IsAbsence). Throws KestrelException for any other error, such as a missing
/// permission.
std::optional<std::string> ReadOptionalFile(const std::string& path);

/// Throws KestrelException with the reason if this process cannot open the file to read it.
void RequireReadable(const std::string& path);

/// Whether an error number of a failed call says that the file or folder does not exist, or that
/// its process or device has gone.
bool IsAbsence(int error);

/// Returns the names in a folder except "." and "..", in byte order; none if the folder cannot be
/// read.
std::vector<std::string> ListFolder(const std::string& path);

/// Like ListFolder, but returns nothing, with `errno` set, if the folder cannot be opened or read
/// completely.
std::optional<std::vector<std::string>> ReadFolder(const std::string& path);

/// Like ListFolder, but throws KestrelException if the folder cannot be read.
std::vector<std::string> ListRequiredFolder(const std::string& path);

/// Like ListFolder, but returns nothing if there is no such folder, or if its process or device has
/// gone (see IsAbsence). Throws KestrelException for any other error.
std::optional<std::vector<std::string>> ListOptionalFolder(const std::string& path);

/// Whether there is anything at `path`, even if it is a link whose target is missing. Throws
/// KestrelException if that cannot be determined.
bool Exists(const std::string& path);

/// Throws KestrelException if the folder is missing, unreadable or empty. If a folder of the kernel
/// is empty, nothing is mounted there; that must not be mistaken for a system with nothing to list.
void RequireEntries(const std::string& folder);

/// Returns the target of a symbolic link. Returns nothing, with `errno` set, if there is no
/// readable link at `path`.
std::optional<std::string> ReadLink(const std::string& path);

}  // namespace Kestrel::Host
