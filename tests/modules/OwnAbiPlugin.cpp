// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// A plug-in that does not include PluginEntryPoint.h. Its interface number is KESTREL_TEST_ABI; if
// that is not defined, it has none.

#include <kestrel/Export.h>
#include <kestrel/autocli/Namespace.h>

#include <memory>

extern "C" {

#ifdef KESTREL_TEST_ABI
extern KESTREL_API const unsigned AutoCli_PluginAbi;
const unsigned AutoCli_PluginAbi = KESTREL_TEST_ABI;
#endif

KESTREL_API void AutoCli_RegisterNamespaces(std::shared_ptr<Kestrel::AutoCli::Namespace> root);
}

void AutoCli_RegisterNamespaces(std::shared_ptr<Kestrel::AutoCli::Namespace> root) {
  root->SubNamespace("own")->SetDescription("Of a plug-in with its own number.");
}
