// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/CommandSpec.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "kestrel/KestrelException.h"
#include "kestrel/autocli/CommandInput.h"
#include "kestrel/autocli/RootNamespace.h"
#include "kestrel/callspec/InputSpec.h"
#include "kestrel/callspec/Output.h"
#include "kestrel/callspec/OutputSpec.h"
#include "kestrel/callspec/ParameterSpec.h"
#include "kestrel/metaobj/MetaBool.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaString.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "support/SampleCommands.h"

namespace Kestrel::AutoCli {
namespace {

using CallSpec::Input;
using CallSpec::InputSpec;
using CallSpec::Output;
using CallSpec::OutputSpec;
using CallSpec::ParameterConstraint;
using CallSpec::ParameterConstraintType;
using CallSpec::ParameterSpec;
using CallSpec::ParameterType;
using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaString;
using MetaObj::MetaStruct;
using MetaObj::MetaType;
using testing::ElementsAre;
using testing::IsEmpty;
using Testing::MakeCommandInput;
using testing::Pair;
using Testing::RegisterAt;
using Testing::SampleCommand;
using testing::ThrowsMessage;

std::vector<std::string> ParameterNames(const InputSpec& spec) {
  std::vector<std::string> names;
  for (const std::shared_ptr<ParameterSpec>& parameter : spec.GetParameters()) {
    names.push_back(parameter->GetName());
  }
  return names;
}

std::shared_ptr<ParameterSpec> OptionalParameter(const char* name, ParameterType type) {
  std::shared_ptr<ParameterSpec> parameter = ParameterSpec::New(name, type);
  parameter->SetRequired(false);
  return parameter;
}

// A command at the path "network ip list".
class CommandSpecTest : public testing::Test {
 protected:
  CommandSpecTest() { RegisterAt(root_, {"network", "ip", "list"}, command_); }

