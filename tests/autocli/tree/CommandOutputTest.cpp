// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/CommandOutput.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>

namespace Kestrel::AutoCli {
namespace {

using std::string_literals::operator""s;
using testing::ElementsAre;

TEST(CommandOutputTest, IsEmptyAtFirst) {
  const auto output = CommandOutput::New();
  EXPECT_EQ(output->GetFormattedString(), "");
  EXPECT_EQ(output->GetRootObject(), nullptr);
  EXPECT_FALSE(output->HasError());
  EXPECT_EQ(output->GetOutputType(), CallSpec::Output::Ordinary);
}

TEST(CommandOutputTest, KeepsTheRenderedText) {
  const auto output = CommandOutput::New();
  const std::string& text = output->GetFormattedString();
  output->SetFormattedString("line\n\0end"s);
  EXPECT_EQ(text, "line\n\0end"s);
  output->SetFormattedString("");
  EXPECT_EQ(text, "");
}

TEST(CommandOutputTest, IsAnOutput) {
  EXPECT_TRUE((std::is_base_of<CallSpec::Output, CommandOutput>::value));
  EXPECT_FALSE(std::is_copy_constructible<CommandOutput>::value);
  EXPECT_FALSE(std::is_default_constructible<CommandOutput>::value);
  const auto command = CommandOutput::New();
  const std::shared_ptr<CallSpec::Output> output = command;
  output->AddErrorMessage("message");
  output->SetOutputType(CallSpec::Output::Help);
  EXPECT_THAT(command->GetErrors(), ElementsAre("message"));
  EXPECT_EQ(command->GetOutputType(), CallSpec::Output::Help);
  EXPECT_EQ(std::dynamic_pointer_cast<CommandOutput>(output), command);
}

TEST(CommandOutputTest, AnOrdinaryOutputIsNotACommandOutput) {
  EXPECT_EQ(std::dynamic_pointer_cast<CommandOutput>(CallSpec::Output::New()), nullptr);
}

}  // namespace
}  // namespace Kestrel::AutoCli
