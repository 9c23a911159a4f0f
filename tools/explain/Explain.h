// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

#include "kestrel/autocli/CliDispatcher.h"
#include "tools/explain/Explanation.h"

namespace Kestrel::Explain {

/// Explains the arguments of the tool. Loads the plug-ins that they name and, as the tool does,
/// reports on standard error those that cannot be loaded. Runs no command and prompts for nothing.
///
/// Throws KestrelException when the option --input is given. Exceptions that the command throws
/// while it declares its parameters or its result pass through.
Explanation ExplainLine(AutoCli::CliDispatcher& dispatcher,
                        const std::vector<std::string>& arguments);

}  // namespace Kestrel::Explain
