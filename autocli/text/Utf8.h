// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Kestrel::AutoCli {

/// A Unicode character at the beginning of a string.
struct Character {
  char32_t code = 0;
  std::size_t size = 0;  ///< in bytes of UTF-8; 0 if the string does not begin with a character
};

/// Returns the number of bytes of a character that begins with `first`; 0 if none can.
inline std::size_t SizeOfCharacter(unsigned char first) {
  if (first < 0x80) {
    return 1;
  }
  if (first < 0xc2 || first > 0xf4) {
    return 0;
  }
  return first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
}

/// Returns the character at the beginning of `text`, which must not be empty. Surrogates, overlong
/// forms and numbers beyond U+10FFFF are not valid characters.
inline Character FirstCharacter(std::string_view text) {
  const auto first = static_cast<unsigned char>(text[0]);
  const std::size_t size = SizeOfCharacter(first);
  if (size <= 1 || size > text.size()) {
    return size == 1 ? Character{first, 1} : Character{};
  }
  char32_t code = first & (0x7fU >> size);
  for (std::size_t i = 1; i < size; ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if ((byte & 0xc0U) != 0x80) {
      return {};
    }
    code = code << 6U | (byte & 0x3fU);
  }
  constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool isSurrogate = code >= 0xd800 && code <= 0xdfff;
  const bool isCharacter = code >= kSmallest[size] && code <= 0x10ffff && !isSurrogate;
  return isCharacter ? Character{code, size} : Character{};
}

/// Appends `code`, which must be at most U+1FFFFF, to `text` as UTF-8. Does not check whether it is
/// a valid character.
inline void AppendCharacter(char32_t code, std::string& text) {
  const unsigned following = code < 0x80 ? 0 : code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
  constexpr unsigned kMarks[] = {0, 0xc0, 0xe0, 0xf0};
  text += static_cast<char>(kMarks[following] | code >> 6 * following);
  for (unsigned left = following; left > 0; --left) {
    text += static_cast<char>(0x80U | (code >> 6 * (left - 1) & 0x3fU));
  }
}

}  // namespace Kestrel::AutoCli
