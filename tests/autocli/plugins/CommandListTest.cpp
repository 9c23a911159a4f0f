// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/CommandList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "kestrel/KestrelException.h"
#include "kestrel/autocli/Dispatcher.h"
#include "kestrel/autocli/RootNamespace.h"
#include "kestrel/callspec/InputSpec.h"
#include "kestrel/callspec/OutputSpec.h"
#include "kestrel/callspec/ParameterSpec.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaString.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "support/SampleCommands.h"

namespace Kestrel::AutoCli {
namespace {

using CallSpec::InputSpec;
using CallSpec::ParameterSpec;
using CallSpec::ParameterType;
using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaString;
using MetaObj::MetaStruct;
using MetaObj::MetaType;
using testing::ElementsAre;
using testing::IsEmpty;
using Testing::MakeAnsweringCommand;
using Testing::MakeCommandInput;
using Testing::RegisterAt;
using Testing::SampleCommand;

using Filters = std::map<std::string, std::string>;

class CommandListTest : public testing::Test {
 protected:
  void Register(std::initializer_list<const char*> path, const char* description) {
    const std::shared_ptr<SampleCommand> command = MakeAnsweringCommand("x");
    command->SetDescription(description);
    RegisterAt(dispatcher_.GetRootNamespace(), path, command);
  }

  // Runs the command and returns its rows, each as "namespace|command|description".
  std::vector<std::string> List(const Filters& filters = {}) {
    const std::shared_ptr<CommandInput> input = MakeCommandInput({"vexil", "command", "list"});
    for (const auto& [name, value] : filters) {
      input->AddParameter(name, value);
    }
    const std::shared_ptr<CommandOutput> output = CommandOutput::New();
    EXPECT_TRUE(dispatcher_.ExecuteCommand(input, output));
    EXPECT_THAT(output->GetErrors(), IsEmpty());
    std::vector<std::string> rows;
    for (const std::shared_ptr<MetaObject>& item :
         std::dynamic_pointer_cast<MetaList>(output->GetRootObject())->GetObjects()) {
      const auto row = std::dynamic_pointer_cast<MetaStruct>(item);
      rows.push_back(row->GetField("Namespace")->ToString() + "|" +
                     row->GetField("Command")->ToString() + "|" +
                     row->GetField("Description")->ToString());
    }
    return rows;
  }

  static constexpr const char* kOwnRow = "vexil.command|list|List all of the vexil commands.";

