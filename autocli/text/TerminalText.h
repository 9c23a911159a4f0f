// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <unistd.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace Kestrel::AutoCli {

/// Returns `text` with each control character except newline and tab shown as \xHH, where HH is its
/// code. The control characters are U+0000 to U+001F and U+007F to U+009F. Single bytes from 0x80
/// to 0x9F that are not part of a character are shown in the same way, because some terminals
/// interpret them too.
inline std::string WithVisibleControls(std::string_view text) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string shown;
  std::size_t left = 0;  // the number of bytes that continue a character
  for (std::size_t i = 0; i < text.size(); ++i) {
    auto byte = static_cast<unsigned char>(text[i]);
    const bool continues = left > 0 && (byte & 0xC0) == 0x80;
    left = continues ? left - 1 : byte >= 0xF0 ? 3 : byte >= 0xE0 ? 2 : byte >= 0xC3 ? 1 : 0;
    const bool isPair = byte == 0xC2 && i + 1 < text.size() &&
                        (static_cast<unsigned char>(text[i + 1]) & 0xE0) == 0x80;
    if (isPair) {
      byte = static_cast<unsigned char>(text[++i]);
    }
    const bool isControl = byte < 0x20 || (byte >= 0x7F && byte < 0xA0 && !continues);
    if (isControl && byte != '\n' && byte != '\t') {
      shown += {'\\', 'x', kDigits[byte / 16], kDigits[byte % 16]};
    } else {
      shown += text[i];
    }
  }
  return shown;
}

/// Returns `message` as it is written to a file descriptor. For a terminal, control characters are
/// made visible, because a message may quote input; otherwise the message is unchanged.
inline std::string MessageFor(int descriptor, std::string message) {
  return isatty(descriptor) == 1 ? WithVisibleControls(message) : message;
}

}  // namespace Kestrel::AutoCli
