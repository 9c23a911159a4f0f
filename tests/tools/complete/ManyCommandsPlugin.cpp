// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// A very large tree: 1,000 commands in 50 namespaces. Each command has five parameters.

#include <kestrel/autocli/PluginEntryPoint.h>
#include <kestrel/kestrel.h>

#include <memory>
#include <string>

namespace {

using Kestrel::AutoCli::Command;
using Kestrel::AutoCli::Namespace;
using Kestrel::CallSpec::Input;
using Kestrel::CallSpec::InputSpec;
using Kestrel::CallSpec::Output;
using Kestrel::CallSpec::OutputSpec;
using Kestrel::CallSpec::ParameterSpec;
using Kestrel::MetaObj::MetaString;

constexpr int kNamespaces = 50;
constexpr int kCommands = 20;
constexpr int kParameters = 5;

class PlainCommand : public Command {
 public:
  PlainCommand() {
    SetDescription("One of many commands, with a description of the usual length.");
    SetDefaultOutputFormatter("simple");
    AddExample("--parameter0 value", "Do something with a value");
    AddMetaData("changes", "false");
  }

  std::shared_ptr<InputSpec> GetInputSpecInternal() override {
    auto spec = InputSpec::New();
    for (int i = 0; i < kParameters; ++i) {
      const auto parameter =
          ParameterSpec::New("parameter" + std::to_string(i), Kestrel::CallSpec::String);
      parameter->SetRequired(false);
      parameter->SetDescription("A parameter, with a description of the usual length.");
      spec->AddParameter(parameter);
    }
    return spec;
  }

  std::shared_ptr<OutputSpec> GetOutputSpecInternal() override {
    auto spec = OutputSpec::New();
    spec->SetRootObject(MetaString::New());
    return spec;
  }

  void ExecuteInternal(const std::shared_ptr<Input>& /*input*/,
                       const std::shared_ptr<Output>& output) override {
    output->SetRootObject(MetaString::New("done"));
  }
};

}  // namespace

void AutoCli_RegisterNamespaces(std::shared_ptr<Namespace> root) {
  for (int i = 0; i < kNamespaces; ++i) {
    const auto space = Namespace::New();
    space->SetDescription("One of many namespaces.");
    for (int j = 0; j < kCommands; ++j) {
      space->RegisterNamespaceNode(std::make_shared<PlainCommand>(), "command" + std::to_string(j));
    }
    root->RegisterNamespaceNode(space, "space" + std::to_string(i));
  }
}
