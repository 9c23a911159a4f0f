// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/autocli/Command.h>
#include <kestrel/autocli/Namespace.h>

#include <memory>

namespace Kestrel::Host {

/// Adds the namespace "system" with its commands about the machine, its kernel, its processes and
/// its users.
void RegisterSystem(const std::shared_ptr<AutoCli::Namespace>& root);

// The commands of the namespace, each defined in the file of its name.
std::shared_ptr<AutoCli::Command> NewSystemAccountGroups();
std::shared_ptr<AutoCli::Command> NewSystemAccountList();
std::shared_ptr<AutoCli::Command> NewSystemClockGet();
std::shared_ptr<AutoCli::Command> NewSystemCpuCount();
std::shared_ptr<AutoCli::Command> NewSystemCpuList();
std::shared_ptr<AutoCli::Command> NewSystemCpuUsageList();
std::shared_ptr<AutoCli::Command> NewSystemCrontabList();
std::shared_ptr<AutoCli::Command> NewSystemDeviceList();
std::shared_ptr<AutoCli::Command> NewSystemLoadGet();
std::shared_ptr<AutoCli::Command> NewSystemMemoryGet();
std::shared_ptr<AutoCli::Command> NewSystemModuleCheck();
std::shared_ptr<AutoCli::Command> NewSystemModuleList();
std::shared_ptr<AutoCli::Command> NewSystemParameterGet();
std::shared_ptr<AutoCli::Command> NewSystemParameterList();
std::shared_ptr<AutoCli::Command> NewSystemParameterSet();
std::shared_ptr<AutoCli::Command> NewSystemProcessList();
std::shared_ptr<AutoCli::Command> NewSystemProcessSignal();
std::shared_ptr<AutoCli::Command> NewSystemSessionList();
std::shared_ptr<AutoCli::Command> NewSystemUptimeGet();
std::shared_ptr<AutoCli::Command> NewSystemVersionGet();

}  // namespace Kestrel::Host
