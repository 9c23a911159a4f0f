// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/callspec/Input.h>

#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Host {

/// Whether `name` matches `pattern`. In the pattern, * matches any number of bytes, including none;
/// no other character is special.
bool MatchesNamePattern(std::string_view name, std::string_view pattern);

/// The names and patterns that the user gave for a parameter. A row is listed if one of them
/// matches, or if the user gave none.
class NameFilter {
 public:
  NameFilter(const CallSpec::Input& input, const char* parameter);

  bool Accepts(std::string_view name) const;

 private:
  std::vector<std::string> patterns_;
};

}  // namespace Kestrel::Host
