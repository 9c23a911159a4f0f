// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <vector>

#include "kestrel/autocli/NamespaceNode.h"
#include "vexil/Words.h"

namespace Kestrel::Vexil {

struct NodePath {
  Words words;
  bool isCommand = false;
};

/// Returns the paths of all nodes below `root`, each after the path of its parent. Depth and number
/// are limited, because a plug-in can register a namespace below itself. Throws the exceptions of a
/// plug-in's node.
std::vector<NodePath> ListNodePaths(AutoCli::NamespaceNode& root);

}  // namespace Kestrel::Vexil
