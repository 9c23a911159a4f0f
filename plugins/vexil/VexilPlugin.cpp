// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The entry point of vexil.so, the plug-in with commands about the tool itself.

#include <kestrel/autocli/PluginEntryPoint.h>

#include "plugins/vexil/ToolCommands.h"

namespace {

using Kestrel::AutoCli::Namespace;
using Kestrel::AutoCli::NamespaceNode;

/// Returns the namespace `name` below `parent`, adding it with a description if it is missing.
std::shared_ptr<NamespaceNode> AddNamespace(const std::shared_ptr<NamespaceNode>& parent,
                                            const char* name, const char* description) {
  if (!parent->HasNamespaceNode(name)) {
    const auto node = Namespace::New();
    node->SetDescription(description);
    parent->RegisterNamespaceNode(node, name);
  }
  return parent->GetNamespaceNode(name);
}

}  // namespace

void AutoCli_RegisterNamespaces(std::shared_ptr<Namespace> root) {
  // The library has already registered `vexil` and `vexil command`.
  const auto vexil = root->SubNamespace("vexil");
  vexil->SubNamespace("command")->RegisterNamespaceNode(Kestrel::Vexil::NewCommandDescribe(),
                                                        "describe");
  AddNamespace(vexil, "plugin", "The plug-ins that are loaded.")
      ->RegisterNamespaceNode(Kestrel::Vexil::NewPluginList(), "list");
  AddNamespace(vexil, "version", "The versions of the tool and its parts.")
      ->RegisterNamespaceNode(Kestrel::Vexil::NewVersionGet(), "get");
}
