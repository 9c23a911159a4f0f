// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <list>
#include <string>

namespace Kestrel::AutoCli {

/// Returns `words`, joined with a space.
inline std::string JoinWords(const std::list<std::string>& words) {
  std::string text;
  const char* separator = "";
  for (const std::string& word : words) {
    text += separator;
    text += word;
    separator = " ";
  }
  return text;
}

}  // namespace Kestrel::AutoCli
