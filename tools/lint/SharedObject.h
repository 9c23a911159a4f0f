// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "tools/catalog/Catalog.h"

namespace Kestrel::Lint {

/// A fault of a shared object.
struct ObjectFault {
  std::string rule;
  std::string what;
  std::string advice;
};

struct ObjectReport {
  std::vector<ObjectFault> faults;
  /// What the shared object adds to the tree; empty when it cannot be loaded.
  Catalog::Tree tree;
  /// The formatters of all plug-ins, including the tool's own.
  std::vector<std::string> formatters;
};

/// Loads a shared object in a child process, after the plug-ins `before`, and examines everything
/// that it declares. The child is killed if it makes no progress for `patience`.
ObjectReport ExamineSharedObject(const std::string& file, const std::vector<std::string>& before,
                                 std::chrono::milliseconds patience);

}  // namespace Kestrel::Lint
