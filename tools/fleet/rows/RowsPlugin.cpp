// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The entry point of fleet-rows.so.

#include <kestrel/autocli/PluginEntryPoint.h>

#include <iostream>

#include "tools/fleet/rows/RowsPrint.h"

void AutoCli_RegisterNamespaces(std::shared_ptr<Kestrel::AutoCli::Namespace> root) {
  using Kestrel::AutoCli::Namespace;
  const auto fleet = Namespace::New();
  fleet->SetDescription("Many hosts at once.");
  const auto rows = Namespace::New();
  rows->SetDescription("Rows of many hosts.");
  root->RegisterNamespaceNode(fleet, "fleet");
  fleet->RegisterNamespaceNode(rows, "rows");
  rows->RegisterNamespaceNode(Kestrel::Fleet::NewRowsPrint(std::cin), "print");
}