  std::shared_ptr<RootNamespace> root_ = RootNamespace::New(nullptr);
  std::shared_ptr<SampleCommand> command_ = std::make_shared<SampleCommand>();
};

// As a node.

TEST_F(CommandSpecTest, IsANodeOfTheKindCommand) {
  EXPECT_EQ(command_->GetType(), NodeType::Command);
  EXPECT_EQ(command_->GetType(), 2);
  EXPECT_EQ(command_->GetThis(), command_);
  EXPECT_THAT(command_->GetPath(), ElementsAre("network", "ip", "list"));
  EXPECT_EQ(command_->GetPathString('.'), "network.ip.list");
}

TEST_F(CommandSpecTest, GetThisThrowsWhenTheCommandHasNoOwner) {
  SampleCommand command;
  EXPECT_THROW(command.GetThis(), std::bad_weak_ptr);
}

TEST_F(CommandSpecTest, HasNoChildren) {
  EXPECT_FALSE(command_->HasNamespaceNode("extra"));
  EXPECT_FALSE(command_->HasNamespaceNode(""));
  EXPECT_THAT(command_->GetNamespaceNodeNames(), IsEmpty());
  EXPECT_THAT(command_->GetNamespaceNodes(), IsEmpty());
  EXPECT_THAT([&] { command_->GetNamespaceNode("extra"); },
              ThrowsMessage<KestrelException>(
                  "Unable to find a namespace or command with the name 'extra' on the command "
                  "'network ip list'. Commands cannot have sub-commands or sub-namespaces."));
}

TEST_F(CommandSpecTest, RefusesToRegisterAChild) {
  const std::string refusal =
      "Attempt to register a command or namespace 'extra' on command 'network ip list'. Commands "
      "cannot have sub-commands or sub-namespaces.";
  EXPECT_THAT([&] { command_->RegisterNamespaceNode(Namespace::New(), "extra"); },
              ThrowsMessage<KestrelException>(refusal));
  EXPECT_THAT([&] { command_->RegisterNamespaceNode(Namespace::New(), std::string("extra")); },
              ThrowsMessage<KestrelException>(refusal));
  EXPECT_THAT([&] { command_->SubNamespace("extra"); }, ThrowsMessage<KestrelException>(refusal));
}

TEST_F(CommandSpecTest, RefusesAChildWithoutLookingAtIt) {
  EXPECT_THAT(
      [&] { command_->RegisterNamespaceNode(nullptr, static_cast<const char*>(nullptr)); },
      ThrowsMessage<KestrelException>(
          "Attempt to register a command or namespace '' on command 'network ip list'. Commands "
          "cannot have sub-commands or sub-namespaces."));
}

TEST_F(CommandSpecTest, AFailedResolutionReportsAWordThatIsLeftOver) {
  std::list<std::string> path{"network", "ip", "list", "extra"};
  EXPECT_THAT([&] { root_->ResolveNode(path); },
              ThrowsMessage<KestrelException>(
                  "Unable to find a namespace or command with the name 'extra' on the command "
                  "'network ip list'. Commands cannot have sub-commands or sub-namespaces."));
}

TEST_F(CommandSpecTest, ResolvingDoesNotChangeTheWords) {
  std::list<std::string> path{"one", "", "three"};
  EXPECT_THAT([&] { command_->ResolveNode(path); },
              ThrowsMessage<KestrelException>(
                  "Unable to find a namespace or command with the name 'one  three' on the command "
                  "'network ip list'. Commands cannot have sub-commands or sub-namespaces."));
  EXPECT_THAT(path, ElementsAre("one", "", "three"));
}

TEST_F(CommandSpecTest, ResolvingNoWordsThrows) {
  std::list<std::string> path;
  EXPECT_THAT([&] { command_->ResolveNode(path); },
              ThrowsMessage<KestrelException>(
                  "Unable to find a namespace or command with the name '' on the command 'network "
                  "ip list'. Commands cannot have sub-commands or sub-namespaces."));
}

TEST_F(CommandSpecTest, AFailedResolutionReportsAllWordsThatAreLeftOver) {
  std::list<std::string> path(100000, "word");
  std::string words = "word";
  for (std::size_t i = 1; i < path.size(); ++i) {
    words += " word";
  }
  EXPECT_THAT([&] { command_->ResolveNode(path); },
              ThrowsMessage<KestrelException>(
                  "Unable to find a namespace or command with the name '" + words +
                  "' on the command 'network ip list'. Commands cannot have sub-commands or "
                  "sub-namespaces."));
}

TEST_F(CommandSpecTest, SubNamespaceOfTheParentReturnsTheCommand) {
  EXPECT_EQ(root_->SubNamespace("network")->SubNamespace("ip")->SubNamespace("list"), command_);
}

TEST_F(CommandSpecTest, MessagesOfAnUnregisteredCommandReportItsMissingParent) {
  const auto command = std::make_shared<SampleCommand>();
  EXPECT_THAT([&] { command->GetNamespaceNode("extra"); },
              ThrowsMessage<KestrelException>(
                  "GetPathString: Invalid state for Namespace Node with the name '' No parent node "
                  "has been set"));
}

TEST_F(CommandSpecTest, TheRequestForTheDispatcherClimbsToTheRoot) {
  // The tree returns the pointer and never dereferences it.
  int place = 0;
  auto* const dispatcher = reinterpret_cast<Dispatcher*>(&place);
  const std::shared_ptr<RootNamespace> root = RootNamespace::New(dispatcher);
  const auto command = std::make_shared<SampleCommand>();
  RegisterAt(root, {"network", "list"}, command);
  EXPECT_EQ(command->GetDispatcher(), dispatcher);
}

TEST_F(CommandSpecTest, WithoutParentThereIsNoDispatcher) {
  root_.reset();
  EXPECT_EQ(command_->GetParent(), nullptr);
  EXPECT_THAT([&] { command_->GetDispatcher(); },
              ThrowsMessage<KestrelException>(
                  "Invalid state for command with name 'list'. No parent node has been set."));
}

TEST_F(CommandSpecTest, SetParentReplacesAnEarlierParent) {
  const std::shared_ptr<Namespace> other = Namespace::New();
  command_->SetParent(other);
  EXPECT_EQ(command_->GetParent(), other);
  command_->SetParent(nullptr);
  EXPECT_EQ(command_->GetParent(), nullptr);
}

// Specifications.

TEST_F(CommandSpecTest, GetInputSpecAddsHelpOnceAndReturnsTheSameObject) {
  command_->inputSpec->AddParameter(OptionalParameter("device", ParameterType::String));
  const std::shared_ptr<InputSpec> spec = command_->GetInputSpec();
  EXPECT_EQ(command_->GetInputSpec(), spec);
  EXPECT_EQ(spec, command_->inputSpec);
  EXPECT_EQ(command_->inputSpecCalls, 1);
  EXPECT_THAT(ParameterNames(*spec), ElementsAre("device", "help"));
}

TEST_F(CommandSpecTest, TheHelpParameterIsInNameOrder) {
  command_->inputSpec->AddParameter(OptionalParameter("password", ParameterType::String));
  command_->inputSpec->AddParameter(OptionalParameter("device", ParameterType::String));
  EXPECT_THAT(ParameterNames(*command_->GetInputSpec()), ElementsAre("device", "help", "password"));
}

TEST_F(CommandSpecTest, TheHelpParameterIsAnOptionalBoolWithAShortName) {
  const ParameterSpec& help = *command_->GetInputSpec()->GetParameters().front();
  EXPECT_EQ(help.GetName(), "help");
  EXPECT_EQ(help.GetParameterType(), ParameterType::Bool);
  EXPECT_EQ(help.GetShortName(), "h");
  EXPECT_EQ(help.GetDescription(false), "Show the help message.");
  EXPECT_FALSE(help.IsRequired());
  EXPECT_FALSE(help.IsSecret());
}

TEST_F(CommandSpecTest, ACommandsOwnHelpParameterIsRefusedOnceAndThenKept) {
  command_->inputSpec->AddParameter(OptionalParameter("help", ParameterType::String));
  EXPECT_THAT([&] { command_->GetInputSpec(); },
              ThrowsMessage<KestrelException>(
                  "Found a duplicate paramater specification for parameter named 'help'"));
  EXPECT_THAT(ParameterNames(*command_->GetInputSpec()), ElementsAre("help"));
}

TEST_F(CommandSpecTest, TheSecondOfTwoCommandsThatShareASpecificationThrows) {
  SampleCommand other;
  other.inputSpec = command_->inputSpec;
  command_->GetInputSpec();
  EXPECT_THAT([&] { other.GetInputSpec(); },
              ThrowsMessage<KestrelException>(
                  "Found a duplicate paramater specification for parameter named 'help'"));
}

TEST_F(CommandSpecTest, GetOutputSpecAsksTheCommandOnce) {
  const std::shared_ptr<OutputSpec> spec = command_->GetOutputSpec();
  EXPECT_EQ(spec, command_->outputSpec);
  EXPECT_EQ(command_->GetOutputSpec(), spec);
  EXPECT_EQ(command_->outputSpecCalls, 1);
}

TEST_F(CommandSpecTest, SpecificationsMustNotBeNull) {
  command_->inputSpec = nullptr;
  command_->outputSpec = nullptr;
  EXPECT_THAT([&] { command_->GetInputSpec(); },
              ThrowsMessage<KestrelException>("The command 'list' has no input specification."));
  EXPECT_THAT([&] { command_->GetOutputSpec(); },
              ThrowsMessage<KestrelException>("The command 'list' has no output specification."));
  command_->inputSpec = InputSpec::New();
  EXPECT_THAT(ParameterNames(*command_->GetInputSpec()), ElementsAre("help"));
}

// Examples, defaults, metadata.

TEST_F(CommandSpecTest, ExamplesStayInTheOrderAdded) {
  EXPECT_THAT(command_->GetExamples(), IsEmpty());
  command_->AddExample("--zeta 1", "Comes first");
  command_->AddExample(std::string("--alpha"), std::string("Comes second"));
  command_->AddExample(static_cast<const char*>(nullptr), nullptr);
  EXPECT_THAT(command_->GetExamples(), ElementsAre(Pair("--zeta 1", "Comes first"),
                                                   Pair("--alpha", "Comes second"), Pair("", "")));
}

TEST_F(CommandSpecTest, DefaultFormatParametersAreEmptyAtFirst) {
  const FormatParameters params = command_->GetDefaultOutputFormatParameters();
  EXPECT_EQ(params.GetFormatter(), "");
  EXPECT_THAT(params.GetParameters(), IsEmpty());
}

TEST_F(CommandSpecTest, DefaultFormatParametersAreReturnedAsACopy) {
  command_->SetDefaultOutputFormatter("table");
  command_->SetDefaultOutputParameter("wrap-last", "false");
  command_->SetDefaultOutputParameter(std::string("fields:Mount"), std::string("Path"));
  command_->SetDefaultOutputParameter("wrap-last", "true");
  FormatParameters copy = command_->GetDefaultOutputFormatParameters();
  EXPECT_EQ(copy.GetFormatter(), "table");
  EXPECT_THAT(copy.GetParameters(),
              ElementsAre(Pair("fields:Mount", "Path"), Pair("wrap-last", "true")));

  copy.SetFormatter("json");
  copy.SetParameter("indent", "3");
  EXPECT_EQ(command_->GetDefaultOutputFormatParameters().GetFormatter(), "table");
  EXPECT_FALSE(command_->GetDefaultOutputFormatParameters().HasParameter("indent"));
}

TEST_F(CommandSpecTest, ADefaultFormatterNeedNotExist) {
  command_->SetDefaultOutputFormatter(std::string("nobody knows it"));
  EXPECT_EQ(command_->GetDefaultOutputFormatParameters().GetFormatter(), "nobody knows it");
  command_->SetDefaultOutputFormatter(static_cast<const char*>(nullptr));
  EXPECT_EQ(command_->GetDefaultOutputFormatParameters().GetFormatter(), "");
}

TEST_F(CommandSpecTest, KeepsTheLastMetaDataOfAName) {
  EXPECT_THAT(command_->GetMetaData(), IsEmpty());
  command_->AddMetaData("owner", "one");
  command_->AddMetaData("level", "3");
  command_->AddMetaData("owner", "two");
  EXPECT_THAT(command_->GetMetaData(), ElementsAre(Pair("level", "3"), Pair("owner", "two")));
}

// Help.

class CommandSpecHelpTest : public CommandSpecTest {
 protected:
  // Returns the root object of the help for `input`.
  std::shared_ptr<MetaStruct> HelpFor(const std::shared_ptr<Input>& input) {
    output_ = Output::New();
    command_->GenerateHelpOutput(input, output_);
    return std::dynamic_pointer_cast<MetaStruct>(output_->GetRootObject());
  }

