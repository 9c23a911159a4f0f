// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>

#include "kestrel/Export.h"
#include "kestrel/autocli/Command.h"
#include "kestrel/autocli/Namespace.h"
#include "kestrel/metaobj/MetaStruct.h"

namespace Kestrel::AutoCli {

/// The command that lists all commands of a tree with their namespaces and descriptions, optionally
/// filtered by namespace, name and description.
class KESTREL_API CommandList : public Command {
  struct FactoryFlag {  // private, so only New can construct
    explicit FactoryFlag() = default;
  };

 public:
  /// Makes a command that lists the commands below `root`. The command does not own `root` and must
  /// not run after `root` has been destroyed.
  static std::shared_ptr<CommandList> New(std::shared_ptr<Namespace> root);

  /// For `New` only; no other caller can make the flag.
  CommandList(Namespace* root, FactoryFlag flag);
  ~CommandList() override;

  /// The optional parameters "namespace-filter", "command-filter" and "description-filter".
  std::shared_ptr<CallSpec::InputSpec> GetInputSpecInternal() override;

  /// A list of structures as returned by `GetOutputStructure`.
  std::shared_ptr<CallSpec::OutputSpec> GetOutputSpecInternal() override;

  /// Makes a structure "VexilCommand" with three empty strings: "Namespace" (the names of the
  /// namespaces that contain the command, joined with '.'), "Command" (its name) and "Description".
  static std::shared_ptr<MetaObj::MetaStruct> GetOutputStructure();

  /// Sets the root object of `output` to the list of the commands that match all given filters. The
  /// order is depth first; within a namespace, it is the byte order of the names. A filter is a
  /// string that the namespace, name or description must contain; case matters.
  void ExecuteInternal(const std::shared_ptr<CallSpec::Input>& input,
                       const std::shared_ptr<CallSpec::Output>& output) override;

 private:
  Namespace* root_;
};

}  // namespace Kestrel::AutoCli
