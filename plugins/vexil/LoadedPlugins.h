// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/autocli/Dispatcher.h>

#include <vector>

#include "tools/catalog/PluginOrigins.h"

namespace Kestrel::Vexil {

struct LoadedPlugin {
  /// Its path is absolute and without "." and "..".
  Catalog::Plugin plugin;
  /// The number of commands in the tree that come from the plug-in.
  long commands = 0;
};

/// Returns the plug-ins of a dispatcher in the order of loading; the library's own is the first.
/// After these come plug-ins that failed after they had registered commands, and libraries that
/// contain the classes of a plug-in's commands.
std::vector<LoadedPlugin> FindLoadedPlugins(const AutoCli::Dispatcher& dispatcher);

}  // namespace Kestrel::Vexil
