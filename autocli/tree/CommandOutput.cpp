// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/CommandOutput.h"

namespace Kestrel::AutoCli {

std::shared_ptr<CommandOutput> CommandOutput::New() {
  return std::make_shared<CommandOutput>(FactoryFlag());
}

CommandOutput::CommandOutput(FactoryFlag) {}

CommandOutput::~CommandOutput() = default;

void CommandOutput::SetFormattedString(const std::string& text) { formattedString_ = text; }

const std::string& CommandOutput::GetFormattedString() const { return formattedString_; }

}  // namespace Kestrel::AutoCli
