// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Registers one namespace with a command that returns its parameter.

#include <kestrel/autocli/PluginEntryPoint.h>
#include <kestrel/kestrel.h>

#include <memory>

namespace {

using Kestrel::CallSpec::Input;
using Kestrel::CallSpec::InputSpec;
using Kestrel::CallSpec::Output;
using Kestrel::CallSpec::OutputSpec;
using Kestrel::CallSpec::ParameterSpec;
using Kestrel::CallSpec::ParameterType;
using Kestrel::MetaObj::MetaString;

class EchoCommand : public Kestrel::AutoCli::Command {
 public:
  EchoCommand() {
    SetDescription("Answers with the text it is given.");
    SetDefaultOutputFormatter("simple");
  }

  std::shared_ptr<InputSpec> GetInputSpecInternal() override {
    auto text = ParameterSpec::New("text", ParameterType::String);
    text->SetDescription("The text.");
    text->SetShortName("t");
    auto spec = InputSpec::New();
    spec->AddParameter(text);
    return spec;
  }

  std::shared_ptr<OutputSpec> GetOutputSpecInternal() override {
    auto spec = OutputSpec::New();
    spec->SetRootObject(MetaString::New());
    return spec;
  }

  void ExecuteInternal(const std::shared_ptr<Input>& input,
                       const std::shared_ptr<Output>& output) override {
    output->SetRootObject(MetaString::New(input->GetParameter("text")));
  }
};

}  // namespace

void AutoCli_RegisterNamespaces(std::shared_ptr<Kestrel::AutoCli::Namespace> root) {
  const auto echo = Kestrel::AutoCli::Namespace::New();
  echo->SetDescription("Answers of a plug-in.");
  echo->RegisterNamespaceNode(std::make_shared<EchoCommand>(), "say");
  root->RegisterNamespaceNode(echo, "echo");
}
