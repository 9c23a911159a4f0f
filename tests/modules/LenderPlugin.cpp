// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Offers a function to plug-ins that are loaded later.

#include <kestrel/autocli/PluginEntryPoint.h>

extern "C" KESTREL_API const char* LentText();

const char* LentText() { return "a text on loan"; }

void AutoCli_RegisterNamespaces(std::shared_ptr<Kestrel::AutoCli::Namespace> root) {
  root->SubNamespace("lender");
}
