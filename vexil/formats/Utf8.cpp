// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/formats/Utf8.h"

#include <cstdio>

namespace Kestrel::Formats {

namespace {

bool IsFollowing(char byte) { return (static_cast<unsigned char>(byte) & 0xc0U) == 0x80; }

// Returns the number of bytes of a character that begins with `first`; 0 if none can.
std::size_t SizeOf(unsigned char first) {
  if (first < 0x80) {
    return 1;
  }
  if (first < 0xc2 || first > 0xf4) {
    return 0;
  }
  return first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
}

bool IsCharacter(char32_t code, std::size_t size) {
  constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool isSurrogate = code >= 0xd800 && code <= 0xdfff;
  return code >= kSmallest[size] && code <= 0x10ffff && !isSurrogate;
}

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

Character FirstCharacter(std::string_view text) {
  const auto first = static_cast<unsigned char>(text[0]);
  const std::size_t size = SizeOf(first);
  if (size <= 1 || size > text.size()) {
    return size == 1 ? Character{first, 1} : Character{};
  }
  char32_t code = first & (0x7fU >> size);
  for (std::size_t i = 1; i < size; ++i) {
    if (!IsFollowing(text[i])) {
      return {};
    }
    code = code << 6U | (static_cast<unsigned char>(text[i]) & 0x3fU);
  }
  return IsCharacter(code, size) ? Character{code, size} : Character{};
}

void AppendCharacter(char32_t code, std::string& text) {
  const unsigned following = code < 0x80 ? 0 : code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
  constexpr unsigned kMarks[] = {0, 0xc0, 0xe0, 0xf0};
  text += static_cast<char>(kMarks[following] | code >> 6 * following);
  for (unsigned left = following; left > 0; --left) {
    text += static_cast<char>(0x80U | (code >> 6 * (left - 1) & 0x3fU));
  }
}

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
