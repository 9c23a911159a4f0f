// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/Namespace.h"

#include "kestrel/KestrelException.h"

namespace Kestrel::AutoCli {

std::shared_ptr<Namespace> Namespace::New() { return std::make_shared<Namespace>(FactoryFlag()); }

Namespace::Namespace(FactoryFlag /*flag*/) {}

Namespace::Namespace() = default;

Namespace::~Namespace() = default;

std::shared_ptr<NamespaceNode> Namespace::GetThis() { return shared_from_this(); }

NodeType Namespace::GetType() { return NodeType::Namespace; }

Dispatcher* Namespace::GetDispatcher() {
  const std::shared_ptr<NamespaceNode> parent = GetParent();
  if (parent == nullptr) {
    // The quote after the name is missing deliberately: scripts match this message.
    throw KestrelException("Invalid state for namespace '" + GetName() +
                           "no parent has been set while attempting to get dispathcer reference.");
  }
  return parent->GetDispatcher();
}

void Namespace::SetParent(std::shared_ptr<NamespaceNode> parent) { parent_ = parent; }

std::shared_ptr<NamespaceNode> Namespace::GetParent() { return parent_.lock(); }

}  // namespace Kestrel::AutoCli
