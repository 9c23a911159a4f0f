// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/NamespaceNode.h"

#include <utility>

#include "autocli/tree/NameRule.h"
#include "callspec/TextValue.h"
#include "kestrel/KestrelException.h"
#include "kestrel/autocli/Namespace.h"

namespace Kestrel::AutoCli {

using CallSpec::TextOrEmpty;

NamespaceNode::NamespaceNode() = default;

NamespaceNode::~NamespaceNode() = default;

std::list<std::string> NamespaceNode::GetPath() {
  const std::shared_ptr<NamespaceNode> parent = GetParent();
  if (parent == nullptr) {
    throw KestrelException("GetPath: Invalid state for Namespace Node with the name '" + name_ +
                           "' No parent node has been set");
  }
  std::list<std::string> path = parent->GetPath();
  path.push_back(name_);
  return path;
}

std::string NamespaceNode::GetPathString(char separator) {
  const std::shared_ptr<NamespaceNode> parent = GetParent();
  if (parent == nullptr) {
    throw KestrelException("GetPathString: Invalid state for Namespace Node with the name '" +
                           name_ + "' No parent node has been set");
  }
  std::string path = parent->GetPathString(separator);
  if (!path.empty()) {
    path += separator;
  }
  path += name_;
  return path;
}

bool NamespaceNode::HasNamespaceNode(const std::string& name) {
  return children_.find(name) != children_.end();
}

std::vector<std::string> NamespaceNode::GetNamespaceNodeNames() {
  std::vector<std::string> names;
  names.reserve(children_.size());
  for (const auto& child : children_) {
    names.push_back(child.first);
  }
  return names;
}

std::vector<std::shared_ptr<NamespaceNode>> NamespaceNode::GetNamespaceNodes() {
  std::vector<std::shared_ptr<NamespaceNode>> nodes;
  nodes.reserve(children_.size());
  for (const auto& child : children_) {
    nodes.push_back(child.second);
  }
  return nodes;
}

std::shared_ptr<NamespaceNode> NamespaceNode::GetNamespaceNode(const std::string& name) {
  const auto child = children_.find(name);
  return child != children_.end() ? child->second : nullptr;
}

void NamespaceNode::RegisterNamespaceNode(std::shared_ptr<NamespaceNode> node, std::string name) {
  if (HasNamespaceNode(name)) {
    throw KestrelException("Duplicate registration in namespace " + GetPathString(' ') +
                           " attempt to register two objects with name " + name);
  }
  if (node == nullptr) {
    throw KestrelException("Null namespace node named '" + name + "' passed to namespace " +
                           GetPathString(' '));
  }
  node->SetName(name);
  node->SetParent(GetThis());
  children_.insert_or_assign(std::move(name), std::move(node));
}

void NamespaceNode::RegisterNamespaceNode(std::shared_ptr<NamespaceNode> node, const char* name) {
  RegisterNamespaceNode(std::move(node), TextOrEmpty(name));
}

std::shared_ptr<NamespaceNode> NamespaceNode::ResolveNode(std::list<std::string>& path) {
  if (path.empty()) {
    return nullptr;
  }
  // The word is moved out of the caller's list and back, without a copy.
  std::list<std::string> word;
  word.splice(word.begin(), path, path.begin());

  std::shared_ptr<NamespaceNode> node = GetNamespaceNode(word.front());
  if (node == nullptr) {
    throw KestrelException("Unable to find a command or namespace with the name '" + word.front() +
                           "' in namespace " + GetPathString(' '));
  }
  if (!path.empty()) {
    node = node->ResolveNode(path);
  }
  path.splice(path.begin(), word);
  return node;
}

std::shared_ptr<NamespaceNode> NamespaceNode::SubNamespace(const std::string& name) {
  // If this node is a command, HasNamespaceNode returns false, and RegisterNamespaceNode throws
  // with the right message. GetNamespaceNode would throw with another one.
  if (HasNamespaceNode(name)) {
    return GetNamespaceNode(name);
  }
  std::shared_ptr<NamespaceNode> node = Namespace::New();
  RegisterNamespaceNode(node, name);
  return node;
}

const std::string& NamespaceNode::GetName() const { return name_; }

void NamespaceNode::SetName(const std::string& name) {
  if (!MatchesNameRule(name)) {
    throw KestrelException(
        "Invalid name for namespace '" + name +
        "', must be a name consisting of letters and numbers and must conform to 'camel' casing.");
  }
  name_ = name;
}

void NamespaceNode::SetDescription(std::string description) {
  description_ = std::move(description);
}

void NamespaceNode::SetDescription(const char* description) {
  SetDescription(TextOrEmpty(description));
}

const std::string& NamespaceNode::GetDescription() const { return description_; }

}  // namespace Kestrel::AutoCli
