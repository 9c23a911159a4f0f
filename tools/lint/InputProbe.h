// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

namespace Kestrel::Lint {

/// A parameter that was read by a function for another type. Such a function returns a meaningless
/// value without any message.
struct Misreading {
  std::string parameter;
  std::string function;
};

/// Returns the misreadings since the last call.
///
/// This program has its own definitions of the functions of `CallSpec::Input` that read numbers and
/// booleans. The dynamic loader searches the program before the library, so a shared object calls
/// the program's definitions.
std::vector<Misreading> TakeMisreadings();

}  // namespace Kestrel::Lint
