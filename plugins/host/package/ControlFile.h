// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Kestrel::Host {

/// A paragraph of a file in the format that dpkg and apt use for their data. It consists of lines
/// "Name: value", each of which continues on the following lines that begin with white space. It
/// refers to the text passed to the constructor, which must outlive it.
class ControlStanza {
 public:
  /// Throws KestrelException if a line is not a field.
  explicit ControlStanza(std::string_view text);

  std::string_view GetText() const { return text_; }

  /// Returns the trimmed value of a field; its continuation lines keep their indentation. Empty if
  /// there is no such field. Names are compared without regard to case.
  std::string_view Get(std::string_view name) const;

  /// Returns the first line of a value.
  std::string_view GetFirstLine(std::string_view name) const;

  /// Returns the pieces of a value between commas, trimmed; omits empty ones.
  std::vector<std::string> GetList(std::string_view name) const;

 private:
  std::string_view text_;
  std::vector<std::pair<std::string_view, std::string_view>> fields_;
};

/// Returns the start of a line of a damaged file, safe to print in a message.
std::string ShownLine(std::string_view line);

/// How the last paragraph of a file ends.
enum class LastStanza {
  EmptyLine,  ///< With an empty line, like all others.
  LineFeed,   ///< With a line feed; an empty line may follow.
};

/// Calls `use` for each paragraph of `text`, the content of the file at `path`.
///
/// If the last paragraph does not end as `last` says, the file is truncated: that is an error,
/// because a shorter answer would look like a complete one. Throws KestrelException with the path
/// for this error, for a line that is not a field, and for a KestrelException of `use`.
void ReadControlFile(const std::string& path, std::string_view text, LastStanza last,
                     const std::function<void(const ControlStanza&)>& use);

}  // namespace Kestrel::Host
