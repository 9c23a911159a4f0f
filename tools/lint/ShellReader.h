// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Lint {

/// The shells that /bin/sh may be. Bash has additional constructs, such as the expansion of braces,
/// and treats some mistakes differently.
enum class Shell { Dash, Bash };

/// One argument of a command.
struct ShellWord {
  /// Without quotes and backslashes. A byte 1 stands for what an expansion adds.
  std::string text;
  /// Whether the shell replaces the word with the names of files.
  bool isPattern = false;
  /// Whether such a name may begin with "-".
  bool mayBeOption = false;
  /// Whether the shell replaces the beginning of the word with a home folder.
  bool isHome = false;
};

/// A simple command: its name and its arguments. Assignments and redirections are left out.
struct ShellCommand {
  std::vector<ShellWord> words;
};

/// How a shell reads a command line, before it runs anything.
struct ShellReading {
  /// All commands in the order in which they begin, including those in command substitutions. If
  /// there is a mistake or something unknown, only those in the lines before it, which run.
  std::vector<ShellCommand> commands;
  /// Whether the line contains only constructs that the reader supports: no here-document, no
  /// arithmetic, no `case`.
  bool isUnderstood = true;
  /// Whether the syntax is correct.
  bool isCorrect = true;
};

ShellReading ReadShellLine(std::string_view line, Shell shell);

}  // namespace Kestrel::Lint
