// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace Kestrel::Testing {

/// Returns the absolute path of a shared object from tests/modules; `name` has no suffix.
std::string TestPluginPath(const std::string& name);

/// Copies the shared object `name` from tests/modules to `path`. The loader treats the copy as
/// another object.
void CopyTestPlugin(const std::string& name, const std::string& path);

/// Returns whether the shared object at `path` is loaded.
bool IsLoaded(const std::string& path);

}  // namespace Kestrel::Testing