  static std::shared_ptr<MetaList> ListIn(const MetaStruct& help, const std::string& field) {
    return std::dynamic_pointer_cast<MetaList>(help.GetField(field));
  }

  // Returns each structure of a list as a string.
  static std::vector<std::string> Texts(const MetaList& list) {
    std::vector<std::string> texts;
    for (const std::shared_ptr<MetaObject>& item : list.GetObjects()) {
      texts.push_back(item->ToString());
    }
    return texts;
  }

  std::shared_ptr<Output> output_;
};

TEST_F(CommandSpecHelpTest, IsAStructureOfTheTypeHelp) {
  command_->SetDescription("Lists addresses.");
  const std::shared_ptr<MetaStruct> help = HelpFor(MakeCommandInput({"network", "ip", "list"}));
  ASSERT_NE(help, nullptr);
  EXPECT_EQ(output_->GetOutputType(), Output::Help);
  EXPECT_EQ(output_->GetOutputType(), 2);
  EXPECT_FALSE(output_->HasError());
  EXPECT_EQ(help->GetTypeName(), "VexilCommandHelp");
  EXPECT_EQ(help->GetField("Dispatcher")->ToString(), "vexil");
  EXPECT_EQ(help->GetField("Path")->ToString(), "network ip list");
  EXPECT_EQ(help->GetField("Description")->ToString(), "Lists addresses.");
  EXPECT_THAT(help->GetFieldNames(),
              ElementsAre("Description", "Dispatcher", "Example List", "Param List", "Path"));
  EXPECT_EQ(command_->executions, 0);
}

TEST_F(CommandSpecHelpTest, WithoutACommandInputThereIsNeitherDispatcherNorPath) {
  command_->AddExample("--all", "Show all");
  for (const std::shared_ptr<Input>& input : {Input::New(), std::shared_ptr<Input>()}) {
    const std::shared_ptr<MetaStruct> help = HelpFor(input);
    EXPECT_THAT(help->GetFieldNames(), ElementsAre("Description", "Example List", "Param List"));
    EXPECT_THAT(Texts(*ListIn(*help, "Example List")),
                ElementsAre("{'Description' => 'Show all :', 'Syntax' => '#  --all', }"));
  }
}

TEST_F(CommandSpecHelpTest, ListsTheParametersInTheOrderOfTheSpecification) {
  const std::shared_ptr<ParameterSpec> secret = ParameterSpec::New("token", ParameterType::String);
  secret->SetSecret(true);
  secret->SetShortName("t");
  secret->SetDescription("The secret.");
  command_->inputSpec->AddParameter(secret);
  command_->inputSpec->AddParameter(OptionalParameter("device", ParameterType::StringList));

  const std::shared_ptr<MetaList> list = ListIn(*HelpFor(MakeCommandInput({"x"})), "Param List");
  EXPECT_EQ(list->GetListType(), MetaType::Struct);
  EXPECT_EQ(list->GetListStructure()->GetTypeName(), "VexilCommandParameter");
  EXPECT_THAT(
      Texts(*list),
      ElementsAre("{'Description' => '', 'Name' => 'device', 'Required' => 'false', "
                  "'Secret' => 'false', 'Short Name' => '', }",
                  "{'Description' => 'Show the help message.', 'Name' => 'help', "
                  "'Required' => 'false', 'Secret' => 'false', 'Short Name' => 'h', }",
                  "{'Description' => 'The secret.', 'Name' => 'token', 'Required' => 'true', "
                  "'Secret' => 'true', 'Short Name' => 't', }"));
}

TEST_F(CommandSpecHelpTest, DescriptionsOfParametersHaveTheirMarkersFilledIn) {
  const std::shared_ptr<ParameterConstraint> modes =
      ParameterConstraint::New(ParameterConstraintType::StringEnum);
  modes->AddStringEnum("fast");
  modes->AddStringEnum("slow");
  const std::shared_ptr<ParameterSpec> mode = ParameterSpec::New("mode", ParameterType::String);
  mode->SetDescription("One of %ENUM%.");
  mode->SetConstraint(modes);
  command_->inputSpec->AddParameter(mode);

  const std::shared_ptr<MetaList> list = ListIn(*HelpFor(nullptr), "Param List");
  const auto structure = std::dynamic_pointer_cast<MetaStruct>(list->GetItem(1));
  EXPECT_EQ(structure->GetField("Description")->ToString(), mode->GetDescription(true));
  EXPECT_NE(structure->GetField("Description")->ToString(), mode->GetDescription(false));
}

TEST_F(CommandSpecHelpTest, ListsTheExamplesInTheOrderAdded) {
  command_->AddExample("--zeta", "First thing");
  command_->AddExample("", "Second thing");
  const std::shared_ptr<MetaList> list =
      ListIn(*HelpFor(MakeCommandInput({"network", "ip", "list"})), "Example List");
  EXPECT_EQ(list->GetListStructure()->GetTypeName(), "VexilCommandExample");
  EXPECT_THAT(Texts(*list), ElementsAre("{'Description' => 'First thing :', "
                                        "'Syntax' => '# vexil network ip list --zeta', }",
                                        "{'Description' => 'Second thing :', "
                                        "'Syntax' => '# vexil network ip list ', }"));
}

TEST_F(CommandSpecHelpTest, WithoutExamplesTheirListIsEmptyButHasItsStructure) {
  const std::shared_ptr<MetaList> list = ListIn(*HelpFor(nullptr), "Example List");
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(list->GetCount(), 0U);
  EXPECT_EQ(list->GetListType(), MetaType::Struct);
  EXPECT_EQ(list->GetListStructure()->ToString(), "{'Description' => '', 'Syntax' => '', }");
}

TEST_F(CommandSpecHelpTest, TheStructureOfTheParametersHasFiveEmptyFields) {
  const std::shared_ptr<MetaList> list = ListIn(*HelpFor(nullptr), "Param List");
  EXPECT_EQ(list->GetListStructure()->ToString(),
            "{'Description' => '', 'Name' => '', 'Required' => 'false', 'Secret' => 'false', "
            "'Short Name' => '', }");
  EXPECT_EQ(list->GetListStructure()->GetFieldType("Required"), MetaType::Bool);
  EXPECT_EQ(list->GetListStructure()->GetFieldType("Secret"), MetaType::Bool);
}

TEST_F(CommandSpecHelpTest, CanBeRequestedAgain) {
  command_->AddExample("--all", "Show all");
  const std::string first = HelpFor(MakeCommandInput({"x"}))->ToString();
  EXPECT_EQ(HelpFor(MakeCommandInput({"x"}))->ToString(), first);
}

}  // namespace
}  // namespace Kestrel::AutoCli
