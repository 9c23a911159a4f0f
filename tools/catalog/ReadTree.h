// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

#include "kestrel/autocli/CommandSpec.h"
#include "kestrel/autocli/Dispatcher.h"
#include "tools/catalog/Catalog.h"

namespace Kestrel::Catalog {

/// Returns everything that the tree of `dispatcher` declares at present. Walks the tree once from
/// the root.
///
/// Asks every command for its parameters and its result, but runs none. A fault of the tree is
/// recorded if a command throws an exception, and for nodes that claim to be a command without
/// being one, that are below themselves, or that have the path of another node. The result depends
/// only on the tree, not on the order in which plug-ins were loaded.
Tree ReadTree(const AutoCli::Dispatcher& dispatcher);

/// Returns what a command declares, with `path` as its path and without its plug-in.
///
/// Throws the exceptions of the declaration, and KestrelException if it declares a kind that does
/// not exist.
Command ReadCommand(AutoCli::CommandSpec& command, const std::string& path);

}  // namespace Kestrel::Catalog
