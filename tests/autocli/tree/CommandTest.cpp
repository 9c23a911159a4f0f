// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/Command.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "kestrel/KestrelException.h"
#include "kestrel/autocli/CommandInput.h"
#include "kestrel/autocli/RootNamespace.h"
#include "kestrel/callspec/CallTarget.h"
#include "kestrel/callspec/InputSpec.h"
#include "kestrel/callspec/Output.h"
#include "kestrel/callspec/OutputSpec.h"
#include "kestrel/callspec/ParameterSpec.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaString.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "support/SampleCommands.h"

namespace Kestrel::AutoCli {
namespace {

using CallSpec::Input;
using CallSpec::Output;
using CallSpec::ParameterSpec;
using CallSpec::ParameterType;
using MetaObj::MetaInt;
using MetaObj::MetaString;
using MetaObj::MetaStruct;
using testing::ElementsAre;
using testing::IsEmpty;
using Testing::MakeAnsweringCommand;
using Testing::MakeCommandInput;
using Testing::MakeLyingCommand;
using Testing::MakeThrowingCommand;
using Testing::RegisterAt;
using Testing::SampleCommand;

constexpr const char* kImplementationError =
    "Implementation error! The output of this command does not match the declared output type, "
    "see errors above.";

class CommandTest : public testing::Test {
 protected:
  // Registers the command as "network ip list" and runs it with `input_`.
  std::shared_ptr<Output> Run(const std::shared_ptr<Command>& command) {
    RegisterAt(root_, {"network", "ip", "list"}, command);
    std::shared_ptr<Output> output = Output::New();
    command->Execute(input_, output);
    return output;
  }

