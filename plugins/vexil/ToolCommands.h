// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/autocli/Command.h>

#include <memory>

namespace Kestrel::Vexil {

// The commands of the plug-in, one factory each.

std::shared_ptr<AutoCli::Command> NewCommandDescribe();
std::shared_ptr<AutoCli::Command> NewPluginList();
std::shared_ptr<AutoCli::Command> NewVersionGet();

}  // namespace Kestrel::Vexil
