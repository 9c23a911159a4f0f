// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

#include "kestrel/autocli/Dispatcher.h"
#include "vexil/Words.h"

/// What the tool prints on standard error after the library's messages. Suggestions and hints never
/// throw: those that cannot be determined because a plug-in's declaration fails are omitted.
namespace Kestrel::Vexil {

/// Prints a line on standard error. Uses the C stream: a plug-in may have set a width on std::cerr
/// or made it throw.
void PrintMessage(const std::string& message);

/// If `message` is about an unknown word of a path, prints a line with the paths that the user may
/// have meant, if there are any. `words` are the tokens of the command line.
void PrintSuggestions(const AutoCli::Dispatcher& dispatcher, const Words& words,
                      const std::string& message);

/// Prints a line for each hint about a command line, but only when standard error is a terminal:
/// scripts see the library's messages alone.
void PrintHints(const AutoCli::Dispatcher& dispatcher, const Words& words);

}  // namespace Kestrel::Vexil
