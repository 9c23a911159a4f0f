// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <kestrel/autocli/PluginEntryPoint.h>
#include <kestrel/kestrel.h>

#include <memory>
#include <string>

namespace {

namespace AutoCli = Kestrel::AutoCli;
namespace CallSpec = Kestrel::CallSpec;
namespace MetaObj = Kestrel::MetaObj;

std::shared_ptr<MetaObj::MetaStruct> NewGreeting(const std::string& text) {
  auto greeting = MetaObj::MetaStruct::New("Greeting");
  greeting->SetField("Text", MetaObj::MetaString::New(text), "What is said.");
  greeting->SetField("Bytes", MetaObj::MetaInt::New(static_cast<long>(text.size())),
                     "How long it is.");
  return greeting;
}

class GreetCommand : public AutoCli::Command {
 public:
  GreetCommand() {
    SetDescription("Greet someone.");
    SetDefaultOutputFormatter("simple");
    SetDefaultOutputParameter("fields:Greeting", "Text,Bytes");
    AddExample("--name=Ada", "Greet Ada");
    AddExample("--name=Ada --loud", "Greet her across the street");
  }

  std::shared_ptr<CallSpec::InputSpec> GetInputSpecInternal() override {
    auto name = CallSpec::ParameterSpec::New("name", CallSpec::ParameterType::String);
    name->SetShortName("n");
    name->SetDescription("Whom to greet.");

    auto loud = CallSpec::ParameterSpec::New("loud", CallSpec::ParameterType::Flag);
    loud->SetShortName("l");
    loud->SetDescription("Raise the voice.");
    loud->SetRequired(false);

    auto spec = CallSpec::InputSpec::New();
    spec->AddParameter(name);
    spec->AddParameter(loud);
    return spec;
  }

  std::shared_ptr<CallSpec::OutputSpec> GetOutputSpecInternal() override {
    auto spec = CallSpec::OutputSpec::New();
    spec->SetRootObject(NewGreeting(""));
    spec->SetDescription("The greeting.");
    return spec;
  }

  void ExecuteInternal(const std::shared_ptr<CallSpec::Input>& input,
                       const std::shared_ptr<CallSpec::Output>& output) override {
    const std::string& name = input->GetParameter("name");
    if (name == "Nobody") {
      output->AddErrorMessage("There is nobody to greet");
      return;
    }
    output->SetRootObject(NewGreeting("Hello, " + name + (input->IsFlagSet("loud") ? "!" : ".")));
  }
};

}  // namespace

void AutoCli_RegisterNamespaces(std::shared_ptr<AutoCli::Namespace> root) {
  auto hello = root->SubNamespace("hello");
  hello->SetDescription("The smallest plug-in.");
  hello->RegisterNamespaceNode(std::make_shared<GreetCommand>(), "greet");
}
