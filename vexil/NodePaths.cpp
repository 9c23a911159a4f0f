// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/NodePaths.h"

#include <cstddef>
#include <memory>

namespace Kestrel::Vexil {

using AutoCli::NamespaceNode;
using AutoCli::NodeType;

namespace {

// Far beyond every tree that a person uses, but small enough to be searched quickly.
constexpr std::size_t kMaxDepth = 16;
constexpr std::size_t kMaxPaths = 20000;

void AddPathsBelow(NamespaceNode& node, const Words& path, std::vector<NodePath>& paths) {
  for (const std::shared_ptr<NamespaceNode>& child : node.GetNamespaceNodes()) {
    if (paths.size() == kMaxPaths) {
      return;
    }
    Words words = path;
    words.push_back(child->GetName());
    const bool isCommand = child->GetType() == NodeType::Command;
    paths.push_back({words, isCommand});
    if (!isCommand && words.size() < kMaxDepth) {
      AddPathsBelow(*child, words, paths);
    }
  }
}

}  // namespace

std::vector<NodePath> ListNodePaths(NamespaceNode& root) {
  std::vector<NodePath> paths;
  AddPathsBelow(root, {}, paths);
  return paths;
}

}  // namespace Kestrel::Vexil
