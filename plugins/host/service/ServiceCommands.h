// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/autocli/Command.h>
#include <kestrel/autocli/Namespace.h>

#include <memory>

namespace Kestrel::Host {

/// Adds the namespace "service" with its commands, and "system timer list".
void RegisterService(const std::shared_ptr<AutoCli::Namespace>& root);

// The commands, each in the file of its name; those that change a service are in
// ServiceChanges.cpp.
std::shared_ptr<AutoCli::Command> NewServiceDisable();
std::shared_ptr<AutoCli::Command> NewServiceEnable();
std::shared_ptr<AutoCli::Command> NewServiceGet();
std::shared_ptr<AutoCli::Command> NewServiceList();
std::shared_ptr<AutoCli::Command> NewServiceRestart();
std::shared_ptr<AutoCli::Command> NewServiceStart();
std::shared_ptr<AutoCli::Command> NewServiceStop();
std::shared_ptr<AutoCli::Command> NewSystemTimerList();

}  // namespace Kestrel::Host
