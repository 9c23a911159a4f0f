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

/// The paths of all nodes below `root`, each after the one that it is below. Bounded in depth and
/// number, because a plug-in can register a namespace below itself. Throws what a plug-in's own
/// node throws.
std::vector<NodePath> ListNodePaths(AutoCli::NamespaceNode& root);

}  // namespace Kestrel::Vexil
