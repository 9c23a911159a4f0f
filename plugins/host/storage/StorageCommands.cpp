// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/storage/StorageCommands.h"

#include "plugins/host/frame/HostCommand.h"

namespace Kestrel::Host {

void RegisterStorage(const std::shared_ptr<AutoCli::Namespace>& root) {
  const auto storage =
      AddNamespace(root, "storage", "Devices, file systems and where they are mounted.");
  AddNamespace(storage, "device", "Disks, their parts and the volumes over them.")
      ->RegisterNamespaceNode(NewStorageDeviceList(), "list");
  AddNamespace(storage, "filesystem", "How full the file systems are.")
      ->RegisterNamespaceNode(NewStorageFilesystemList(), "list");
  AddNamespace(storage, "mount", "What is mounted where.")
      ->RegisterNamespaceNode(NewStorageMountList(), "list");
}

}  // namespace Kestrel::Host
