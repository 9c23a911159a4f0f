// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/GroupFile.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <system_error>

#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {
namespace {

constexpr std::string_view kDatabase = "group";
constexpr std::string_view kFiles = "files";
constexpr std::string_view kSystemd = "systemd";

bool IsDigit(char letter) { return letter >= '0' && letter <= '9'; }

bool IsIgnored(std::string_view line) {
  const std::string_view text = Trim(line);
  return text.empty() || text[0] == '#';
}

// Parses "name:password:number" with or without ":members".
std::optional<GroupLine> ParseLine(std::string_view line) {
  constexpr std::string_view kSpecialStarts = "+- \t\v\f\r";
  const std::size_t nameEnd = line.find(':');
  const std::size_t start = line.find(':', nameEnd + 1) + 1;
  if (nameEnd == 0 || nameEnd == std::string_view::npos || start == 0 || start == line.size() ||
      kSpecialStarts.find(line[0]) != std::string_view::npos || !IsDigit(line[start])) {
    return std::nullopt;
  }
  GroupLine group = {0, line.substr(0, nameEnd)};
  const char* const end = line.data() + line.size();
  const auto [rest, error] = std::from_chars(line.data() + start, end, group.id);
  const bool isNumber = error == std::errc() && (rest == end || *rest == ':');
  return isNumber ? std::make_optional(group) : std::nullopt;
}

// Returns what follows "group:" in the only line that begins with it; nothing if there is no such
// line or more than one.
std::optional<std::string_view> FindSources(std::string_view text) {
  std::optional<std::string_view> found;
  for (const std::string_view line : SplitLines(text)) {
    const std::string_view setting = line.substr(0, line.find('#'));
    const std::size_t colon = setting.find(':');
    if (colon == std::string_view::npos || Trim(setting.substr(0, colon)) != kDatabase) {
      continue;
    }
    if (found) {
      return std::nullopt;
    }
    found = setting.substr(colon + 1);
  }
  return found;
}

// Whether an action, such as "[NOTFOUND=return]", leaves the first answer unchanged.
bool KeepsAnswer(std::string_view action) {
  const std::string word = LowerCase(action);
  return word == "[success=merge]" || word == "[success=return]" || word == "[notfound=return]";
}

}  // namespace

std::optional<std::vector<GroupLine>> ParseGroupFile(std::string_view text) {
  if (text.find('\0') != std::string_view::npos) {
    return std::nullopt;
  }
  std::vector<GroupLine> groups;
  groups.reserve(static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1);
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    if (const auto group = ParseLine(line)) {
      if (line[0] != '#') {
        groups.push_back(*group);
      }
    } else if (!IsIgnored(line)) {
      return std::nullopt;
    }
  }
  return groups;
}

GroupSources ParseGroupSources(std::string_view text) {
  const std::optional<std::string_view> setting = FindSources(text);
  const std::vector<std::string_view> words =
      setting ? SplitWords(*setting) : std::vector<std::string_view>();
  GroupSources sources;
  if (words.empty() || words[0] != kFiles) {
    return sources;
  }
  sources.isListComplete = true;
  for (const std::string_view word : words) {
    if (word[0] == '[' && !KeepsAnswer(word)) {
      return {};
    }
    sources.isListComplete &= word[0] == '[' || word == kFiles || word == kSystemd;
  }
  sources.isFileFirst = true;
  return sources;
}

}  // namespace Kestrel::Host
