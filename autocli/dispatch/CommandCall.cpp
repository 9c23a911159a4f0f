// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/dispatch/CommandCall.h"

#include <cstddef>

#include "kestrel/callspec/InputSpec.h"

namespace Kestrel::AutoCli {

bool CallCommand(Command& command, const std::shared_ptr<CommandInput>& input,
                 const std::shared_ptr<CommandOutput>& output) {
  const std::shared_ptr<CallSpec::InputSpec> spec = command.GetInputSpec();
  input->SetInputSpec(spec);

  // Some problems leave the result true, but their messages also prevent the call.
  const std::size_t errorsBefore = output->GetErrors().size();
  const bool isValid = spec->Validate(input, output);
  if (isValid && output->GetErrors().size() == errorsBefore) {
    command.Execute(input, output);
  } else if (!output->HasError() && output->GetRootObject() == nullptr) {
    // Checked only here; a command that has run is trusted.
    output->AddErrorMessage(
        "Command output has no root object nor error messages.  This is a problem with the command "
        "and should be repaired.");
  }
  return !output->HasError();
}

}  // namespace Kestrel::AutoCli
