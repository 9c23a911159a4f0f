// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

#include "kestrel/autocli/Dispatcher.h"

namespace Kestrel::Testing {

/// The files of the plug-ins of this project, as the build made them.
std::vector<std::string> ListShippedPlugins();

/// Loads all of them.
void LoadShippedTree(AutoCli::Dispatcher& dispatcher);

}  // namespace Kestrel::Testing
