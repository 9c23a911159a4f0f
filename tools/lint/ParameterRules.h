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

/// Names that cannot be typed, descriptions, and constraints that nothing or everything passes.
std::vector<ParameterFault> FindParameterFaults(const CallSpec::ParameterSpec& parameter);

}  // namespace Kestrel::Lint
