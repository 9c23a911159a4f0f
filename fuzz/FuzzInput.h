// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace Kestrel::Fuzz {

/// Reads the bytes of one input from front to back.
///
/// Inputs are lines of text, so that a person can read and write seeds. At the end of the input
/// every line is empty.
class FuzzInput {
 public:
  FuzzInput(const std::uint8_t* data, std::size_t size)
      : rest_(reinterpret_cast<const char*>(data), size) {}

  bool IsEmpty() const { return rest_.empty(); }

  /// Takes the next line, without its newline.
  std::string_view TakeLine() {
    const std::size_t end = std::min(rest_.find('\n'), rest_.size());
    const std::string_view line = rest_.substr(0, end);
    rest_.remove_prefix(std::min(end + 1, rest_.size()));
    return line;
  }

  /// Takes the next line; "\n" in it becomes a newline and "\0" a NUL byte.
  std::string TakeText() {
    std::string text;
    for (std::string_view line = TakeLine(); !line.empty();) {
      const bool isNewline = line.substr(0, 2) == "\\n";
      const bool isNul = line.substr(0, 2) == "\\0";
      text += isNewline ? '\n' : isNul ? '\0' : line.front();
      line.remove_prefix(isNewline || isNul ? 2 : 1);
    }
    return text;
  }

  /// Takes the next line and returns the number at its start, clamped to the bounds.
  int TakeNumber(int minimum, int maximum) {
    const long number = std::strtol(std::string(TakeLine()).c_str(), nullptr, 10);
    return static_cast<int>(std::clamp<long>(number, minimum, maximum));
  }

  /// Takes the rest of the input.
  std::string TakeRest() {
    const std::string rest(rest_);
    rest_ = {};
    return rest;
  }

 private:
  std::string_view rest_;
};

}  // namespace Kestrel::Fuzz
