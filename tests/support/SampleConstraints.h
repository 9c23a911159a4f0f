// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "kestrel/callspec/ParameterConstraint.h"

namespace Kestrel::Testing {

using CallSpec::ParameterConstraint;

/// Allows the integers from `min` to `max`.
inline std::shared_ptr<ParameterConstraint> Range(std::int64_t min, std::int64_t max) {
  const auto constraint = ParameterConstraint::New(CallSpec::IntRange);
  constraint->SetIntRange(min, max);
  return constraint;
}

/// Allows these strings.
inline std::shared_ptr<ParameterConstraint> Strings(const std::vector<std::string>& values) {
  const auto constraint = ParameterConstraint::New(CallSpec::StringEnum);
  for (const std::string& value : values) {
    constraint->AddStringEnum(value);
  }
  return constraint;
}

/// Allows the strings that match a regular expression.
inline std::shared_ptr<ParameterConstraint> Regex(const std::string& text) {
  const auto constraint = ParameterConstraint::New(CallSpec::StringRegex);
  constraint->SetStringRegex(text);
  return constraint;
}

}  // namespace Kestrel::Testing
