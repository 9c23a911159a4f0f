// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

#include "kestrel/autocli/Namespace.h"
#include "kestrel/autocli/NamespaceNode.h"

namespace Kestrel::AutoCli {

/// Throws KestrelException when there is a node at `path` already, unless it and `node` are
/// top-level namespaces of the same description. Changes nothing.
void RefuseTakenPath(const std::string& path, const std::shared_ptr<NamespaceNode>& node,
                     const std::shared_ptr<Namespace>& root);

/// Inserts `node` at `path` below `root`. A top-level namespace is not inserted when there is one
/// of the same name and description already; the existing one is used instead. Throws
/// KestrelException when the parent does not exist or rejects the node or its name.
void InsertNode(const std::string& path, const std::shared_ptr<NamespaceNode>& node,
                const std::shared_ptr<Namespace>& root);

}  // namespace Kestrel::AutoCli
