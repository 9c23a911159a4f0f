// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <initializer_list>
#include <memory>
#include <string>

#include "kestrel/autocli/Command.h"
#include "kestrel/autocli/CommandInput.h"
#include "kestrel/autocli/NamespaceNode.h"

namespace Kestrel::Testing {

/// A command whose parameters, declared result and work the test can set. By default it takes no
/// parameters, declares a string and returns "done".
class SampleCommand : public AutoCli::Command {
 public:
  using Work = std::function<void(const std::shared_ptr<CallSpec::Input>&,
                                  const std::shared_ptr<CallSpec::Output>&)>;

  SampleCommand();
  ~SampleCommand() override;

  std::shared_ptr<CallSpec::InputSpec> GetInputSpecInternal() override;
  std::shared_ptr<CallSpec::OutputSpec> GetOutputSpecInternal() override;
  void ExecuteInternal(const std::shared_ptr<CallSpec::Input>& input,
                       const std::shared_ptr<CallSpec::Output>& output) override;

  std::shared_ptr<CallSpec::InputSpec> inputSpec;
  std::shared_ptr<CallSpec::OutputSpec> outputSpec;
  Work work;

  /// How often each operation was called.
  int inputSpecCalls = 0;
  int outputSpecCalls = 0;
  int executions = 0;
};

/// Makes a command that returns `text`.
std::shared_ptr<SampleCommand> MakeAnsweringCommand(const std::string& text);

/// Makes a command that throws `std::runtime_error(text)`.
std::shared_ptr<SampleCommand> MakeThrowingCommand(const std::string& text);

/// Makes a command that declares a string but returns an integer.
std::shared_ptr<SampleCommand> MakeLyingCommand();

/// Registers `command` at `path` below `root`, creating namespaces as needed.
void RegisterAt(const std::shared_ptr<AutoCli::NamespaceNode>& root,
                std::initializer_list<const char*> path,
                const std::shared_ptr<AutoCli::NamespaceNode>& command);

/// Makes the input of a call of the command at `path` in the dispatcher "vexil".
std::shared_ptr<AutoCli::CommandInput> MakeCommandInput(std::initializer_list<const char*> path);

}  // namespace Kestrel::Testing
