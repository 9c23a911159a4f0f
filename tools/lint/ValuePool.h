// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

#include "kestrel/callspec/ParameterSpec.h"

namespace Kestrel::Lint {

/// Returns values that a user may type for a parameter, and that may mislead a shell. The
/// constraint accepts each of them.
std::vector<std::string> MakeHostileValues(const CallSpec::ParameterSpec& parameter);

}  // namespace Kestrel::Lint
