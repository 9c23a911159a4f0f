// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "kestrel/autocli/Dispatcher.h"

namespace Kestrel::Complete {

using Deadline = std::chrono::steady_clock::time_point;

/// The values of one field in the result of a command; `source` is the path of the command, its
/// words separated by full stops, one space and the field: "network.interface.list Name".
///
/// Runs the command in a child process, in the root folder and with absolute folders alone in PATH.
/// At the deadline the child is killed with all that it started. Empty when that happens or the
/// command fails, when it needs a parameter, or when its meta-data say that it changes something.
std::vector<std::string> ReadDataValues(const AutoCli::Dispatcher& dispatcher,
                                        const std::string& source, Deadline deadline);

}  // namespace Kestrel::Complete
