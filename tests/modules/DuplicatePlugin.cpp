// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Registers a command, and then a namespace whose name the built-in plug-in has taken.

#include <kestrel/autocli/PluginEntryPoint.h>

#include "modules/AnswerCommand.h"

void AutoCli_RegisterNamespaces(std::shared_ptr<Kestrel::AutoCli::Namespace> root) {
  root->SubNamespace("duplicate")
      ->RegisterNamespaceNode(std::make_shared<AnswerCommand>("before the duplicate"), "early");
  root->RegisterNamespaceNode(Kestrel::AutoCli::Namespace::New(), "vexil");
}
