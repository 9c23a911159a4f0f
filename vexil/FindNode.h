// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>

#include "kestrel/autocli/NamespaceNode.h"
#include "vexil/Words.h"

namespace Kestrel::Vexil {

/// Returns the node at `path` below `root`, or `root` itself if the path is empty; null if there is
/// none.
std::shared_ptr<AutoCli::NamespaceNode> FindNode(
    const std::shared_ptr<AutoCli::NamespaceNode>& root, const Words& path);

}  // namespace Kestrel::Vexil
