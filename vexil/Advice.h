// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

#include "kestrel/autocli/Dispatcher.h"

/// What the tool says on standard error beyond the library's messages, and after them. Nothing here
/// throws: advice that cannot be found out, because a plug-in's declaration fails, is left out.
namespace Kestrel::Vexil {

/// After `message` about a word of a path that names nothing: prints a line with the paths that may
/// have been meant, if there are any. The arguments are those of the process.
void PrintSuggestions(const AutoCli::Dispatcher& dispatcher, int argc, const char* const* argv,
                      const std::string& message);

/// Prints a line for each hint about the arguments of the process, but only when standard error is
/// a terminal: scripts see the library's messages alone.
void PrintHints(const AutoCli::Dispatcher& dispatcher, int argc, const char* const* argv);

}  // namespace Kestrel::Vexil
