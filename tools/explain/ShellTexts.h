// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

#include "kestrel/autocli/ExtensionCommand.h"
#include "tools/explain/ExplainedCall.h"
#include "tools/explain/Explanation.h"

namespace Kestrel::Explain {

/// Returns what the shell would receive from a command of a descriptor, byte for byte, with "***"
/// in place of each secret. Throws KestrelException if the command would refuse a value.
ShellTexts MakeShellTexts(AutoCli::ExtensionCommand& command, const ExplainedCall& call);

/// Returns `text` in single quotes, with control characters and bytes that are not UTF-8 as
/// `\xHH`.
std::string Quote(const std::string& text);

}  // namespace Kestrel::Explain
