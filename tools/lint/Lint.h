// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <set>
#include <string>
#include <vector>

#include "tools/lint/Finding.h"

namespace Kestrel::Lint {

struct LintResult {
  /// In the order of `Finding`.
  std::vector<Finding> findings;
  /// A message for each file or folder that could not be read.
  std::vector<std::string> unreadable;
};

/// Examines descriptors and shared objects in the order of `paths`, as the loader would load them
/// into one tree. A folder stands for the plug-ins in it. Findings of the rules `suppressed` are
/// dropped.
LintResult LintFiles(const std::vector<std::string>& paths,
                     const std::set<std::string>& suppressed);

/// Returns 0 if there is no error or warning, 1 if there is one, 2 if something could not be read.
int StatusOf(const LintResult& result);

}  // namespace Kestrel::Lint
