// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/SystemCommands.h"

#include "plugins/host/frame/HostCommand.h"

namespace Kestrel::Host {
namespace {

using Node = std::shared_ptr<AutoCli::NamespaceNode>;

void RegisterStatistics(const Node& system) {
  AddNamespace(system, "version", "The versions of the kernel and the distribution.")
      ->RegisterNamespaceNode(NewSystemVersionGet(), "get");
  AddNamespace(system, "uptime", "The time since the machine was started.")
      ->RegisterNamespaceNode(NewSystemUptimeGet(), "get");
  AddNamespace(system, "load", "The load of the machine.")
      ->RegisterNamespaceNode(NewSystemLoadGet(), "get");
  AddNamespace(system, "memory", "The memory of the machine.")
      ->RegisterNamespaceNode(NewSystemMemoryGet(), "get");
  const Node cpu = AddNamespace(system, "cpu", "The processors of the machine.");
  cpu->RegisterNamespaceNode(NewSystemCpuCount(), "count");
  cpu->RegisterNamespaceNode(NewSystemCpuList(), "list");
}

void RegisterHardware(const Node& system) {
  AddNamespace(system, "clock", "The clocks of the machine.")
      ->RegisterNamespaceNode(NewSystemClockGet(), "get");
  const Node cpu = AddNamespace(system, "cpu", "The processors of the machine.");
  AddNamespace(cpu, "usage", "How busy the processors are.")
      ->RegisterNamespaceNode(NewSystemCpuUsageList(), "list");
  AddNamespace(system, "device", "The devices on the buses of the machine.")
      ->RegisterNamespaceNode(NewSystemDeviceList(), "list");
}

void RegisterKernel(const Node& system) {
  const Node module = AddNamespace(system, "module", "The modules of the kernel.");
  module->RegisterNamespaceNode(NewSystemModuleCheck(), "check");
  module->RegisterNamespaceNode(NewSystemModuleList(), "list");
  const Node parameter = AddNamespace(system, "parameter", "The parameters of the kernel.");
  parameter->RegisterNamespaceNode(NewSystemParameterGet(), "get");
  parameter->RegisterNamespaceNode(NewSystemParameterList(), "list");
  parameter->RegisterNamespaceNode(NewSystemParameterSet(), "set");
  const Node process = AddNamespace(system, "process", "The processes of the machine.");
  process->RegisterNamespaceNode(NewSystemProcessList(), "list");
  process->RegisterNamespaceNode(NewSystemProcessSignal(), "signal");
}

void RegisterUsers(const Node& system) {
  const Node account = AddNamespace(system, "account", "The accounts of users.");
  account->RegisterNamespaceNode(NewSystemAccountGroups(), "groups");
  account->RegisterNamespaceNode(NewSystemAccountList(), "list");
  AddNamespace(system, "crontab", "The commands that cron starts at set times.")
      ->RegisterNamespaceNode(NewSystemCrontabList(), "list");
  AddNamespace(system, "session", "The login sessions.")
      ->RegisterNamespaceNode(NewSystemSessionList(), "list");
}

}  // namespace

void RegisterSystem(const std::shared_ptr<AutoCli::Namespace>& root) {
  const Node system = AddNamespace(root, "system", "The machine, its kernel and its processes.");
  RegisterStatistics(system);
  RegisterHardware(system);
  RegisterKernel(system);
  RegisterUsers(system);
}

}  // namespace Kestrel::Host
