// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

#include "kestrel/autocli/Dispatcher.h"
#include "vexil/CommandLine.h"

namespace Kestrel::Vexil {

/// What a person may want to know about the mistakes in a command line, a sentence or two each:
/// options and values that are nearly right, that are on the wrong side of the path, or that have
/// no effect. Empty when there is nothing to say. Never contains the value of a secret.
///
/// Throws what the declaration of the command throws.
std::vector<std::string> FindHints(const AutoCli::Dispatcher& dispatcher, const CommandLine& line);

}  // namespace Kestrel::Vexil
