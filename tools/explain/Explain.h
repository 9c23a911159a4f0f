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
/// Throws the exceptions of the command's declaration, and KestrelException for the option --input.
Explanation ExplainLine(AutoCli::CliDispatcher& dispatcher,
                        const std::vector<std::string>& arguments);

}  // namespace Kestrel::Explain
