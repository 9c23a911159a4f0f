// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>

#include "kestrel/Export.h"
#include "kestrel/autocli/NamespaceNode.h"

namespace Kestrel::AutoCli {

/// An inner node of the command tree: a word of a command's path that groups the nodes below it.
///
/// Before a namespace is registered and after its parent has been destroyed, `GetPath`,
/// `GetPathString` and `GetDispatcher` throw KestrelException; lookups below it still work.
class KESTREL_API Namespace : public NamespaceNode {
  struct FactoryFlag {  // private, so only New can construct
    explicit FactoryFlag() = default;
  };

 public:
  /// Makes a namespace without a name, description, parent or children.
  static std::shared_ptr<Namespace> New();

  /// For `New` only; no other caller can make the flag.
  explicit Namespace(FactoryFlag flag);
  ~Namespace() override;

  std::shared_ptr<NamespaceNode> GetThis() override;
  NodeType GetType() override;
  Dispatcher* GetDispatcher() override;
  void SetParent(std::shared_ptr<NamespaceNode> parent) override;
  std::shared_ptr<NamespaceNode> GetParent() override;

 protected:
  /// For derived classes, which need a factory of their own.
  Namespace();

 private:
  std::weak_ptr<NamespaceNode> parent_;
};

}  // namespace Kestrel::AutoCli
