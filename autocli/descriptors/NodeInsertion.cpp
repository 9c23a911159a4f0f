// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/descriptors/NodeInsertion.h"

#include <list>
#include <utility>

#include "kestrel/KestrelException.h"
#include "kestrel/autocli/XmlPlugin.h"

namespace Kestrel::AutoCli {

namespace {

bool IsNamespace(const std::shared_ptr<NamespaceNode>& node) {
  return node->GetType() == NodeType::Namespace;
}

/// Returns the node at a path of the tree, or null when there is none. Null is the usual result;
/// the exception of ResolveNode would cost more.
std::shared_ptr<NamespaceNode> FindRegistered(const std::shared_ptr<Namespace>& root,
                                              const std::list<std::string>& words) {
  std::shared_ptr<NamespaceNode> node = root;
  for (const std::string& word : words) {
    if (!node->HasNamespaceNode(word)) {
      return nullptr;
    }
    node = node->GetNamespaceNode(word);
  }
  return node;
}

/// Whether `registered`, the existing node of the same name or null, is used instead of `node`.
bool IsShared(const std::shared_ptr<NamespaceNode>& registered,
              const std::shared_ptr<NamespaceNode>& node) {
  return registered != nullptr && IsNamespace(registered) && IsNamespace(node) &&
         registered->GetDescription() == node->GetDescription();
}

}  // namespace

void RefuseTakenPath(const std::string& path, const std::shared_ptr<NamespaceNode>& node,
                     const std::shared_ptr<Namespace>& root) {
  const std::list<std::string> words = XmlPlugin::SplitPath(path);
  const std::shared_ptr<NamespaceNode> registered = FindRegistered(root, words);
  if (registered == nullptr) {
    return;
  }
  if (words.size() != 1 || !IsNamespace(registered) || !IsNamespace(node)) {
    throw KestrelException("Vexil path is already registered: " + path);
  }
  if (registered->GetDescription() != node->GetDescription()) {
    throw KestrelException("Duplicate top-level namespaces must have the same description: " +
                           path);
  }
}

void InsertNode(const std::string& path, const std::shared_ptr<NamespaceNode>& node,
                const std::shared_ptr<Namespace>& root) {
  std::list<std::string> words = XmlPlugin::SplitPath(path);
  const std::string name = words.empty() ? std::string() : std::move(words.back());
  if (!words.empty()) {
    words.pop_back();
  }
  const std::shared_ptr<NamespaceNode> parent = words.empty() ? root : root->ResolveNode(words);
  const std::shared_ptr<NamespaceNode> registered = parent->GetNamespaceNode(name);
  if (parent != root || !IsShared(registered, node)) {
    parent->RegisterNamespaceNode(node, name);
  }
}

}  // namespace Kestrel::AutoCli
