// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

#include "kestrel/callspec/ParameterSpec.h"

namespace Kestrel::Lint {

/// Returns the most dangerous values that a user may type for a parameter: for each way to mislead
/// a shell, a shortest value that the constraint accepts.
std::vector<std::string> MakeHostileValues(const CallSpec::ParameterSpec& parameter);

}  // namespace Kestrel::Lint
