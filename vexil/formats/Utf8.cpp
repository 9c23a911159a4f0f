// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/formats/Utf8.h"

#include <cstdio>

namespace Kestrel::Formats {

namespace {

bool IsControl(char32_t code) { return code < 0x20 || (code >= 0x7f && code < 0xa0); }

// Whether the character changes the direction or the line breaks of the text after it.
bool IsInvisible(char32_t code) {
  return (code >= 0x200b && code <= 0x200f) || (code >= 0x2028 && code <= 0x202e) ||
         (code >= 0x2060 && code <= 0x2069) || code == 0x61c || code == 0xfeff;
}

std::string Hex(unsigned number) {
  char text[16];
  std::snprintf(text, sizeof text, "%02x", number);
  return text;
}

}  // namespace

std::string ShownText(std::string_view text) {
  std::string shown;
  while (!text.empty()) {
    const Character next = FirstCharacter(text);
    if (next.size == 0) {
      shown += "\\x" + Hex(static_cast<unsigned char>(text[0]));
      text.remove_prefix(1);
      continue;
    }
    if (IsControl(next.code) || IsInvisible(next.code)) {
      shown += "\\u{" + Hex(next.code) + "}";
    } else {
      shown += text.substr(0, next.size);
    }
    text.remove_prefix(next.size);
  }
  return shown;
}

}  // namespace Kestrel::Formats
