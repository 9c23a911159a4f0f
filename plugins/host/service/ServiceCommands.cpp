// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/service/ServiceCommands.h"

#include "plugins/host/frame/HostCommand.h"

namespace Kestrel::Host {

void RegisterService(const std::shared_ptr<AutoCli::Namespace>& root) {
  const auto service = AddNamespace(root, "service", "The services of this machine.");
  service->RegisterNamespaceNode(NewServiceDisable(), "disable");
  service->RegisterNamespaceNode(NewServiceEnable(), "enable");
  service->RegisterNamespaceNode(NewServiceGet(), "get");
  service->RegisterNamespaceNode(NewServiceList(), "list");
  service->RegisterNamespaceNode(NewServiceRestart(), "restart");
  service->RegisterNamespaceNode(NewServiceStart(), "start");
  service->RegisterNamespaceNode(NewServiceStop(), "stop");
  const auto system = AddNamespace(root, "system", "The machine, its kernel and its processes.");
  AddNamespace(system, "timer", "The timers of systemd, which start units at set times.")
      ->RegisterNamespaceNode(NewSystemTimerList(), "list");
}

}  // namespace Kestrel::Host
