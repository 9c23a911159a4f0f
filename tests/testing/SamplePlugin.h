// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "kestrel/autocli/Command.h"
#include "kestrel/autocli/Plugin.h"
#include "kestrel/callspec/Input.h"
#include "kestrel/callspec/InputSpec.h"
#include "kestrel/callspec/Output.h"
#include "kestrel/callspec/OutputSpec.h"
#include "kestrel/callspec/ParameterSpec.h"
#include "kestrel/metaobj/MetaString.h"
#include "kestrel/metaobj/MetaStruct.h"

namespace Kestrel::Testing {

/// A command "sample show". It declares a structure "Sample" with the field "Text" as its result,
/// unless `SetResult` has set another one.
class SampleCommand : public AutoCli::Command {
 public:
  using Work = std::function<void(const std::string& text, CallSpec::Output& output)>;

  explicit SampleCommand(Work work) : work_(std::move(work)) {
    SetDescription("Show it.");
    SetDefaultOutputFormatter("simple");
  }

  std::shared_ptr<CallSpec::InputSpec> GetInputSpecInternal() override {
    const auto text = CallSpec::ParameterSpec::New("text", CallSpec::String);
    text->SetShortName("t");
    const auto spec = CallSpec::InputSpec::New();
    spec->AddParameter(text);
    return spec;
  }

  std::shared_ptr<CallSpec::OutputSpec> GetOutputSpecInternal() override {
    const auto spec = CallSpec::OutputSpec::New();
    spec->SetRootObject(result_);
    return spec;
  }

  void SetResult(const std::shared_ptr<MetaObj::MetaStruct>& result) { result_ = result; }

  void ExecuteInternal(const std::shared_ptr<CallSpec::Input>& input,
                       const std::shared_ptr<CallSpec::Output>& output) override {
    work_(input->GetParameter("text"), *output);
  }

  static std::shared_ptr<MetaObj::MetaStruct> MakeResult(const std::string& type,
                                                         const std::string& text) {
    const auto result = MetaObj::MetaStruct::New(type);
    result->SetField("Text", MetaObj::MetaString::NewUtf8WithEscapes(std::string(text)));
    return result;
  }

 private:
  Work work_;
  std::shared_ptr<MetaObj::MetaStruct> result_ = MakeResult("Sample", "");
};

/// A plug-in object with one command at "sample show".
class SamplePlugin : public AutoCli::Plugin {
 public:
  explicit SamplePlugin(std::shared_ptr<SampleCommand> command) : command_(std::move(command)) {}

  void Initialize() override {}
  const std::string& GetName() const override { return name_; }
  void RegisterNamespaces(std::shared_ptr<AutoCli::Namespace> root) override {
    root->SubNamespace("sample")->RegisterNamespaceNode(command_, "show");
  }
  bool HasFormatter(const std::string&) override { return false; }
  std::shared_ptr<AutoCli::Formatter> GetFormatter(const std::string&) override { return nullptr; }
  const std::vector<std::shared_ptr<AutoCli::Formatter>>& GetFormatters() override {
    return formatters_;
  }

 private:
  std::shared_ptr<SampleCommand> command_;
  std::string name_ = "sample";
  std::vector<std::shared_ptr<AutoCli::Formatter>> formatters_;
};

/// Returns a plug-in whose command does `work`. `prepare` may change the command's declaration.
inline std::shared_ptr<AutoCli::Plugin> MakePlugin(
    SampleCommand::Work work, const std::function<void(SampleCommand&)>& prepare = nullptr) {
  const auto command = std::make_shared<SampleCommand>(std::move(work));
  if (prepare) {
    prepare(*command);
  }
  return std::make_shared<SamplePlugin>(command);
}

inline void ReturnText(const std::string& text, CallSpec::Output& output) {
  output.SetRootObject(SampleCommand::MakeResult("Sample", text));
}

}  // namespace Kestrel::Testing
