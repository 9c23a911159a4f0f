// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <list>
#include <memory>
#include <string>

#include "kestrel/Export.h"
#include "kestrel/autocli/Namespace.h"

namespace Kestrel::AutoCli {

/// The root of one dispatcher's command tree. It has no name, no parent and an empty path.
///
/// The dispatcher owns its root and must outlive every other owner of the root, because the root
/// has a plain pointer to the dispatcher.
class KESTREL_API RootNamespace : public Namespace {
  struct FactoryFlag {  // private, so only New can construct
    explicit FactoryFlag() = default;
  };

 public:
  /// Makes the root of `dispatcher`, which is not owned and may be null.
  static std::shared_ptr<RootNamespace> New(Dispatcher* dispatcher);

  /// For `New` only; no other caller can make the flag.
  RootNamespace(Dispatcher* dispatcher, FactoryFlag flag);
  ~RootNamespace() override;

  std::shared_ptr<NamespaceNode> GetThis() override;
  NodeType GetType() override;

  /// Always empty; never throws.
  std::list<std::string> GetPath() override;

  /// Always empty; never throws.
  std::string GetPathString(char separator) override;

  /// The dispatcher passed to `New`; never throws.
  Dispatcher* GetDispatcher() override;

  /// Always throws KestrelException.
  void SetParent(std::shared_ptr<NamespaceNode> parent) override;

  /// Always null.
  std::shared_ptr<NamespaceNode> GetParent() override;

 private:
  Dispatcher* dispatcher_;
};

}  // namespace Kestrel::AutoCli
