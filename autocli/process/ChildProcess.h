// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

namespace Kestrel::AutoCli {

/// Runs the program `arguments[0]` with `arguments`, writes `stdinData` to its standard input and
/// appends what it writes to its standard output to `output`, until it has closed that. Its
/// standard error is the caller's. `commandLine` names the child in messages.
///
/// Returns the wait status as `waitpid` reports it. Input and output are moved at the same time, so
/// that no amount of either can block both sides. Throws KestrelException with the system's text
/// when a pipe, the start, a write, a read or the wait fails; every descriptor is closed on every
/// path, and a child that has not ended by then is reaped by a later call.
int RunChildProcess(const std::vector<std::string>& arguments, const std::string& commandLine,
                    std::string& output, const std::string& stdinData);

}  // namespace Kestrel::AutoCli
