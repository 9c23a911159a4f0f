// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/lint/Finding.h"

#include <string_view>
#include <tuple>

namespace Kestrel::Lint {

namespace {

auto KeyOf(const Finding& finding) {
  return std::make_tuple(std::string_view(finding.file), finding.position.line,
                         finding.position.column, std::string_view(finding.rule->id),
                         std::string_view(finding.message));
}

}  // namespace

bool operator<(const Finding& left, const Finding& right) { return KeyOf(left) < KeyOf(right); }

bool operator==(const Finding& left, const Finding& right) { return KeyOf(left) == KeyOf(right); }

}  // namespace Kestrel::Lint
