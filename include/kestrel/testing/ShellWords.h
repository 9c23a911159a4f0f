// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace Kestrel::Testing {

/// Splits text into words much as a shell does: at spaces and line feeds outside quotes, without
/// the quotes. A backslash outside single quotes is removed and quotes the next byte. Expansions
/// are not performed.
inline std::vector<std::string> SplitShellWords(const std::string& text) {
  std::vector<std::string> words;
  bool isOpen = false;
  char quote = '\0';
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (quote == '\0' && (c == ' ' || c == '\n')) {
      isOpen = false;
      continue;
    }
    if (!isOpen) {
      words.emplace_back();
      isOpen = true;
    }
    if (c == quote) {
      quote = '\0';
    } else if (quote == '\0' && (c == '\'' || c == '"')) {
      quote = c;
    } else if (c == '\\' && quote != '\'' && i + 1 < text.size()) {
      words.back() += text[++i];
    } else {
      words.back() += c;
    }
  }
  return words;
}

}  // namespace Kestrel::Testing
