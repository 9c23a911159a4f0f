// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "support/SampleCommands.h"

#include <iterator>
#include <list>
#include <stdexcept>

#include "kestrel/callspec/InputSpec.h"
#include "kestrel/callspec/Output.h"
#include "kestrel/callspec/OutputSpec.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaString.h"

namespace Kestrel::Testing {

using CallSpec::Input;
using CallSpec::InputSpec;
using CallSpec::Output;
using CallSpec::OutputSpec;
using MetaObj::MetaInt;
using MetaObj::MetaString;

SampleCommand::SampleCommand()
    : inputSpec(InputSpec::New()),
      outputSpec(OutputSpec::New()),
      work(
          [](const auto&, const auto& output) { output->SetRootObject(MetaString::New("done")); }) {
  outputSpec->SetRootObject(MetaString::New());
}

SampleCommand::~SampleCommand() = default;

std::shared_ptr<InputSpec> SampleCommand::GetInputSpecInternal() {
  ++inputSpecCalls;
  return inputSpec;
}

std::shared_ptr<OutputSpec> SampleCommand::GetOutputSpecInternal() {
  ++outputSpecCalls;
  return outputSpec;
}

void SampleCommand::ExecuteInternal(const std::shared_ptr<Input>& input,
                                    const std::shared_ptr<Output>& output) {
  ++executions;
  work(input, output);
}

std::shared_ptr<SampleCommand> MakeAnsweringCommand(const std::string& text) {
  auto command = std::make_shared<SampleCommand>();
  command->work = [text](const auto&, const auto& output) {
    output->SetRootObject(MetaString::New(text));
  };
  return command;
}

std::shared_ptr<SampleCommand> MakeThrowingCommand(const std::string& text) {
  auto command = std::make_shared<SampleCommand>();
  command->work = [text](const auto&, const auto&) { throw std::runtime_error(text); };
  return command;
}

std::shared_ptr<SampleCommand> MakeLyingCommand() {
  auto command = std::make_shared<SampleCommand>();
  command->work = [](const auto&, const auto& output) { output->SetRootObject(MetaInt::New(7)); };
  return command;
}

void RegisterAt(const std::shared_ptr<AutoCli::NamespaceNode>& root,
                std::initializer_list<const char*> path,
                const std::shared_ptr<AutoCli::NamespaceNode>& command) {
  std::shared_ptr<AutoCli::NamespaceNode> node = root;
  const auto last = std::prev(path.end());
  for (auto name = path.begin(); name != last; ++name) {
    node = node->SubNamespace(*name);
  }
  node->RegisterNamespaceNode(command, *last);
}

std::shared_ptr<AutoCli::CommandInput> MakeCommandInput(std::initializer_list<const char*> path) {
  std::shared_ptr<AutoCli::CommandInput> input = AutoCli::CommandInput::New();
  input->SetDispatcher("vexil");
  input->SetCommandPath(std::list<std::string>(path.begin(), path.end()));
  return input;
}

}  // namespace Kestrel::Testing
