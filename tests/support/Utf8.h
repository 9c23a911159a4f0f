// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string>

namespace Kestrel::Testing {

/// Returns the UTF-8 bytes of a code point, which is at most 0x10ffff. A surrogate is encoded like
/// any other code point, although such bytes are not valid.
inline std::string EncodeUtf8(std::uint32_t point) {
  if (point < 0x80) {
    return {static_cast<char>(point)};
  }
  const int following = point < 0x800 ? 1 : point < 0x10000 ? 2 : 3;
  const std::uint32_t marks[] = {0, 0xc0, 0xe0, 0xf0};
  std::string text(1, static_cast<char>(marks[following] | point >> 6 * following));
  for (int left = following - 1; left >= 0; --left) {
    text += static_cast<char>(0x80 | (point >> 6 * left & 0x3f));
  }
  return text;
}

}  // namespace Kestrel::Testing
