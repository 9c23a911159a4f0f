// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

#include "kestrel/autocli/Namespace.h"
#include "kestrel/autocli/NamespaceNode.h"

namespace Kestrel::AutoCli {

/// Throws KestrelException when `node` may not be inserted because `path` names a node already. Two
/// top-level namespaces of the same description may share a path.
void RefuseTakenPath(const std::string& path, const std::shared_ptr<NamespaceNode>& node,
                     const std::shared_ptr<Namespace>& root);

/// Inserts `node` at `path` below `root`, or leaves the top-level namespace there that is to be
/// shared. Throws KestrelException when the parent does not exist, or when the parent refuses the
/// name.
void InsertNode(const std::string& path, const std::shared_ptr<NamespaceNode>& node,
                const std::shared_ptr<Namespace>& root);

}  // namespace Kestrel::AutoCli
