// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// While it is being registered, makes its dispatcher load another plug-in, which an environment
// variable specifies.

#include <kestrel/autocli/PluginEntryPoint.h>

#include <cstdlib>

#include "modules/AnswerCommand.h"

void AutoCli_RegisterNamespaces(std::shared_ptr<Kestrel::AutoCli::Namespace> root) {
  root->RegisterNamespaceNode(std::make_shared<AnswerCommand>("outside"), "nesting");
  try {
    root->GetDispatcher()->AddPlugin(std::getenv("KESTREL_NESTED_PLUGIN"));
  } catch (const Kestrel::KestrelException&) {
    // A failure of the inner plug-in must not affect the outer one.
    return;
  }
}
