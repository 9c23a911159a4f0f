// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

#include "kestrel/autocli/CommandSpec.h"
#include "kestrel/autocli/Dispatcher.h"
#include "tools/catalog/Catalog.h"

namespace Kestrel::Catalog {

/// Everything that the tree of `dispatcher` declares at this moment, in one walk from the root.
///
/// Asks every command for its parameters and its result; whatever one of them throws becomes a
/// fault of the tree, and so does a node that only has the type of a command, that is below
/// itself, or that has the path of another node. Runs no command. The result does not depend on the
/// order in which the plug-ins were loaded, as long as that order left the same tree.
Tree ReadTree(const AutoCli::Dispatcher& dispatcher);

/// What one command declares, with `path` as its path and without its plug-in.
///
/// Throws what the declaration throws, and KestrelException when it declares a kind that does not
/// exist.
Command ReadCommand(AutoCli::CommandSpec& command, const std::string& path);

}  // namespace Kestrel::Catalog
