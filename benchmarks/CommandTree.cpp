// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "benchmarks/CommandTree.h"

#include <list>
#include <memory>

#include "kestrel/autocli/Command.h"
#include "kestrel/autocli/CommandInput.h"
#include "kestrel/autocli/CommandOutput.h"
#include "kestrel/autocli/Namespace.h"
#include "kestrel/autocli/OptionParser.h"
#include "kestrel/autocli/RootNamespace.h"
#include "kestrel/callspec/InputSpec.h"
#include "kestrel/callspec/OutputSpec.h"
#include "kestrel/metaobj/MetaBool.h"

namespace Kestrel::Benchmarks {
namespace {

using AutoCli::CommandInput;
using AutoCli::CommandOutput;
using AutoCli::OptionParser;
using CallSpec::InputSpec;
using CallSpec::OutputSpec;
using CallSpec::ParameterSpec;
using CallSpec::ParameterType;

/// Takes twenty optional parameters, strings and integers, and does nothing.
class IdleCommand : public AutoCli::Command {
 public:
  std::shared_ptr<InputSpec> GetInputSpecInternal() override {
    auto spec = InputSpec::New();
    for (std::size_t i = 0; i < kParameters; ++i) {
      auto parameter = ParameterSpec::New(ParameterName(i),
                                          i % 2 == 0 ? ParameterType::String : ParameterType::Int);
      parameter->SetRequired(false);
      spec->AddParameter(parameter);
    }
    return spec;
  }

  std::shared_ptr<OutputSpec> GetOutputSpecInternal() override {
    auto spec = OutputSpec::New();
    spec->SetRootObject(MetaObj::MetaBool::New(true));
    return spec;
  }

  void ExecuteInternal(const std::shared_ptr<CallSpec::Input>& /*input*/,
                       const std::shared_ptr<CallSpec::Output>& output) override {
    output->SetRootObject(MetaObj::MetaBool::New(true));
  }
};

}  // namespace

std::string ParameterName(std::size_t index) { return "parameter-" + std::to_string(index); }
std::string NamespaceName(int index) { return "namespace" + std::to_string(index); }
std::string CommandName(int index) { return "command" + std::to_string(index); }

void AddCommands(AutoCli::Dispatcher& dispatcher, int commands) {
  for (int i = 0; i < commands; ++i) {
    dispatcher.GetRootNamespace()
        ->SubNamespace(NamespaceName(i / kCommandsPerNamespace))
        ->RegisterNamespaceNode(std::make_shared<IdleCommand>(), CommandName(i));
  }
}

std::vector<std::string> MakeCall(int commands) {
  const int middle = commands / 2;
  std::vector<std::string> words = {"tool", NamespaceName(middle / kCommandsPerNamespace),
                                    CommandName(middle)};
  for (std::size_t i = 0; i < kParameters; ++i) {
    words.push_back("--" + ParameterName(i) + "=" + std::to_string(1000 + i));
  }
  return words;
}

std::vector<const char*> PointersTo(const std::vector<std::string>& words) {
  std::vector<const char*> pointers;
  for (const std::string& word : words) {
    pointers.push_back(word.c_str());
  }
  return pointers;
}

bool Call(AutoCli::Dispatcher& dispatcher, const std::vector<const char*>& argv) {
  OptionParser parser;
  parser.ParseArgv(static_cast<int>(argv.size()), argv.data());
  std::list<std::string> path = parser.GetCommandPath();
  const auto command =
      std::dynamic_pointer_cast<AutoCli::Command>(dispatcher.GetRootNamespace()->ResolveNode(path));
  parser.SetInputSpec(command->GetInputSpec());
  const auto input = CommandInput::New();
  input->SetDispatcher(parser.GetDispatcher());
  input->SetCommandPath(parser.GetCommandPath());
  for (const auto& [name, value] : parser.GetCommandParameters()) {
    input->AddParameter(name, value);
  }
  const auto output = CommandOutput::New();
  return dispatcher.ExecuteCommand(input, output) && !output->HasError();
}

}  // namespace Kestrel::Benchmarks
