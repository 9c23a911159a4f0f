// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/autocli/Command.h>
#include <kestrel/autocli/Namespace.h>

#include <memory>

namespace Kestrel::Host {

/// Adds the namespace "package" with its commands about the software that dpkg and apt manage.
void RegisterPackage(const std::shared_ptr<AutoCli::Namespace>& root);

// The commands of the namespace, each defined in the file of its name.
std::shared_ptr<AutoCli::Command> NewPackageCheck();
std::shared_ptr<AutoCli::Command> NewPackageFiles();
std::shared_ptr<AutoCli::Command> NewPackageGet();
std::shared_ptr<AutoCli::Command> NewPackageList();
std::shared_ptr<AutoCli::Command> NewPackageUpgradableList();

}  // namespace Kestrel::Host
