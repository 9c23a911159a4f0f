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
/// Asks every command for its parameters and its result, but runs none. A fault is recorded for
/// each node that throws an exception, that has the type of a command but is not one, that is below
/// itself, or that has the path of another node. The order of the result does not depend on the
/// order in which plug-ins were loaded.
Tree ReadTree(const AutoCli::Dispatcher& dispatcher);

/// Returns what a command declares, with `path` as its path and without its plug-in.
///
/// Throws the exceptions of the declaration, and KestrelException if it declares a kind that does
/// not exist.
Command ReadCommand(AutoCli::CommandSpec& command, const std::string& path);

}  // namespace Kestrel::Catalog
