// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "kestrel/autocli/Dispatcher.h"

namespace Kestrel::Complete {

using Deadline = std::chrono::steady_clock::time_point;

/// Returns the values of a field in the result of a command. `source` consists of the path of the
/// command, whose words are separated by full stops, then a space, then the name of the field:
/// "network.interface.list Name".
///
/// Runs the command in a child process, whose current folder is the root folder and whose PATH
/// contains only absolute folders. When the command has ended, or at the deadline, the process
/// group of the child is killed. A process that has left the group, such as a daemon that the
/// command has started, is not killed. Returns no values if the output is incomplete at the
/// deadline, if the command fails or needs a parameter, or if its meta-data says that it changes
/// something.
std::vector<std::string> ReadDataValues(const AutoCli::Dispatcher& dispatcher,
                                        const std::string& source, Deadline deadline);

}  // namespace Kestrel::Complete
