// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

#include "tools/explain/Explanation.h"

namespace Kestrel::Explain {

/// Returns the explanation for readers. What the shell would get follows a heading with their size
/// and is followed by a line feed of the report; nothing in it is changed.
std::string WriteReport(const Explanation& explanation);

}  // namespace Kestrel::Explain
