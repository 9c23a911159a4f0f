// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace Kestrel::Testing {

/// Returns the path in the build tree of a script of the shipped descriptors.
std::string ScriptPath(const std::string& name);

}  // namespace Kestrel::Testing
