// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/HostCommand.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <stdexcept>

#include "kestrel/KestrelException.h"
#include "kestrel/autocli/RootNamespace.h"
#include "kestrel/metaobj/MetaInt.h"

namespace Kestrel::Host {
namespace {

using CallSpec::Input;
using CallSpec::Output;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::SizeIs;
using ::testing::UnorderedElementsAre;

// A command that returns 7, or fails in one of three ways.
class SampleCommand final : public HostCommand {
 public:
  enum class Look { Table, Lines, Value, None };

  explicit SampleCommand(Look look) : HostCommand("Show a sample.") {
    switch (look) {
      case Look::Table:
        ShowAsTable("A,B", {{"units:Sample.A", "s"}, {"wrap-last", "true"}});
        break;
      case Look::Lines:
        ShowAsLines("Sample", "B,A", {{"header:Sample", "%A%"}});
        break;
      case Look::Value:
        ShowAsValue();
        break;
      case Look::None:
        break;
    }
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("fail", CallSpec::String, "How to fail.")
        .Short("f")
        .OneOf({{"message", ""}, {"exception", ""}, {"foreign", ""}})
        .AddTo(spec);
  }

  void DeclareResult(CallSpec::OutputSpec& spec) const override {
    spec.SetRootObject(MetaObj::MetaInt::New());
    spec.SetDescription("A number.");
  }

  void Run(const Input& input, Output& output) const override {
    const std::string& failure = input.GetParameter("fail");
    if (failure == "exception") {
      throw KestrelException("It is broken");
    }
    if (failure == "foreign") {
      throw std::runtime_error("It is foreign");
    }
    if (failure == "message") {
      output.AddErrorMessage("It is wrong");
      return;
    }
    output.SetRootObject(MetaObj::MetaInt::New(7));
  }
};

// A command that takes no parameter.
class PlainCommand final : public HostCommand {
 public:
  PlainCommand() : HostCommand("Do nothing.") {}

 private:
  void DeclareResult(CallSpec::OutputSpec& spec) const override {
    spec.SetRootObject(MetaObj::MetaInt::New());
  }
  void Run(const Input&, Output& output) const override {
    output.SetRootObject(MetaObj::MetaInt::New(1));
  }
};

std::map<std::string, std::string> FormatOf(SampleCommand::Look look) {
  const auto format = SampleCommand(look).GetDefaultOutputFormatParameters();
  std::map<std::string, std::string> all = {{"", format.GetFormatter()}};
  all.insert(format.GetParameters().begin(), format.GetParameters().end());
  return all;
}

std::shared_ptr<Output> Execute(AutoCli::Command& command, const std::string& failure) {
  const auto input = Input::New();
  auto output = Output::New();
  input->SetInputSpec(command.GetInputSpec());
  if (!failure.empty()) {
    input->AddParameter("fail", failure);
  }
  command.Execute(input, output);
  return output;
}

std::shared_ptr<Output> ExecuteSample(const std::string& failure) {
  const auto root = AutoCli::RootNamespace::New(nullptr);
  const auto command = std::make_shared<SampleCommand>(SampleCommand::Look::Value);
  root->RegisterNamespaceNode(command, "sample");
  return Execute(*command, failure);
}

TEST(HostCommandTest, ATableShowsTheColumns) {
  EXPECT_THAT(FormatOf(SampleCommand::Look::Table),
              UnorderedElementsAre(Pair("", "table"), Pair("fields", "A,B"),
                                   Pair("units:Sample.A", "s"), Pair("wrap-last", "true")));
}

TEST(HostCommandTest, LinesShowTheFieldsAligned) {
  EXPECT_THAT(FormatOf(SampleCommand::Look::Lines),
              UnorderedElementsAre(Pair("", "simple"), Pair("align-fields", "true"),
                                   Pair("fields:Sample", "B,A"), Pair("header:Sample", "%A%")));
}

TEST(HostCommandTest, AValueNeedsNoFields) {
  EXPECT_THAT(FormatOf(SampleCommand::Look::Value), UnorderedElementsAre(Pair("", "simple")));
}

TEST(HostCommandTest, DeclaresWhatTheConcreteClassDeclares) {
  SampleCommand command(SampleCommand::Look::None);
  EXPECT_EQ(command.GetDescription(), "Show a sample.");
  const auto parameters = command.GetInputSpec()->GetParameters();
  ASSERT_THAT(parameters, SizeIs(::testing::Ge(1u)));
  EXPECT_EQ(parameters[0]->GetName(), "fail");
  EXPECT_EQ(command.GetOutputSpec()->GetDescription(), "A number.");
}

TEST(HostCommandTest, NeedNotDeclareAParameter) {
  PlainCommand command;
  EXPECT_THAT(command.GetInputSpecInternal()->GetParameters(), IsEmpty());
}

TEST(HostCommandTest, ReturnsTheResultOfTheConcreteClass) {
  const auto output = ExecuteSample("");
  EXPECT_THAT(output->GetErrors(), IsEmpty());
  ASSERT_NE(output->GetRootObject(), nullptr);
  EXPECT_EQ(output->GetRootObject()->ToString(), "7");
}

TEST(HostCommandTest, AFailureIsAMessage) {
  EXPECT_THAT(ExecuteSample("message")->GetErrors(), ElementsAre("It is wrong"));
  EXPECT_THAT(ExecuteSample("exception")->GetErrors(), ElementsAre("It is broken"));
  EXPECT_THAT(ExecuteSample("foreign")->GetErrors(), SizeIs(1));
}

TEST(HostCommandTest, ReportsAMissingInput) {
  const auto root = AutoCli::RootNamespace::New(nullptr);
  const auto command = std::make_shared<PlainCommand>();
  root->RegisterNamespaceNode(command, "plain");
  const auto output = Output::New();
  command->Execute(nullptr, output);
  EXPECT_THAT(output->GetErrors(),
              ElementsAre("Error on command plain : The command needs an input"));
  EXPECT_EQ(output->GetRootObject(), nullptr);
}

TEST(HostCommandTest, AddNamespaceDescribesANewOne) {
  const auto root = AutoCli::RootNamespace::New(nullptr);
  const auto made = AddNamespace(root, "area", "What is there.");
  EXPECT_EQ(made->GetDescription(), "What is there.");
  EXPECT_EQ(root->GetNamespaceNode("area"), made);
}

TEST(HostCommandTest, AddNamespaceKeepsAnExistingDescription) {
  const auto root = AutoCli::RootNamespace::New(nullptr);
  const auto first = AddNamespace(root, "area", "What was there first.");
  EXPECT_EQ(AddNamespace(root, "area", "What came later."), first);
  EXPECT_EQ(first->GetDescription(), "What was there first.");
}

}  // namespace
}  // namespace Kestrel::Host
