// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/autocli/Command.h>
#include <kestrel/autocli/Namespace.h>

#include <memory>

namespace Kestrel::Host {

/// Adds the namespace "storage" with its commands about devices, file systems and mounts.
void RegisterStorage(const std::shared_ptr<AutoCli::Namespace>& root);

// The commands of the namespace, each defined in the file of its name.
std::shared_ptr<AutoCli::Command> NewStorageDeviceCounterList();
std::shared_ptr<AutoCli::Command> NewStorageDeviceList();
std::shared_ptr<AutoCli::Command> NewStorageFilesystemList();
std::shared_ptr<AutoCli::Command> NewStorageMountList();
std::shared_ptr<AutoCli::Command> NewStorageUsageList();

}  // namespace Kestrel::Host
