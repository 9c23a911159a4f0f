// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/autocli/CommandSpec.h>
#include <kestrel/autocli/NamespaceNode.h>

#include <memory>
#include <string>

namespace Kestrel::Vexil {

/// The result of looking up a path that a user wrote: a command, or the reason why there is none.
struct CommandLookup {
  std::shared_ptr<AutoCli::CommandSpec> command;
  /// The words of the path before the first unknown one, separated by spaces.
  std::string path;
  /// A sentence that repeats the path as it was written; empty if there is a command.
  std::string reason;
  /// The words of the last namespace on the path, separated by full stops; empty for the root.
  std::string lastNamespace;
};

/// Looks up a command below `root`. The words of `written` are separated by spaces, or by full
/// stops as in the results of `vexil command list`.
CommandLookup FindCommand(const std::shared_ptr<AutoCli::NamespaceNode>& root,
                          const std::string& written);

}  // namespace Kestrel::Vexil
