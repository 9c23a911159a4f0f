// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/log/LogCommands.h"

#include "plugins/host/frame/HostCommand.h"

namespace Kestrel::Host {

void RegisterLog(const std::shared_ptr<AutoCli::Namespace>& root) {
  const auto log = AddNamespace(root, "log", "Messages of this machine and its programs.");
  log->RegisterNamespaceNode(NewLogList(), "list");
  AddNamespace(log, "kernel", "The messages of the kernel.")
      ->RegisterNamespaceNode(NewLogKernelList(), "list");
}

}  // namespace Kestrel::Host
