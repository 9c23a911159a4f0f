// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/InternalPlugin.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <list>
#include <memory>
#include <string>
#include <vector>

#include "kestrel/KestrelException.h"
#include "kestrel/autocli/Command.h"
#include "kestrel/autocli/RootNamespace.h"

namespace Kestrel::AutoCli {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::ThrowsMessage;

std::vector<std::string> FormatterNames(InternalPlugin& plugin) {
  std::vector<std::string> names;
  for (const std::shared_ptr<Formatter>& formatter : plugin.GetFormatters()) {
    names.push_back(formatter->GetName());
  }
  return names;
}

TEST(InternalPluginTest, AllInstancesShareOneName) {
  const std::shared_ptr<InternalPlugin> plugin = InternalPlugin::New();
  EXPECT_EQ(plugin->GetName(), "Internal");
  EXPECT_EQ(&plugin->GetName(), &InternalPlugin::New()->GetName());
}

TEST(InternalPluginTest, HasNoFormattersBeforeInitialize) {
  const std::shared_ptr<InternalPlugin> plugin = InternalPlugin::New();
  EXPECT_THAT(plugin->GetFormatters(), IsEmpty());
  EXPECT_FALSE(plugin->HasFormatter("table"));
  EXPECT_EQ(plugin->GetFormatter("table"), nullptr);
}

TEST(InternalPluginTest, ListsItsFormattersInAFixedOrder) {
  const std::shared_ptr<InternalPlugin> plugin = InternalPlugin::New();
  plugin->Initialize();
  EXPECT_THAT(FormatterNames(*plugin),
              ElementsAre("table", "simple", "xml", "python", "json", "commandhelp"));
}

TEST(InternalPluginTest, FindsAFormatterByItsExactName) {
  const std::shared_ptr<InternalPlugin> plugin = InternalPlugin::New();
  plugin->Initialize();
  for (const std::shared_ptr<Formatter>& formatter : plugin->GetFormatters()) {
    EXPECT_TRUE(plugin->HasFormatter(formatter->GetName()));
    EXPECT_EQ(plugin->GetFormatter(formatter->GetName()), formatter);
  }
  for (const char* name : {"clihelp", "", "Table", "tabl", "table "}) {
    EXPECT_FALSE(plugin->HasFormatter(name)) << name;
    EXPECT_EQ(plugin->GetFormatter(name), nullptr) << name;
  }
}

TEST(InternalPluginTest, InstancesHaveFormattersOfTheirOwn) {
  const std::shared_ptr<InternalPlugin> first = InternalPlugin::New();
  const std::shared_ptr<InternalPlugin> second = InternalPlugin::New();
  first->Initialize();
  second->Initialize();
  EXPECT_NE(first->GetFormatter("table"), second->GetFormatter("table"));
}

TEST(InternalPluginTest, RegistersTheListOfCommands) {
  const std::shared_ptr<RootNamespace> root = RootNamespace::New(nullptr);
  InternalPlugin::New()->RegisterNamespaces(root);
  EXPECT_THAT(root->GetNamespaceNodeNames(), ElementsAre("vexil"));

  const std::shared_ptr<NamespaceNode> system = root->GetNamespaceNode("vexil");
  EXPECT_EQ(system->GetDescription(),
            "Commands that operate on the vexil system itself allowing users to get additional "
            "information.");
  EXPECT_THAT(system->GetNamespaceNodeNames(), ElementsAre("command"));

  const std::shared_ptr<NamespaceNode> command = system->GetNamespaceNode("command");
  EXPECT_EQ(command->GetDescription(), "Operations to get information about commands.");
  EXPECT_THAT(command->GetNamespaceNodeNames(), ElementsAre("list"));
  EXPECT_EQ(command->GetNamespaceNode("list")->GetPathString(' '), "vexil command list");
  EXPECT_EQ(command->GetNamespaceNode("list")->GetType(), NodeType::Command);
}

TEST(InternalPluginTest, CannotRegisterTwiceBelowOneRoot) {
  const std::shared_ptr<RootNamespace> root = RootNamespace::New(nullptr);
  const std::shared_ptr<InternalPlugin> plugin = InternalPlugin::New();
  plugin->RegisterNamespaces(root);
  EXPECT_THAT([&] { plugin->RegisterNamespaces(root); },
              ThrowsMessage<KestrelException>("Duplicate registration in namespace  attempt to "
                                              "register two objects with name vexil"));
}

}  // namespace
}  // namespace Kestrel::AutoCli
