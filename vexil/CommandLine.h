// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

#include "vexil/Words.h"

namespace Kestrel::Vexil {

/// An option as typed.
struct TypedOption {
  /// Includes the dashes but not the value: "--sort" or "-s".
  std::string spelling;
  /// Without the dashes.
  std::string name;
  std::string value;
  /// Whether the value is the word after the option.
  bool tookWord = false;
};

/// The parts of a command line. Unlike the result of the library's parser, it shows which values
/// were separate words.
struct CommandLine {
  std::vector<TypedOption> dispatcherOptions;
  Words path;
  std::vector<TypedOption> commandOptions;
  /// The first word after these options that is not a value, and all tokens after it, even options.
  Words extraWords;
};

/// Splits a line of a stream into its tokens, as the library's parser does, except that comments,
/// an empty last token, and quotes before the first token are not treated specially.
Words SplitLine(const std::string& line);

/// Splits the arguments after the tool's name as the library's parser does.
CommandLine SplitCommandLine(const std::vector<std::string>& arguments);

}  // namespace Kestrel::Vexil
