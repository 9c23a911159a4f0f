// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/CommandInput.h"

#include "autocli/text/JoinWords.h"

namespace Kestrel::AutoCli {

std::shared_ptr<CommandInput> CommandInput::New() {
  return std::make_shared<CommandInput>(FactoryFlag());
}

CommandInput::CommandInput(FactoryFlag) {}

CommandInput::~CommandInput() = default;

void CommandInput::SetDispatcher(const std::string& dispatcher) { dispatcher_ = dispatcher; }

const std::string& CommandInput::GetDispatcher() const { return dispatcher_; }

void CommandInput::SetCommandPath(const std::list<std::string>& path) { commandPath_ = path; }

const std::list<std::string>& CommandInput::GetCommandPath() const { return commandPath_; }

std::string CommandInput::GetCommandPathString() const { return JoinWords(commandPath_); }

}  // namespace Kestrel::AutoCli
