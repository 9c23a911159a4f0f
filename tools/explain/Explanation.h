// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>
#include <vector>

namespace Kestrel::Explain {

/// What the tool would do with a parameter of a command.
struct ExplainedParameter {
  std::string name;
  std::string kind;                 ///< such as "int-list"
  std::vector<std::string> values;  ///< as the command reads them: 7, true, 'text', ***
  std::string origin;               ///< where the values come from; empty if there are none
  std::string constraint;           ///< empty if the parameter has none
  bool isConstraintMet = true;
};

/// A formatter, which has no value, or a parameter of one.
struct ExplainedFormat {
  std::string name;
  std::string value;
  std::string origin;
};

/// What the shell would receive.
struct ShellTexts {
  std::string commandLine;
  std::string standardInput;
};

/// What the tool would do with a command line. Values of secret parameters are "***" everywhere.
struct Explanation {
  std::string path;
  std::string plugin;               ///< the command's file or "unknown"; empty without a command
  std::vector<std::string> errors;  ///< the messages of the tool; empty for a valid line
  bool isHelp = false;              ///< the tool prints the help page instead
  std::vector<ExplainedParameter> parameters;
  ExplainedFormat formatter;  ///< the name is empty if nothing is printed
  std::vector<ExplainedFormat> formatParameters;
  /// Nothing for a native command, for help and for a line that is not valid, unless its only fault
  /// is an unknown formatter.
  std::optional<ShellTexts> shell;
};

}  // namespace Kestrel::Explain
