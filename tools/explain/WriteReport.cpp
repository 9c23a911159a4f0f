// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/explain/WriteReport.h"

#include <string>
#include <vector>

#include "tools/explain/ShellTexts.h"

namespace Kestrel::Explain {

namespace {

std::string DescribeValues(const ExplainedParameter& parameter) {
  if (parameter.origin.empty()) {
    return " is not given (" + parameter.kind + ")\n";
  }
  std::string text = " =";
  for (const std::string& value : parameter.values) {
    text += " " + value;
  }
  return text + " (" + parameter.kind + ", from " + parameter.origin + ")\n";
}

std::string DescribeParameter(const ExplainedParameter& parameter) {
  std::string text = "  --" + parameter.name + DescribeValues(parameter);
  if (!parameter.constraint.empty() && !parameter.origin.empty()) {
    text += std::string("    constraint ") + (parameter.isConstraintMet ? "met: " : "not met: ") +
            parameter.constraint + "\n";
  }
  return text;
}

std::string DescribeFormat(const Explanation& explanation) {
  const ExplainedFormat& formatter = explanation.formatter;
  std::string text = "Formatter: ";
  if (formatter.name.empty()) {
    return text + "none, nothing is printed\n";
  }
  text += formatter.name + " (" + formatter.origin + ")\n";
  for (const ExplainedFormat& parameter : explanation.formatParameters) {
    text +=
        "  " + parameter.name + " = " + Quote(parameter.value) + " (" + parameter.origin + ")\n";
  }
  return text;
}

std::string WithSize(const char* title, const std::string& text) {
  const std::string size = std::to_string(text.size());
  return std::string(title) + ", " + size + (text.size() == 1 ? " byte:\n" : " bytes:\n") + text +
         "\n";
}

std::string DescribeErrors(const std::vector<std::string>& errors) {
  std::string text = "Not valid:\n";
  for (const std::string& error : errors) {
    text += "  " + error + "\n";
  }
  return text;
}

std::string DescribeRun(const Explanation& explanation) {
  const std::string shell = explanation.shell.has_value()
                                ? WithSize("Shell text", explanation.shell->commandLine) +
                                      WithSize("Standard input", explanation.shell->standardInput)
                                : std::string();
  if (!explanation.errors.empty()) {
    return DescribeErrors(explanation.errors) + shell;
  }
  if (explanation.isHelp) {
    return "Valid: the tool would print the help page of the command\n";
  }
  if (shell.empty()) {
    return "Valid: the tool would call the code of the plug-in, without a shell\n";
  }
  return "Valid: the tool would start a shell\n" + shell;
}

}  // namespace

std::string WriteReport(const Explanation& explanation) {
  std::string text;
  if (!explanation.plugin.empty()) {
    text = "Command: " + explanation.path + "\nPlug-in: " + explanation.plugin + "\n";
    text += explanation.parameters.empty() ? "Parameters: none\n" : "Parameters:\n";
    for (const ExplainedParameter& parameter : explanation.parameters) {
      text += DescribeParameter(parameter);
    }
    text += DescribeFormat(explanation);
  }
  return text + DescribeRun(explanation);
}

}  // namespace Kestrel::Explain
