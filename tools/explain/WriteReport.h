// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

#include "tools/explain/Explanation.h"

namespace Kestrel::Explain {

/// Returns the explanation as text for people. What the shell would receive is printed unchanged,
/// between a heading with its size and a line feed.
std::string WriteReport(const Explanation& explanation);

}  // namespace Kestrel::Explain
