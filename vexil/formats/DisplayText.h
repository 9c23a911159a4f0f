// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Formats {

/// How many columns of a terminal a character takes.
enum class WidthClass : unsigned char {
  Zero,    ///< it is drawn into the character before it
  Narrow,  ///< one
  Wide,    ///< two
  Hidden,  ///< unknown, or it acts on the terminal or on other characters: shown as an escape
};

WidthClass WidthClassOf(char32_t character);

/// The columns of a string. Terminals differ about emoji that are made of several characters.
struct TextWidth {
  std::size_t usual = 0;  ///< in most terminals; strings are aligned by it
  std::size_t max = 0;    ///< in any terminal; lines are limited by it

  TextWidth& operator+=(const TextWidth& other) {
    usual += other.usual;
    max += other.max;
    return *this;
  }
};

/// A line as it is written to a terminal. It may contain our own escape sequences.
struct DisplayLine {
  std::string text;
  TextWidth width;
};

inline constexpr std::size_t kUnlimitedWidth = std::numeric_limits<std::size_t>::max() / 4;

/// Begin and end an escape, so that it looks different from the same characters in the string
/// itself.
inline constexpr std::string_view kReverseOn = "\x1b[7m";
inline constexpr std::string_view kReverseOff = "\x1b[27m";

/// Returns the columns that `text` takes on one line. Hidden characters and bytes that are not
/// UTF-8 count as their escapes.
TextWidth MeasureText(std::string_view text);

/// Breaks `text` into lines of at most `maxWidth` columns, which must be at least 1. A line is
/// broken after a space or a wide character, or, if it has none, where it is full. Spaces at the
/// end of a line are dropped. There is at least one line.
///
/// Hidden characters are shown as `\n`, `\r`, `\t`, `\xNN` or `\u{NNNN}`, bytes that are not UTF-8
/// as `\xNN`. If `marksEscapes` is true, these are shown in reverse video.
std::vector<DisplayLine> BreakText(std::string_view text, std::size_t maxWidth, bool marksEscapes);

}  // namespace Kestrel::Formats
