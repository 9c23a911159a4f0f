// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/RootNamespace.h"

#include "kestrel/KestrelException.h"

namespace Kestrel::AutoCli {

std::shared_ptr<RootNamespace> RootNamespace::New(Dispatcher* dispatcher) {
  return std::make_shared<RootNamespace>(dispatcher, FactoryFlag());
}

RootNamespace::RootNamespace(Dispatcher* dispatcher, FactoryFlag /*flag*/)
    : dispatcher_(dispatcher) {}

RootNamespace::~RootNamespace() = default;

std::shared_ptr<NamespaceNode> RootNamespace::GetThis() { return shared_from_this(); }

NodeType RootNamespace::GetType() { return NodeType::Root; }

std::list<std::string> RootNamespace::GetPath() { return {}; }

std::string RootNamespace::GetPathString(char /*separator*/) { return {}; }

Dispatcher* RootNamespace::GetDispatcher() { return dispatcher_; }

void RootNamespace::SetParent(std::shared_ptr<NamespaceNode> /*parent*/) {
  throw KestrelException("Error, Root namespace cannot be assigned a parent node");
}

std::shared_ptr<NamespaceNode> RootNamespace::GetParent() { return nullptr; }

}  // namespace Kestrel::AutoCli
