// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

namespace Kestrel::Testing {

/// Returns names for tests of escapes: one with each byte but NUL, one with each character from
/// U+0080 to U+009F, and others that could forge a row of a table or control a terminal.
inline std::vector<std::string> NamesWithEveryByte() {
  std::vector<std::string> names = {"first\nsecond", "first\r\nsecond", "a\tb",
                                    "\x1b[2J",       "\xc2\xc2\x9b",    "\\x1b"};
  for (int byte = 1; byte < 256; ++byte) {
    names.push_back(std::string("a") + static_cast<char>(byte) + "b");
  }
  for (int byte = 0x80; byte < 0xa0; ++byte) {
    names.push_back(std::string("a\xc2") + static_cast<char>(byte) + "b");
  }
  return names;
}

}  // namespace Kestrel::Testing
