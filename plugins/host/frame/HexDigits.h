// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace Kestrel::Host {

/// Appends a byte as two lower-case hexadecimal digits.
inline void AppendHexDigits(unsigned char byte, std::string& text) {
  constexpr char kDigits[] = "0123456789abcdef";
  text += kDigits[byte >> 4];
  text += kDigits[byte & 0xf];
}

}  // namespace Kestrel::Host
