// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/kestrel.h>

#include <memory>
#include <string>

namespace {

/// A command of a test plug-in that returns a fixed string. Each plug-in defines its own class, so
/// that the command's code, including its destructor, is part of the plug-in.
class AnswerCommand : public Kestrel::AutoCli::Command {
 public:
  explicit AnswerCommand(std::string text) : text_(std::move(text)) {
    SetDescription("Answers " + text_ + ".");
    SetDefaultOutputFormatter("simple");
  }

  ~AnswerCommand() override { text_.clear(); }

  std::shared_ptr<Kestrel::CallSpec::InputSpec> GetInputSpecInternal() override {
    return Kestrel::CallSpec::InputSpec::New();
  }

  std::shared_ptr<Kestrel::CallSpec::OutputSpec> GetOutputSpecInternal() override {
    auto spec = Kestrel::CallSpec::OutputSpec::New();
    spec->SetRootObject(Kestrel::MetaObj::MetaString::New());
    return spec;
  }

  void ExecuteInternal(const std::shared_ptr<Kestrel::CallSpec::Input>& /*input*/,
                       const std::shared_ptr<Kestrel::CallSpec::Output>& output) override {
    output->SetRootObject(Kestrel::MetaObj::MetaString::New(text_));
  }

 private:
  std::string text_;
};

}  // namespace
