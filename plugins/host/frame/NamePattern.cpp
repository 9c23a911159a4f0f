// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/NamePattern.h"

#include <algorithm>

#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {

bool MatchesNamePattern(std::string_view name, std::string_view pattern) {
  const std::size_t star = pattern.find('*');
  if (star == std::string_view::npos) {
    return name == pattern;
  }
  const std::size_t lastStar = pattern.rfind('*');
  const std::string_view end = pattern.substr(lastStar + 1);
  if (name.size() < star + end.size() || !StartsWith(name, pattern.substr(0, star)) ||
      name.substr(name.size() - end.size()) != end) {
    return false;
  }
  name = name.substr(star, name.size() - star - end.size());
  // Matching each piece as early as possible leaves the most room for the pieces after it.
  for (const std::string_view piece : Split(pattern.substr(star, lastStar - star), '*')) {
    const std::size_t found = name.find(piece);
    if (found == std::string_view::npos) {
      return false;
    }
    name.remove_prefix(found + piece.size());
  }
  return true;
}

NameFilter::NameFilter(const CallSpec::Input& input, const char* parameter) {
  input.GetParameterList(parameter, patterns_);
}

bool NameFilter::Accepts(std::string_view name) const {
  return patterns_.empty() ||
         std::any_of(patterns_.begin(), patterns_.end(), [name](const std::string& pattern) {
           return MatchesNamePattern(name, pattern);
         });
}

}  // namespace Kestrel::Host