  Dispatcher dispatcher_;
};

TEST_F(CommandListTest, WithoutOtherCommandsItListsItself) {
  EXPECT_THAT(List(), ElementsAre(kOwnRow));
}

TEST_F(CommandListTest, WalksDepthFirstWithCommandsAndNamespacesInOneOrder) {
  Register({"network", "up"}, "third");
  Register({"network", "ip", "list"}, "second");
  Register({"network", "down"}, "first");
  Register({"about"}, "top");
  Register({"zoo"}, "last");
  EXPECT_THAT(List(), ElementsAre("|about|top", "network|down|first", "network.ip|list|second",
                                  "network|up|third", kOwnRow, "|zoo|last"));
}

TEST_F(CommandListTest, AnEmptyNamespaceAddsNothing) {
  dispatcher_.GetRootNamespace()->SubNamespace("empty")->SubNamespace("inside");
  EXPECT_THAT(List(), ElementsAre(kOwnRow));
}

TEST_F(CommandListTest, ANamespaceFilterLooksAnywhereInTheDottedPath) {
  Register({"network", "ip", "list"}, "");
  Register({"shipping", "list"}, "");
  Register({"iP", "list"}, "");
  Register({"network", "list"}, "");
  EXPECT_THAT(List({{"namespace-filter", "ip"}}),
              ElementsAre("network.ip|list|", "shipping|list|"));
  EXPECT_THAT(List({{"namespace-filter", "k.i"}}), ElementsAre("network.ip|list|"));
  EXPECT_THAT(List({{"namespace-filter", "network ip"}}), IsEmpty());
}

TEST_F(CommandListTest, ACommandFilterLooksAtTheNameOnly) {
  Register({"list", "show"}, "list");
  Register({"disk", "playlist"}, "");
  EXPECT_THAT(List({{"command-filter", "list"}}), ElementsAre("disk|playlist|", kOwnRow));
  EXPECT_THAT(List({{"command-filter", "List"}}), IsEmpty());
}

TEST_F(CommandListTest, ADescriptionFilterLooksAtTheDescriptionOnly) {
  Register({"disk", "show"}, "Shows a disk.");
  Register({"tape", "show"}, "Shows a tape.");
  EXPECT_THAT(List({{"description-filter", "disk"}}), ElementsAre("disk|show|Shows a disk."));
}

TEST_F(CommandListTest, ACommandMustPassEveryFilter) {
  Register({"disk", "show"}, "Shows a disk.");
  Register({"disk", "list"}, "Lists the disks.");
  Register({"tape", "show"}, "Shows a tape, not a disk.");
  EXPECT_THAT(List({{"namespace-filter", "disk"}, {"command-filter", "show"}}),
              ElementsAre("disk|show|Shows a disk."));
  EXPECT_THAT(
      List({{"namespace-filter", "t"}, {"command-filter", "o"}, {"description-filter", ","}}),
      ElementsAre("tape|show|Shows a tape, not a disk."));
  EXPECT_THAT(List({{"namespace-filter", "disk"}, {"description-filter", "tape"}}), IsEmpty());
}

TEST_F(CommandListTest, FiltersHaveShortNames) {
  Register({"disk", "show"}, "Shows a disk.");
  EXPECT_THAT(List({{"n", "dis"}}), ElementsAre("disk|show|Shows a disk."));
  EXPECT_THAT(List({{"c", "how"}}), ElementsAre("disk|show|Shows a disk."));
  EXPECT_THAT(List({{"d", "ows"}}), ElementsAre("disk|show|Shows a disk."));
}

TEST_F(CommandListTest, AnEmptyFilterMatchesEverything) {
  EXPECT_THAT(List({{"namespace-filter", ""}, {"command-filter", ""}}), ElementsAre(kOwnRow));
}

// A node of an unknown kind.
class StrangeNode : public Namespace {
 public:
  NodeType GetType() override { return static_cast<NodeType>(3); }
};

TEST_F(CommandListTest, NodesOfOtherKindsAreIgnored) {
  const auto strange = std::make_shared<StrangeNode>();
  dispatcher_.GetRootNamespace()->RegisterNamespaceNode(strange, "strange");
  RegisterAt(strange, {"below"}, MakeAnsweringCommand("x"));
  EXPECT_THAT(List(), ElementsAre(kOwnRow));
}

TEST_F(CommandListTest, ListsManyNamespacesOfOneCommandEach) {
  constexpr std::size_t kCount = 20000;
  for (std::size_t i = 0; i < kCount; ++i) {
    const std::string name = "n" + std::to_string(i);
    Register({name.c_str(), "show"}, "");
  }
  EXPECT_EQ(List().size(), kCount + 1);
}

// Declarations.

TEST_F(CommandListTest, HasADescriptionAndDefaultsForItsFormat) {
  const std::shared_ptr<CommandList> command = CommandList::New(dispatcher_.GetRootNamespace());
  EXPECT_EQ(command->GetDescription(), "List all of the vexil commands.");
  const FormatParameters params = command->GetDefaultOutputFormatParameters();
  EXPECT_EQ(params.GetFormatter(), "table");
  EXPECT_EQ(params.GetParameters(),
            (std::map<std::string, std::string>{
                {"fields:VexilCommand", "Namespace,Command,Description"}, {"wrap-last", "true"}}));
}

TEST_F(CommandListTest, DeclaresThreeOptionalStrings) {
  const std::shared_ptr<CommandList> command = CommandList::New(dispatcher_.GetRootNamespace());
  const std::shared_ptr<InputSpec> spec = command->GetInputSpecInternal();
  std::vector<std::string> declared;
  for (const std::shared_ptr<ParameterSpec>& parameter : spec->GetParameters()) {
    EXPECT_EQ(parameter->GetParameterType(), ParameterType::String);
    EXPECT_FALSE(parameter->IsRequired());
    EXPECT_FALSE(parameter->IsSecret());
    declared.push_back(parameter->GetName() + "|" + parameter->GetShortName() + "|" +
                       parameter->GetDescription(false));
  }
  EXPECT_THAT(
      declared,
      ElementsAre(
          "command-filter|c|Show only commands containing the specified string in their name.",
          "description-filter|d|Show only commands containing the specified string in their "
          "description.",
          "namespace-filter|n|Show only commands containing the specified string in their "
          "namespace path."));
  EXPECT_NE(command->GetInputSpecInternal(), spec);
}

TEST_F(CommandListTest, TheHelpParameterIsInNameOrder) {
  const std::shared_ptr<CommandList> command = CommandList::New(dispatcher_.GetRootNamespace());
  std::vector<std::string> names;
  for (const std::shared_ptr<ParameterSpec>& parameter : command->GetInputSpec()->GetParameters()) {
    names.push_back(parameter->GetName());
  }
  EXPECT_THAT(names,
              ElementsAre("command-filter", "description-filter", "help", "namespace-filter"));
}

TEST_F(CommandListTest, DeclaresAListOfItsStructure) {
  const std::shared_ptr<CommandList> command = CommandList::New(dispatcher_.GetRootNamespace());
  const auto list =
      std::dynamic_pointer_cast<MetaList>(command->GetOutputSpecInternal()->GetRootObject());
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(list->GetListType(), MetaType::Struct);
  EXPECT_EQ(list->GetCount(), 0U);
  EXPECT_TRUE(
      list->GetListStructure()->IsSameStructure(CommandList::GetOutputStructure(), nullptr));
}

TEST_F(CommandListTest, ItsStructureHasThreeSharedEmptyStrings) {
  const std::shared_ptr<MetaStruct> structure = CommandList::GetOutputStructure();
  EXPECT_EQ(structure->GetTypeName(), "VexilCommand");
  EXPECT_THAT(structure->GetFieldNames(), ElementsAre("Command", "Description", "Namespace"));
  for (const std::string& name : structure->GetFieldNames()) {
    EXPECT_EQ(structure->GetField(name), MetaString::New()) << name;
  }
  EXPECT_NE(CommandList::GetOutputStructure(), structure);
}

TEST_F(CommandListTest, DoesNotKeepTheRootAlive) {
  std::shared_ptr<RootNamespace> root = RootNamespace::New(nullptr);
  const std::shared_ptr<CommandList> command = CommandList::New(root);
  const std::weak_ptr<RootNamespace> owner = root;
  root.reset();
  EXPECT_TRUE(owner.expired());
}

TEST_F(CommandListTest, RunsWithoutInput) {
  const std::shared_ptr<CommandOutput> output = CommandOutput::New();
  CommandList::New(dispatcher_.GetRootNamespace())->Execute(nullptr, output);
  EXPECT_THAT(output->GetErrors(), IsEmpty());
  EXPECT_EQ(std::dynamic_pointer_cast<MetaList>(output->GetRootObject())->GetCount(), 1U);
}

}  // namespace
}  // namespace Kestrel::AutoCli
