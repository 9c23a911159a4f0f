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
  /// How many commands of the tree come from it.
  long commands = 0;
};

/// The plug-ins of a dispatcher in the order of loading: the library's own first. A plug-in that
/// failed is in the list, after all others, if it had registered commands before it failed.
std::vector<LoadedPlugin> FindLoadedPlugins(const AutoCli::Dispatcher& dispatcher);

}  // namespace Kestrel::Vexil
