// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace Kestrel::Vexil {

/// Whether the environment requests the formatter pretty on terminals.
bool IsPrettyRequested();

/// Whether the request applies to commands that print with `formatter` by default.
bool YieldsToPretty(const std::string& formatter);

}  // namespace Kestrel::Vexil
