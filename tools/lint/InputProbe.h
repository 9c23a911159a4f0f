// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

namespace Kestrel::Lint {

/// A parameter that was read by a function for another type: it returns a value, and no message
/// says that the value means nothing.
struct Misreading {
  std::string parameter;
  std::string function;
};

/// Returns those since the last call.
///
/// This program defines the functions of `CallSpec::Input` that read numbers and booleans itself.
/// The loader searches the program before the library, so a shared object calls these.
std::vector<Misreading> TakeMisreadings();

}  // namespace Kestrel::Lint
