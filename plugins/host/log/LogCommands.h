// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/autocli/Command.h>
#include <kestrel/autocli/Namespace.h>

#include <memory>

namespace Kestrel::Host {

/// Adds "log" and the commands below it: the journal, log files and the kernel's messages.
void RegisterLog(const std::shared_ptr<AutoCli::Namespace>& root);

// The commands below "log", each in the file of its name.
std::shared_ptr<AutoCli::Command> NewLogList();
std::shared_ptr<AutoCli::Command> NewLogKernelList();

}  // namespace Kestrel::Host
