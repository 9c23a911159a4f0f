// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>

#include "kestrel/Export.h"
#include "kestrel/autocli/Command.h"
#include "kestrel/autocli/Namespace.h"
#include "kestrel/metaobj/MetaStruct.h"

namespace Kestrel::AutoCli {

/// The command that lists every command of a tree with its namespace and description, and can
/// filter by each of the three.
class KESTREL_API CommandList : public Command {
  struct FactoryFlag {  // private, so only New can construct
    explicit FactoryFlag() = default;
  };

 public:
  /// Makes a command that lists what is below `root`. It does not keep `root` alive and must not
  /// run once that is gone.
  static std::shared_ptr<CommandList> New(std::shared_ptr<Namespace> root);

  CommandList(Namespace* root, FactoryFlag flag);
  ~CommandList() override;

  /// The optional parameters "namespace-filter", "command-filter" and "description-filter".
  std::shared_ptr<CallSpec::InputSpec> GetInputSpecInternal() override;

  /// A list of the structures of `GetOutputStructure`.
  std::shared_ptr<CallSpec::OutputSpec> GetOutputSpecInternal() override;

  /// A new structure "VexilCommand" with the empty texts "Namespace" (the names of the namespaces
  /// that hold the command, joined with '.'), "Command" (its name) and "Description".
  static std::shared_ptr<MetaObj::MetaStruct> GetOutputStructure();

  /// Sets the list of the commands that pass every filter given, depth first, with commands and
  /// namespaces of one level in byte order of their names. A filter is a text that the namespace,
  /// name or description must contain; the case of letters matters.
  void ExecuteInternal(const std::shared_ptr<CallSpec::Input>& input,
                       const std::shared_ptr<CallSpec::Output>& output) override;

 private:
  Namespace* root_;
};

}  // namespace Kestrel::AutoCli
