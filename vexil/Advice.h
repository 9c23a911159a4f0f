// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

#include "kestrel/autocli/Dispatcher.h"

/// What the tool prints on standard error after the library's messages. Nothing here throws: advice
/// that cannot be determined because a plug-in's declaration fails is omitted.
namespace Kestrel::Vexil {

/// If `message` is about an unknown word of a path, prints a line with the paths that the user may
/// have meant, if there are any. The arguments are those of the process.
void PrintSuggestions(const AutoCli::Dispatcher& dispatcher, int argc, const char* const* argv,
                      const std::string& message);

/// Prints a line for each hint about the arguments of the process, but only if standard error is a
/// terminal: scripts see only the library's messages.
void PrintHints(const AutoCli::Dispatcher& dispatcher, int argc, const char* const* argv);

}  // namespace Kestrel::Vexil
