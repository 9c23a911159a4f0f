// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Has its dispatcher load another plug-in, named by an environment variable, while it is being
// registered itself.

#include <kestrel/autocli/PluginEntryPoint.h>

#include <cstdlib>

#include "modules/AnswerCommand.h"

void AutoCli_RegisterNamespaces(std::shared_ptr<Kestrel::AutoCli::Namespace> root) {
  root->RegisterNamespaceNode(std::make_shared<AnswerCommand>("outside"), "nesting");
  try {
    root->GetDispatcher()->AddPlugin(std::getenv("KESTREL_NESTED_PLUGIN"));
  } catch (const Kestrel::KestrelException&) {
    // A broken inner plug-in is of no concern to the outer one.
    return;
  }
}
