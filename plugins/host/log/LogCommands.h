// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/autocli/Command.h>
#include <kestrel/autocli/Namespace.h>

#include <memory>

namespace Kestrel::Host {

/// Adds the namespace "log" with its commands about the journal, log files and kernel messages.
void RegisterLog(const std::shared_ptr<AutoCli::Namespace>& root);

// The commands of the namespace, each defined in the file of its name.
std::shared_ptr<AutoCli::Command> NewLogList();
std::shared_ptr<AutoCli::Command> NewLogKernelList();

}  // namespace Kestrel::Host
