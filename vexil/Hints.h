// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

#include "kestrel/autocli/Dispatcher.h"
#include "vexil/CommandLine.h"

namespace Kestrel::Vexil {

/// Returns hints about the mistakes in a command line, of one or two sentences each: about options
/// and values that are nearly right, that are on the wrong side of the path, or that have no
/// effect. Empty if there are none. A hint never contains the value of a secret.
///
/// Throws the exceptions of a plug-in's declaration.
std::vector<std::string> FindHints(const AutoCli::Dispatcher& dispatcher, const CommandLine& line);

}  // namespace Kestrel::Vexil
