// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Kestrel::Host {

/// One paragraph of a file in the form that dpkg and apt use for their data: lines "Name: value",
/// each with the lines after it that begin with white space. It points into the text that it was
/// made from.
class ControlStanza {
 public:
  /// Throws KestrelException if a line is not a field.
  explicit ControlStanza(std::string_view text);

  std::string_view GetText() const { return text_; }

  /// The value of a field, trimmed; lines after its first one keep their indentation. Empty when
  /// there is no such field. The case of a name does not matter.
  std::string_view Get(std::string_view name) const;

  /// The first line of a value.
  std::string_view GetFirstLine(std::string_view name) const;

  /// The pieces of a value between commas, trimmed.
  std::vector<std::string> GetList(std::string_view name) const;

 private:
  std::string_view text_;
  std::vector<std::pair<std::string_view, std::string_view>> fields_;
};

/// A line of a damaged file for a message: its start, safe to print.
std::string ShownLine(std::string_view line);

/// Calls `use` for each paragraph of `text`, the contents of the file at `path`.
///
/// A program that writes such a file ends each paragraph with an empty line. Without one at the
/// end the file was cut: that is an error, for a shorter answer would look like a whole one.
/// Throws KestrelException with the path.
void ReadControlFile(const std::string& path, std::string_view text,
                     const std::function<void(const ControlStanza&)>& use);

}  // namespace Kestrel::Host
