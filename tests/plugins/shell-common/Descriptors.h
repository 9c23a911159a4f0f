// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace Kestrel::Testing {

/// The path of a script of the shipped descriptors in the build tree.
std::string ScriptPath(const std::string& name);

}  // namespace Kestrel::Testing
