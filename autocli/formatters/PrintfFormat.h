// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::AutoCli {

/// A printf format that a user gave, taken apart, so that it can do no harm.
///
/// It may hold text, "%%", "%m" and one conversion of the value, or several that all name it as
/// "%1$..": one of d i o u x X c with any length modifier for an integer or a boolean, s for a
/// string, with all flags and with width and precision as numbers.
class PrintfFormat {
 public:
  /// Takes `format` apart; it ends at its first NUL byte.
  explicit PrintfFormat(const std::string& format);

  /// Sets `text` to `value` printed, and returns 0; or returns the number of the system's error,
  /// EINVAL for a format that does not fit the value. The text is cut at the length of the format
  /// + the length of the value's plain text + 64 bytes, and ends at its first NUL byte. A value
  /// that is neither integer, boolean nor string gives the empty text.
  int Print(const MetaObj::MetaObject& value, std::string& text) const;

 private:
  /// A run of literal text and the conversion behind it.
  struct Piece {
    std::string literal;
    std::string flags;
    long width = -1;  // -1: none given
    long precision = -1;
    std::string modifier;
    char conversion = 0;  // 0: none follows
  };
  class Parser;
  class Printer;

  bool Fits(bool isText) const;
  bool HasOverflow() const;

  std::vector<Piece> pieces_;
  std::size_t size_;
  bool isValid_;
};

}  // namespace Kestrel::AutoCli
