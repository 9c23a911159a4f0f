// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::AutoCli {

/// A printf format from the user, parsed and checked so that it can do no harm.
///
/// It may contain literal text, "%%", "%m", and either one conversion of the value or several that
/// all refer to it as "%1$". A conversion is d, i, o, u, x, X or c, with any length modifier, for
/// an integer or a boolean, and s for a string. All flags are allowed; width and precision must be
/// numbers.
class PrintfFormat {
 public:
  /// Parses `format` up to its first NUL byte.
  explicit PrintfFormat(const std::string& format);

  /// Prints `value` to `text` and returns 0, or returns an errno value: EINVAL if the format is
  /// invalid or does not fit the kind of the value, EOVERFLOW if a width or precision exceeds
  /// INT_MAX, or an error of the C library. The text is cut to the combined length of the format
  /// and `value.ToString()`, plus 64 bytes, and ends at its first NUL byte. For a value that is
  /// neither an integer, a boolean nor a string, the text is empty and 0 is returned.
  int Print(const MetaObj::MetaObject& value, std::string& text) const;

 private:
  /// Literal text and the conversion after it.
  struct Piece {
    std::string literal;
    std::string flags;
    long width = -1;      // -1: none
    long precision = -1;  // -1: none
    std::string modifier;
    char conversion = 0;  // 0: none
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
