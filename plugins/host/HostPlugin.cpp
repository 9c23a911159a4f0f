// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The entry point of host.so, the plug-in with the commands about the machine it runs on.

#include <kestrel/autocli/PluginEntryPoint.h>

#include "plugins/host/file/FileCommands.h"
#include "plugins/host/log/LogCommands.h"
#include "plugins/host/network/NetworkCommands.h"
#include "plugins/host/package/PackageCommands.h"
#include "plugins/host/service/ServiceCommands.h"
#include "plugins/host/storage/StorageCommands.h"
#include "plugins/host/system/SystemCommands.h"

void AutoCli_RegisterNamespaces(std::shared_ptr<Kestrel::AutoCli::Namespace> root) {
  Kestrel::Host::RegisterSystem(root);
  Kestrel::Host::RegisterStorage(root);
  Kestrel::Host::RegisterNetwork(root);
  Kestrel::Host::RegisterFile(root);
  Kestrel::Host::RegisterLog(root);
  Kestrel::Host::RegisterPackage(root);
  Kestrel::Host::RegisterService(root);
}
