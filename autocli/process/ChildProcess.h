// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

namespace Kestrel::AutoCli {

/// Runs the program `arguments[0]` with `arguments`. Writes `stdinData` to its standard input and
/// appends its standard output to `output`, until every process that can write to this output has
/// closed it. Its standard error is the caller's. `commandLine` is the name of the child in
/// messages.
///
/// Returns the wait status as `waitpid` reports it. Input and output are transferred at the same
/// time, so that no amount of either blocks both sides. Throws KestrelException with the system's
/// message when a pipe, the start, a write, a read or the wait fails. All file descriptors are
/// closed in every case; a child that is still running then is reaped by a later call.
///
/// A SIGINT or SIGTERM that would end this process goes to the child and all processes below it;
/// the same signal ends this process once the child has ended.
int RunChildProcess(const std::vector<std::string>& arguments, const std::string& commandLine,
                    std::string& output, const std::string& stdinData);

}  // namespace Kestrel::AutoCli
