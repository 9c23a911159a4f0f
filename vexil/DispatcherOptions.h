// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

namespace Kestrel::Vexil {

/// An option of the tool itself, which precedes the path.
struct DispatcherOption {
  /// Without dashes; a short option has one letter.
  std::string name;
  std::string description;
  bool hasValue = false;
  bool isRepeatable = false;
};

/// Returns all options, in byte order of their names.
const std::vector<DispatcherOption>& GetDispatcherOptions();

/// Returns the option with exactly this name, or null.
const DispatcherOption* FindDispatcherOption(const std::string& name);

}  // namespace Kestrel::Vexil
