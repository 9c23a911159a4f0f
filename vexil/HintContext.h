// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "kestrel/autocli/CommandSpec.h"
#include "kestrel/autocli/Dispatcher.h"
#include "vexil/CommandLine.h"

namespace Kestrel::Vexil {

/// What all hints about one line refer to.
struct HintContext {
  const AutoCli::Dispatcher& dispatcher;
  const CommandLine& line;
  /// The command that the line names, or would name if its last dispatcher option had not taken the
  /// first word of the path as its value; null if there is none.
  std::shared_ptr<AutoCli::CommandSpec> command;
  /// The path of the command, in single quotes.
  std::string quotedPath;
};

using Hints = std::vector<std::string>;

/// Adds hints about options that are unknown on their side of the path, and about values that are
/// not accepted or not needed.
void AddOptionHints(const HintContext& context, Hints& hints);

/// Adds hints about the formatter, its parameters, and the width of the output.
void AddFormatHints(const HintContext& context, Hints& hints);

/// Returns `text` in single quotes. Replaces control characters, which could control the terminal,
/// with '?'.
std::string Quote(std::string text);

/// Returns " Did you mean 'A' or 'B'?" or, with the prefix "--", " Did you mean --A or --B?". Empty
/// if there are no names.
std::string AskFor(const std::vector<std::string>& names, const std::string& prefix = "");

}  // namespace Kestrel::Vexil
