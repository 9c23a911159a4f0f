// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/metaobj/MetaString.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Host {

/// Where the kernel shows its data. Readers take the folder as an argument, so that a test can
/// show them another.
extern const char* const kProc;
extern const char* const kSys;

/// The whole text of a file; nothing when it cannot be opened or not be read to its end. `errno`
/// then tells why.
std::optional<std::string> ReadFile(const std::string& path);

/// The same for a file that must be there. Throws KestrelException with the path and the system's
/// text.
std::string ReadNeededFile(const std::string& path);

/// The names in a folder but "." and "..", in byte order; none when it cannot be read.
std::vector<std::string> ListFolder(const std::string& path);

/// Throws KestrelException when a folder of the kernel is missing or empty: then nothing is mounted
/// there, and a list made from it would only look as if there were nothing to list.
void RequireEntries(const std::string& folder);

/// Where a symbolic link leads; nothing when it is none or cannot be read.
std::optional<std::string> ReadLink(const std::string& path);

/// The number that is the whole of `text` but for blanks around it; nothing when that is none or
/// beyond 64 bits.
std::optional<long> ParseNumber(std::string_view text);

/// The numbers of a list like "0-3,8", as the kernel writes sets of processors; pieces that are
/// none are passed over.
std::vector<long> ParseNumberList(std::string_view text);

/// `text` without blanks and line ends at both ends.
std::string_view Trim(std::string_view text);

/// The pieces between `separator`s, the empty ones too.
std::vector<std::string_view> Split(std::string_view text, char separator);

/// The words between runs of blanks, tabs and line ends.
std::vector<std::string_view> SplitWords(std::string_view text);

/// The lines of `text`, without a last empty one.
std::vector<std::string_view> SplitLines(std::string_view text);

/// Text from outside as a value that is safe to print: control characters and bytes that are no
/// UTF-8 are written as \xHH.
std::shared_ptr<MetaObj::MetaString> OutsideText(std::string_view text);

/// The same for a text of several lines: tabs and line ends stay.
std::shared_ptr<MetaObj::MetaString> OutsideLines(std::string_view text);

}  // namespace Kestrel::Host
