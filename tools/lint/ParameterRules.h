// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

#include "kestrel/callspec/ParameterSpec.h"

namespace Kestrel::Lint {

/// A mistake in a parameter that the library accepts.
struct ParameterFault {
  enum class Part { Whole, Description, Constraint };

  const char* rule;
  Part part;
  std::string what;
  std::string advice;
};

/// Returns the mistakes in a parameter, such as a name that cannot be typed, a bad description, or
/// a constraint that accepts nothing or everything.
std::vector<ParameterFault> FindParameterFaults(const CallSpec::ParameterSpec& parameter);

}  // namespace Kestrel::Lint
