// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/Command.h"

#include <exception>
#include <string>
#include <vector>

#include "kestrel/autocli/CommandInput.h"
#include "kestrel/callspec/Input.h"
#include "kestrel/callspec/Output.h"
#include "kestrel/callspec/OutputSpec.h"

namespace Kestrel::AutoCli {

using CallSpec::Input;
using CallSpec::Output;
using CallSpec::OutputSpec;

namespace {

// Returns the path of the call or, if it has none, the command's own name.
std::string NameForMessages(const Command& command, const Input* input) {
  const auto* const commandInput = dynamic_cast<const CommandInput*>(input);
  return commandInput != nullptr ? commandInput->GetCommandPathString() : command.GetName();
}

void CheckResult(const OutputSpec& spec, const std::shared_ptr<Output>& output) {
  std::vector<std::string> problems;
  if (spec.Validate(output, &problems)) {
    return;
  }
  for (const std::string& problem : problems) {
    output->AddErrorMessage(problem);
  }
  output->AddErrorMessage(
      "Implementation error! The output of this command does not match the declared output type, "
      "see errors above.");
}

}  // namespace

Command::Command() = default;

Command::~Command() = default;

void Command::Execute(const std::shared_ptr<Input>& input, const std::shared_ptr<Output>& output) {
  try {
    if (input != nullptr && input->HasParameter("help")) {
      GenerateHelpOutput(input, output);
      return;
    }
    ExecuteInternal(input, output);
    if (!output->HasError()) {
      CheckResult(*GetOutputSpec(), output);
    }
  } catch (const std::exception& error) {
    output->AddErrorMessage("Error on command " + NameForMessages(*this, input.get()) + " : " +
                            error.what());
  }
}

}  // namespace Kestrel::AutoCli
