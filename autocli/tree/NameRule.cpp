// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/tree/NameRule.h"

#include <string>

#include "kestrel/autocli/Util.h"

// The whole name must match the regular expression "([a-z0-9]+[A-Z0-9]{0,1})+". Backtracking takes
// exponential time for a long name that fails near its end, so the code checks an equivalent rule:
// only ASCII letters and digits, at least one; the first is not an upper-case letter; no two
// upper-case letters in a row.

namespace Kestrel::AutoCli {

namespace {

bool IsLowerOrDigit(char c) { return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'); }

bool IsUpper(char c) { return c >= 'A' && c <= 'Z'; }

}  // namespace

bool MatchesNameRule(std::string_view name) {
  bool upperMayFollow = false;
  for (const char c : name) {
    if (IsLowerOrDigit(c)) {
      upperMayFollow = true;
      continue;
    }
    if (!IsUpper(c) || !upperMayFollow) {
      return false;
    }
    upperMayFollow = false;
  }
  return !name.empty();
}

bool AutoCli_IsValidName(const std::string& name) { return MatchesNameRule(name); }

}  // namespace Kestrel::AutoCli
