// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace Kestrel::Testing {

/// Returns the path that a script of the shipped descriptors has in the build tree.
std::string ScriptPath(const std::string& name);

}  // namespace Kestrel::Testing
