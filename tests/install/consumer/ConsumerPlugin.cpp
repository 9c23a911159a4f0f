// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <kestrel/autocli/PluginEntryPoint.h>
#include <kestrel/kestrel.h>

#include <memory>
#include <string>

namespace {

using Kestrel::CallSpec::Input;
using Kestrel::CallSpec::InputSpec;
using Kestrel::CallSpec::Output;
using Kestrel::CallSpec::OutputSpec;
using Kestrel::CallSpec::ParameterSpec;
using Kestrel::MetaObj::MetaStruct;

class GreetCommand : public Kestrel::AutoCli::Command {
 public:
  GreetCommand() {
    SetDescription("Greets someone.");
    SetDefaultOutputFormatter("simple");
  }

  std::shared_ptr<InputSpec> GetInputSpecInternal() override {
    auto spec = InputSpec::New();
    spec->AddParameter(ParameterSpec::New("name", Kestrel::CallSpec::ParameterType::String));
    return spec;
  }

  std::shared_ptr<OutputSpec> GetOutputSpecInternal() override {
    auto spec = OutputSpec::New();
    spec->SetRootObject(MakeGreeting(""));
    return spec;
  }

  void ExecuteInternal(const std::shared_ptr<Input>& input,
                       const std::shared_ptr<Output>& output) override {
    output->SetRootObject(MakeGreeting("Hello, " + input->GetParameter("name") + "!"));
  }

 private:
  static std::shared_ptr<MetaStruct> MakeGreeting(const std::string& text) {
    auto greeting = MetaStruct::New("Greeting");
    greeting->SetField("Text", text);
    return greeting;
  }
};

}  // namespace

void AutoCli_RegisterNamespaces(std::shared_ptr<Kestrel::AutoCli::Namespace> root) {
  root->SubNamespace("consumer")->RegisterNamespaceNode(std::make_shared<GreetCommand>(), "greet");
}
