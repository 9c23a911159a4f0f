// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Kestrel::Formats {

/// A Unicode character at the beginning of a string.
struct Character {
  char32_t code = 0;
  std::size_t size = 0;  ///< its bytes in UTF-8; 0 if the string does not begin with a character
};

/// Returns the character at the beginning of `text`, which must not be empty. Surrogates, overlong
/// forms and numbers beyond U+10FFFF are not valid characters.
Character FirstCharacter(std::string_view text);

/// Appends `code` to `text` as UTF-8.
void AppendCharacter(char32_t code, std::string& text);

/// Returns `text` for a message on one line: control characters and bytes that are not UTF-8 become
/// `\xNN` or `\u{NNNN}`.
std::string ShownText(std::string_view text);

}  // namespace Kestrel::Formats
