// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string_view>
#include <vector>

namespace Kestrel::Lint {

enum class Severity { Error, Warning, Note, Info };

/// Returns the word for a severity in a report, such as "error".
const char* WordOf(Severity severity);

struct Rule {
  const char* id;
  Severity severity;
  /// The output of `--explain`: what the rule reports, why it matters and what to do.
  const char* explanation;
};

/// Returns all rules, in byte order of their identifiers.
const std::vector<Rule>& GetRules();

/// Returns the rule with an identifier, or null.
const Rule* FindRule(std::string_view id);

}  // namespace Kestrel::Lint
