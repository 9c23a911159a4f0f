// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string_view>

namespace Kestrel::AutoCli {

/// Splits a string at every separator, one piece at a time, without copying.
///
/// A piece may be empty, except after a trailing separator: the pieces of "a,,b," are "a", "" and
/// "b". The empty string has no pieces.
class TextPieces {
 public:
  /// Splits `text`, which is not copied and must outlive the object.
  TextPieces(std::string_view text, char separator) : text_(text), separator_(separator) {}

  /// Sets `piece` to the next piece. Returns false if there is none.
  bool Next(std::string_view& piece) {
    if (next_ >= text_.size()) {
      return false;
    }
    const std::size_t found = text_.find(separator_, next_);
    const std::size_t end = found == std::string_view::npos ? text_.size() : found;
    piece = text_.substr(next_, end - next_);
    next_ = end + 1;
    return true;
  }

 private:
  std::string_view text_;
  std::size_t next_ = 0;
  char separator_;
};

}  // namespace Kestrel::AutoCli
