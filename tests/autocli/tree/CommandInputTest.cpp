// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/CommandInput.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <list>
#include <memory>
#include <string>
#include <type_traits>

#include "kestrel/callspec/InputSpec.h"
#include "kestrel/callspec/Output.h"

namespace Kestrel::AutoCli {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(CommandInputTest, IsEmptyAtFirst) {
  const auto input = CommandInput::New();
  EXPECT_THAT(input->GetParameters(), IsEmpty());
  EXPECT_EQ(input->GetDispatcher(), "");
  EXPECT_THAT(input->GetCommandPath(), IsEmpty());
  EXPECT_EQ(input->GetCommandPathString(), "");
}

TEST(CommandInputTest, KeepsTheDispatcher) {
  const auto input = CommandInput::New();
  input->SetDispatcher("vexil");
  EXPECT_EQ(input->GetDispatcher(), "vexil");
  input->SetDispatcher("");
  EXPECT_EQ(input->GetDispatcher(), "");
}

TEST(CommandInputTest, KeepsACopyOfThePath) {
  const auto input = CommandInput::New();
  std::list<std::string> path = {"network", "ip", "list"};
  input->SetCommandPath(path);
  path.front() = "changed";
  EXPECT_THAT(input->GetCommandPath(), ElementsAre("network", "ip", "list"));
}

TEST(CommandInputTest, ALaterPathReplacesTheEarlierOne) {
  const auto input = CommandInput::New();
  input->SetCommandPath({"a"});
  input->SetCommandPath({"b", "c", "d"});
  EXPECT_THAT(input->GetCommandPath(), ElementsAre("b", "c", "d"));
  input->SetCommandPath({"e"});
  EXPECT_THAT(input->GetCommandPath(), ElementsAre("e"));
  input->SetCommandPath({});
  EXPECT_THAT(input->GetCommandPath(), IsEmpty());
}

TEST(CommandInputTest, AcceptsItsOwnPathAsTheArgument) {
  const auto input = CommandInput::New();
  input->SetCommandPath({"a", "b"});
  input->SetCommandPath(input->GetCommandPath());
  EXPECT_THAT(input->GetCommandPath(), ElementsAre("a", "b"));
}

TEST(CommandInputTest, JoinsThePathWithASpace) {
  const auto input = CommandInput::New();
  input->SetCommandPath({"network"});
  EXPECT_EQ(input->GetCommandPathString(), "network");
  input->SetCommandPath({"network", "ip", "list"});
  EXPECT_EQ(input->GetCommandPathString(), "network ip list");
  input->SetCommandPath({"", "a b", ""});
  EXPECT_EQ(input->GetCommandPathString(), " a b ");
}

TEST(CommandInputTest, IsAnInput) {
  EXPECT_TRUE((std::is_base_of<CallSpec::Input, CommandInput>::value));
  EXPECT_FALSE(std::is_copy_constructible<CommandInput>::value);
  EXPECT_FALSE(std::is_default_constructible<CommandInput>::value);
  const auto command = CommandInput::New();
  const std::shared_ptr<CallSpec::Input> input = command;
  input->AddParameter("name", "value");
  EXPECT_TRUE(command->HasParameter("name"));
  EXPECT_EQ(std::dynamic_pointer_cast<CommandInput>(input), command);
  const auto output = CallSpec::Output::New();
  EXPECT_FALSE(CallSpec::InputSpec::New()->Validate(command, output));
  EXPECT_THAT(output->GetErrors(), ElementsAre("Unknown parameter : name"));
}

TEST(CommandInputTest, AnOrdinaryInputIsNotACommandInput) {
  EXPECT_EQ(std::dynamic_pointer_cast<CommandInput>(CallSpec::Input::New()), nullptr);
}

}  // namespace
}  // namespace Kestrel::AutoCli
