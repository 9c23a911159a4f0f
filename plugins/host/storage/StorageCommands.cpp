// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/storage/StorageCommands.h"

#include "plugins/host/frame/HostCommand.h"

namespace Kestrel::Host {

void RegisterStorage(const std::shared_ptr<AutoCli::Namespace>& root) {
  const auto storage = AddNamespace(root, "storage", "Devices, file systems and mounts.");
  const auto device = AddNamespace(storage, "device", "Disks, partitions and volumes.");
  device->RegisterNamespaceNode(NewStorageDeviceList(), "list");
  AddNamespace(device, "counter", "What devices have read and written.")
      ->RegisterNamespaceNode(NewStorageDeviceCounterList(), "list");
  AddNamespace(storage, "filesystem", "The usage of the file systems.")
      ->RegisterNamespaceNode(NewStorageFilesystemList(), "list");
  AddNamespace(storage, "mount", "The mounted file systems.")
      ->RegisterNamespaceNode(NewStorageMountList(), "list");
  AddNamespace(storage, "usage", "The space that files and folders use.")
      ->RegisterNamespaceNode(NewStorageUsageList(), "list");
}

}  // namespace Kestrel::Host
