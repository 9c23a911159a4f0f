// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

#include "kestrel/autocli/Dispatcher.h"

namespace Kestrel::Testing {

/// Returns the plug-in files of this project in the build tree.
std::vector<std::string> ListShippedPlugins();

/// Loads all plug-in files of this project into `dispatcher`.
void LoadShippedTree(AutoCli::Dispatcher& dispatcher);

}  // namespace Kestrel::Testing
