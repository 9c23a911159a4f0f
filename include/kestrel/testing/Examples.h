// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <exception>
#include <memory>
#include <string>
#include <utility>

#include "kestrel/autocli/ExtensionCommand.h"
#include "kestrel/callspec/InputSpec.h"
#include "kestrel/testing/Shape.h"
#include "kestrel/testing/ShellWords.h"
#include "kestrel/testing/TestTool.h"
#include "kestrel/testing/Verdict.h"

namespace Kestrel::Testing {

/// Whether the meta-data of a command says that it changes something.
inline bool Changes(const AutoCli::Command& command) {
  const auto entry = command.GetMetaData().find("changes");
  return entry != command.GetMetaData().end() && entry->second == "true";
}

/// Checks a command line without running the command. The verdict contains the messages of the
/// tool. If there are none and the command is one of a descriptor, its shell command is made, and
/// the verdict contains the reason if that fails.
inline Verdict Explain(const TestTool& tool, const Words& words) {
  Verdict verdict;
  try {
    AutoCli::OptionParser parser;
    parser.ParseVector(words);
    std::list<std::string> path = parser.GetCommandPath();
    const auto command = std::dynamic_pointer_cast<AutoCli::Command>(
        tool.GetDispatcher().GetRootNamespace()->ResolveNode(path));
    if (command == nullptr) {
      verdict.Add("it names no command");
      return verdict;
    }
    parser.SetInputSpec(command->GetInputSpec());
    const auto input = AutoCli::CommandInput::New();
    const auto output = AutoCli::CommandOutput::New();
    for (const auto& [name, value] : parser.GetCommandParameters()) {
      input->AddParameter(name, value);
    }
    for (const std::string& error : parser.GetParseErrors()) {
      output->AddErrorMessage(error);
    }
    input->SetInputSpec(command->GetInputSpec());
    command->GetInputSpec()->Validate(input, output);
    for (const std::string& error : output->GetErrors()) {
      verdict.Add("it is refused: " + error);
    }
    const auto extension = std::dynamic_pointer_cast<AutoCli::ExtensionCommand>(command);
    if (extension != nullptr && verdict) {
      extension->SubstituteInput(input, false);
      extension->SubstituteInput(input, true);
    }
  } catch (const std::exception& error) {
    verdict.Add(std::string("it throws: ") + error.what());
  }
  return verdict;
}

/// Calls `check` for every example of the plug-in under test. The arguments are the words of the
/// example and whether its command changes something. Returns the problems of all examples.
template <typename Check>
Verdict ForEachExample(const TestTool& tool, const Check& check) {
  Verdict verdict;
  for (const auto& [path, command] : tool.GetCommands()) {
    for (const auto& [arguments, description] : command->GetExamples()) {
      const std::string line = path + (arguments.empty() ? "" : " ") + arguments;
      verdict.Add(check(SplitShellWords(line), Changes(*command)), "the example '" + line + "'");
    }
  }
  return verdict;
}

/// Checks every example of the plug-in under test without running its command.
inline Verdict CheckExamples(const TestTool& tool) {
  return ForEachExample(tool, [&](const Words& words, bool) { return Explain(tool, words); });
}

/// Runs every example of the plug-in under test, and checks that it succeeds with a result of the
/// declared shape. Examples of commands that change something (meta-data `changes`) are checked
/// without running them.
inline Verdict RunExamples(const TestTool& tool) {
  return ForEachExample(tool, [&](const Words& words, bool changes) {
    return changes ? Explain(tool, words) : CheckShape(tool.Run(words));
  });
}

}  // namespace Kestrel::Testing
