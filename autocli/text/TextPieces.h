// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string_view>

namespace Kestrel::AutoCli {

/// Cuts a text at every separator, one piece at a time, without copying.
///
/// Empty pieces at the front and between two separators count; the empty piece behind a trailing
/// separator does not, and an empty text has no pieces: "a,,b," gives "a", "", "b".
class TextPieces {
 public:
  /// Looks at `text`, which must outlive the object.
  TextPieces(std::string_view text, char separator) : text_(text), separator_(separator) {}

  /// Sets `piece` to the next one; false when there is none left.
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
