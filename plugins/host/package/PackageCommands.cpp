// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/package/PackageCommands.h"

#include "plugins/host/frame/HostCommand.h"

namespace Kestrel::Host {

void RegisterPackage(const std::shared_ptr<AutoCli::Namespace>& root) {
  const auto package = AddNamespace(root, "package", "The software packages of this machine.");
  package->RegisterNamespaceNode(NewPackageCheck(), "check");
  package->RegisterNamespaceNode(NewPackageFiles(), "files");
  package->RegisterNamespaceNode(NewPackageGet(), "get");
  package->RegisterNamespaceNode(NewPackageList(), "list");
  AddNamespace(package, "upgradable", "Packages of which a newer version is available.")
      ->RegisterNamespaceNode(NewPackageUpgradableList(), "list");
}

}  // namespace Kestrel::Host
