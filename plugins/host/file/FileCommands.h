// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/autocli/Command.h>
#include <kestrel/autocli/Namespace.h>

#include <memory>

namespace Kestrel::Host {

/// Adds the namespace "file" with its commands about files and archives.
void RegisterFile(const std::shared_ptr<AutoCli::Namespace>& root);

// The commands of the namespace, each defined in the file of its name. A command exists only if the
// build found its library: nettle for the first, libarchive for the second.
std::shared_ptr<AutoCli::Command> NewFileChecksum();
std::shared_ptr<AutoCli::Command> NewFileMembers();

}  // namespace Kestrel::Host
