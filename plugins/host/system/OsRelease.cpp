// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/OsRelease.h"

#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {
namespace {

// Removes quotes. A backslash quotes the next character, except within single quotes.
std::string Unquote(std::string_view text) {
  std::string value;
  char quote = '\0';
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char letter = text[i];
    if (letter == '\\' && quote != '\'' && i + 1 < text.size()) {
      value += text[++i];
    } else if (letter == quote) {
      quote = '\0';
    } else if (quote == '\0' && (letter == '"' || letter == '\'')) {
      quote = letter;
    } else {
      value += letter;
    }
  }
  return value;
}

}  // namespace

std::string ParseOsRelease(std::string_view text, std::string_view key) {
  std::string value;
  for (const std::string_view untrimmed : SplitLines(text)) {
    const std::string_view line = Trim(untrimmed);
    if (StartsWith(line, key) && line.size() > key.size() && line[key.size()] == '=') {
      value = Unquote(line.substr(key.size() + 1));
    }
  }
  return value;
}

std::string ReadDistributionName(const std::string& root) {
  auto text = ReadOptionalFile(root + "/etc/os-release");
  if (!text) {
    text = ReadOptionalFile(root + "/usr/lib/os-release");
  }
  if (!text) {
    return {};
  }
  std::string name = ParseOsRelease(*text, "PRETTY_NAME");
  return name.empty() ? ParseOsRelease(*text, "NAME") : name;
}

}  // namespace Kestrel::Host
