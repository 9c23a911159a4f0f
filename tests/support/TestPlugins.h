// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace Kestrel::Testing {

/// The absolute path of one of the shared objects in tests/modules, named without its suffix.
std::string TestPluginPath(const std::string& name);

/// Copies that shared object to `path`, so that the loader takes it for another one.
void CopyTestPlugin(const std::string& name, const std::string& path);

/// Whether the loader holds the shared object `path`.
bool IsLoaded(const std::string& path);

}  // namespace Kestrel::Testing
