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
  /// first word of the path; null when there is none.
  std::shared_ptr<AutoCli::CommandSpec> command;
  /// The path of the command, in quotes.
  std::string quotedPath;
};

using Hints = std::vector<std::string>;

/// Options that do not exist where they are, values that are not accepted.
void AddOptionHints(const HintContext& context, Hints& hints);

/// The formatter, its parameters, and the width to format for.
void AddFormatHints(const HintContext& context, Hints& hints);

/// `text` in single quotes; control characters, which would act on the terminal, become '?'.
std::string Quote(std::string text);

/// " Did you mean 'A' or 'B'?", or " Did you mean --A or --B?" with such a prefix; empty when there
/// are no names.
std::string AskFor(const std::vector<std::string>& names, const std::string& prefix = "");

}  // namespace Kestrel::Vexil
