// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/callspec/Input.h>

#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Host {

/// Whether `name` is `pattern`. In the pattern, * stands for any bytes, or none; no other character
/// is special.
bool MatchesNamePattern(std::string_view name, std::string_view pattern);

/// The names and patterns that the user gave for a parameter. A row is listed when one of them
/// matches, or when none was given.
class NameFilter {
 public:
  NameFilter(const CallSpec::Input& input, const char* parameter);

  bool Accepts(std::string_view name) const;

 private:
  std::vector<std::string> patterns_;
};

}  // namespace Kestrel::Host
