// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/Words.h"

#include <algorithm>
#include <cstddef>

namespace Kestrel::Vexil {

Words SplitWords(std::string_view text, std::string_view separators) {
  Words words;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find_first_of(separators, begin), text.size());
    if (end > begin) {
      words.emplace_back(text.substr(begin, end - begin));
    }
    begin = end + 1;
  }
  return words;
}

std::string JoinWords(const Words& words, std::string_view separator) {
  std::string joined;
  for (const std::string& word : words) {
    joined += joined.empty() ? std::string_view() : separator;
    joined += word;
  }
  return joined;
}

}  // namespace Kestrel::Vexil
