// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

#include "tools/lint/Finding.h"

namespace Kestrel::Lint {

/// Returns a line `FILE:LINE:COLUMN: SEVERITY: RULE: MESSAGE` for each finding. Control characters
/// are written as `\xHH`.
std::string WriteText(const std::vector<Finding>& findings);

/// Returns a JSON object with the array `findings`.
std::string WriteJson(const std::vector<Finding>& findings);

/// Returns a log in the format SARIF 2.1.0.
std::string WriteSarif(const std::vector<Finding>& findings);

}  // namespace Kestrel::Lint
