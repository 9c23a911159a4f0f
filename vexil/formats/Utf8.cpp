// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/formats/Utf8.h"

namespace Kestrel::Formats {

namespace {

bool IsControl(char32_t code) { return code < 0x20 || (code >= 0x7f && code < 0xa0); }

// Whether the character changes the direction or the line breaks of the text after it.
bool IsInvisible(char32_t code) {
  return (code >= 0x200b && code <= 0x200f) || (code >= 0x2028 && code <= 0x202e) ||
         (code >= 0x2060 && code <= 0x2069) || code == 0x61c || code == 0xfeff;
}

}  // namespace

std::string Hex(char32_t number, std::size_t minDigits, const char* digits) {
  std::string text;
  for (unsigned shift = 32; shift > 0;) {
    shift -= 4;
    const char32_t rest = number >> shift;
    if (rest != 0 || shift / 4 < minDigits) {
      text += digits[rest & 0xfU];
    }
  }
  return text;
}

std::string ShownText(std::string_view text) {
  std::string shown;
  while (!text.empty()) {
    const Character next = FirstCharacter(text);
    if (next.size == 0) {
      shown += "\\x" + Hex(static_cast<unsigned char>(text[0]), 2);
      text.remove_prefix(1);
      continue;
    }
    if (IsControl(next.code) || IsInvisible(next.code)) {
      shown += "\\u{" + Hex(next.code, 2) + "}";
    } else {
      shown += text.substr(0, next.size);
    }
    text.remove_prefix(next.size);
  }
  return shown;
}

}  // namespace Kestrel::Formats