  std::shared_ptr<RootNamespace> root_ = RootNamespace::New(nullptr);
  std::shared_ptr<CommandInput> input_ = MakeCommandInput({"network", "ip", "list"});
};

TEST_F(CommandTest, RunsTheWorkAndKeepsItsResult) {
  const std::shared_ptr<SampleCommand> command = MakeAnsweringCommand("an answer");
  const std::shared_ptr<Output> output = Run(command);
  EXPECT_THAT(output->GetErrors(), IsEmpty());
  EXPECT_EQ(output->GetRootObject()->ToString(), "an answer");
  EXPECT_EQ(output->GetOutputType(), Output::Ordinary);
  EXPECT_EQ(command->executions, 1);
}

TEST_F(CommandTest, PassesItsArgumentsToTheWork) {
  const auto command = std::make_shared<SampleCommand>();
  std::shared_ptr<Input> seenInput;
  std::shared_ptr<Output> seenOutput;
  command->work = [&](const auto& input, const auto& output) {
    seenInput = input;
    seenOutput = output;
    output->SetRootObject(MetaString::New("x"));
  };
  const std::shared_ptr<Output> output = Run(command);
  EXPECT_EQ(seenInput, input_);
  EXPECT_EQ(seenOutput, output);
}

TEST_F(CommandTest, RunsThroughTheInterfaceOfACallTarget) {
  const std::shared_ptr<CallSpec::CallTarget> target = MakeAnsweringCommand("by interface");
  const std::shared_ptr<Output> output = Output::New();
  target->Execute(input_, output);
  EXPECT_EQ(output->GetRootObject()->ToString(), "by interface");
}

// Help.

TEST_F(CommandTest, HelpReplacesTheWorkEvenWhenRequiredParametersAreMissing) {
  const std::shared_ptr<SampleCommand> command = MakeThrowingCommand("never called");
  command->inputSpec->AddParameter(ParameterSpec::New("device", ParameterType::String));
  input_->AddParameter("help", "true");
  const std::shared_ptr<Output> output = Run(command);
  EXPECT_EQ(command->executions, 0);
  EXPECT_THAT(output->GetErrors(), IsEmpty());
  EXPECT_EQ(output->GetOutputType(), Output::Help);
  const auto help = std::dynamic_pointer_cast<MetaStruct>(output->GetRootObject());
  ASSERT_NE(help, nullptr);
  EXPECT_EQ(help->GetTypeName(), "VexilCommandHelp");
  EXPECT_EQ(help->GetField("Path")->ToString(), "network ip list");
}

TEST_F(CommandTest, ReturnsHelpForAnyValueOfTheParameter) {
  input_->AddParameter("help", "false");
  EXPECT_EQ(Run(std::make_shared<SampleCommand>())->GetOutputType(), Output::Help);
}

TEST_F(CommandTest, HelpThatCannotBeMadeIsAnError) {
  const auto command = std::make_shared<SampleCommand>();
  command->inputSpec = nullptr;
  input_->AddParameter("help", "");
  EXPECT_THAT(Run(command)->GetErrors(),
              ElementsAre("Error on command network ip list : The command 'list' has no input "
                          "specification."));
  EXPECT_EQ(command->executions, 0);
}

TEST_F(CommandTest, TheHelpIsNotCheckedAgainstTheDeclaredOutput) {
  const std::shared_ptr<SampleCommand> command = MakeLyingCommand();
  input_->AddParameter("help", "");
  EXPECT_THAT(Run(command)->GetErrors(), IsEmpty());
  EXPECT_EQ(command->outputSpecCalls, 0);
}

// Exceptions.

TEST_F(CommandTest, AStandardExceptionBecomesTheOnlyError) {
  const std::shared_ptr<SampleCommand> command = MakeThrowingCommand("boom");
  EXPECT_THAT(Run(command)->GetErrors(), ElementsAre("Error on command network ip list : boom"));
  EXPECT_EQ(command->outputSpecCalls, 0);
}

TEST_F(CommandTest, AKestrelExceptionBecomesAnError) {
  const auto command = std::make_shared<SampleCommand>();
  command->work = [](const auto&, const auto&) { throw KestrelException("no such device"); };
  EXPECT_THAT(Run(command)->GetErrors(),
              ElementsAre("Error on command network ip list : no such device"));
}

TEST_F(CommandTest, ErrorsFromBeforeTheExceptionPrecedeIt) {
  const auto command = std::make_shared<SampleCommand>();
  command->work = [](const auto&, const auto& output) {
    output->AddErrorMessage("first");
    throw std::runtime_error("second");
  };
  EXPECT_THAT(Run(command)->GetErrors(),
              ElementsAre("first", "Error on command network ip list : second"));
}

TEST_F(CommandTest, TheMessageNamesThePathOfTheInputNotThatOfTheNode) {
  input_ = MakeCommandInput({"as", "typed"});
  EXPECT_THAT(Run(MakeThrowingCommand("boom"))->GetErrors(),
              ElementsAre("Error on command as typed : boom"));
}

TEST_F(CommandTest, WithoutInputTheMessageNamesTheCommand) {
  input_ = nullptr;
  EXPECT_THAT(Run(MakeThrowingCommand("boom"))->GetErrors(),
              ElementsAre("Error on command list : boom"));
}

TEST_F(CommandTest, WithAnInputThatIsNotACommandInputTheMessageNamesTheCommand) {
  const std::shared_ptr<SampleCommand> command = MakeThrowingCommand("boom");
  command->SetName("named");
  const std::shared_ptr<Output> output = Output::New();
  command->Execute(Input::New(), output);
  EXPECT_THAT(output->GetErrors(), ElementsAre("Error on command named : boom"));
}

TEST_F(CommandTest, WithoutInputTheWorkRuns) {
  input_ = nullptr;
  const std::shared_ptr<SampleCommand> command = MakeAnsweringCommand("fine");
  EXPECT_THAT(Run(command)->GetErrors(), IsEmpty());
  EXPECT_EQ(command->executions, 1);
}

TEST_F(CommandTest, ExceptionsOfOtherKindsReachTheCaller) {
  const auto command = std::make_shared<SampleCommand>();
  command->work = [](const auto&, const auto&) { throw 42; };
  EXPECT_THROW(Run(command), int);
}

// The result.

TEST_F(CommandTest, AResultIsNotCheckedAfterAnErrorOfTheWork) {
  const std::shared_ptr<SampleCommand> command = MakeLyingCommand();
  command->work = [](const auto&, const auto& output) {
    output->SetRootObject(MetaInt::New(7));
    output->AddErrorMessage("could not look");
  };
  EXPECT_THAT(Run(command)->GetErrors(), ElementsAre("could not look"));
  EXPECT_EQ(command->outputSpecCalls, 0);
}

TEST_F(CommandTest, AResultIsNotCheckedAfterEarlierErrors) {
  const std::shared_ptr<Output> output = Output::New();
  output->AddErrorMessage("from before");
  const std::shared_ptr<SampleCommand> command = MakeLyingCommand();
  command->Execute(input_, output);
  EXPECT_THAT(output->GetErrors(), ElementsAre("from before"));
}

TEST_F(CommandTest, AResultOfAnotherKindIsAnImplementationError) {
  const std::shared_ptr<SampleCommand> command = MakeLyingCommand();
  const std::shared_ptr<Output> output = Run(command);
  ASSERT_GE(output->GetErrors().size(), 2U);
  EXPECT_EQ(output->GetErrors().back(), kImplementationError);
}

TEST_F(CommandTest, AllProblemsOfTheResultComeBeforeTheImplementationError) {
  const auto command = std::make_shared<SampleCommand>();
  const std::shared_ptr<MetaStruct> declared = MetaStruct::New("Mount");
  declared->SetField("Path", "");
  declared->SetField("Size", 0);
  command->outputSpec->SetRootObject(declared);
  const std::shared_ptr<MetaStruct> given = MetaStruct::New("Mount");
  given->SetField("Path", "/");
  given->SetField("Size", "large");
  command->work = [&](const auto&, const auto& output) { output->SetRootObject(given); };

  std::vector<std::string> expected;
  EXPECT_FALSE(declared->IsSameStructure(given, &expected));
  EXPECT_THAT(expected, testing::Not(IsEmpty()));
  expected.push_back(kImplementationError);
  EXPECT_EQ(Run(command)->GetErrors(), expected);
}

TEST_F(CommandTest, NoResultAtAllIsAnImplementationError) {
  const auto command = std::make_shared<SampleCommand>();
  command->work = [](const auto&, const auto&) {};
  EXPECT_THAT(Run(command)->GetErrors(),
              ElementsAre("No root object set for output. The command did not provide proper "
                          "output.",
                          kImplementationError));
}

TEST_F(CommandTest, MessagesOfACheckThatPassesAreDropped) {
  const auto command = std::make_shared<SampleCommand>();
  command->outputSpec->SetRootObject(MetaStruct::New("Mount"));
  command->work = [](const auto&, const auto& output) {
    output->SetRootObject(MetaStruct::New("Disk"));
  };
  EXPECT_THAT(Run(command)->GetErrors(), IsEmpty());
}

TEST_F(CommandTest, AMissingOutputSpecificationBecomesAnError) {
  const std::shared_ptr<SampleCommand> command = MakeAnsweringCommand("fine");
  command->outputSpec = nullptr;
  EXPECT_THAT(Run(command)->GetErrors(),
              ElementsAre("Error on command network ip list : The command 'list' has no output "
                          "specification."));
}

}  // namespace
}  // namespace Kestrel::AutoCli
