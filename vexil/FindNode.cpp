// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/FindNode.h"

#include <string>

namespace Kestrel::Vexil {

using AutoCli::NamespaceNode;

std::shared_ptr<NamespaceNode> FindNode(const std::shared_ptr<NamespaceNode>& root,
                                        const Words& path) {
  std::shared_ptr<NamespaceNode> node = root;
  for (const std::string& word : path) {
    // A command throws if it is asked for a child.
    if (!node->HasNamespaceNode(word)) {
      return nullptr;
    }
    node = node->GetNamespaceNode(word);
  }
  return node;
}

}  // namespace Kestrel::Vexil
