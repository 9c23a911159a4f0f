// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace Kestrel::AutoCli {

/// Runs `commandLine` with /bin/sh; implements AutoCli_ShellCmdWithOprUsername. An empty `userName`
/// leaves the command line unchanged.
int RunShellCommand(const std::string& commandLine, const std::string& userName,
                    std::string& output, const std::string& stdinData);

}  // namespace Kestrel::AutoCli
