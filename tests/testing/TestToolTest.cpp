// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/testing/TestTool.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/VexilRun.h"
#include "testing/SamplePlugin.h"

namespace Kestrel::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using ::testing::ThrowsMessage;

TEST(TestToolTest, RunsACommandOfAPluginFile) {
  const CommandRun run = Testing::Run(KESTREL_ECHO_PLUGIN, {"echo", "say", "--text", "hello"});
  EXPECT_EQ(run.Output(), "hello\n");
  EXPECT_THAT(run.Messages(), IsEmpty());
  EXPECT_EQ(run.Status(), 0);
  EXPECT_EQ(run.Result()->ToString(), "hello");
}

TEST(TestToolTest, RunsACommandOfAPluginObject) {
  const CommandRun run = Testing::Run(MakePlugin(ReturnText), {"sample", "show", "-t", "x"});
  EXPECT_EQ(run.Output(), "Sample:\n   Text: x\n");
  EXPECT_EQ(run.Status(), 0);
}

// The tool itself is the reference.
TEST(TestToolTest, DoesWhatTheToolDoes) {
  const std::vector<Words> lines = {
      {"echo", "say", "--text", "a b"},
      {"--formatter", "json", "echo", "say", "--text=x"},
      {"--formatter=none", "echo", "say", "--text=x"},
      {"--format-param", "bad", "echo", "say", "--text=x"},
      {"--colour", "1", "echo", "say", "--text=x"},
      {"echo", "say", "--help"},
      {"echo", "say"},
      {"echo", "say", "--text=x", "extra"},
      {"echo", "say", "--text", "x", "--text", "y"},
      {"echo"},
      {"--colour", "1", "echo"},
      {},
  };
  for (const Words& line : lines) {
    const CommandRun run = Testing::Run(KESTREL_ECHO_PLUGIN, line);
    Words arguments = {"--plugin", KESTREL_ECHO_PLUGIN};
    arguments.insert(arguments.end(), line.begin(), line.end());
    const VexilResult tool = VexilRun(arguments).Run();
    std::string messages = run.Messages().empty() ? "" : "Errors: \n";
    for (const std::string& message : run.Messages()) {
      messages += message + "\n";
    }
    EXPECT_EQ(run.Output(), tool.out) << ::testing::PrintToString(line);
    EXPECT_EQ(messages, tool.err) << ::testing::PrintToString(line);
    EXPECT_EQ(run.Status(), tool.status) << ::testing::PrintToString(line);
  }
}

TEST(TestToolTest, ReportsAnUnknownWordAsAMessage) {
  const CommandRun run = Testing::Run(KESTREL_ECHO_PLUGIN, {"no", "such"});
  EXPECT_EQ(run.Status(), 1);
  EXPECT_THAT(run.Messages(), ElementsAre(HasSubstr("with the name 'no'")));
  EXPECT_EQ(run.GetCommand(), nullptr);
  EXPECT_EQ(run.Result(), nullptr);
}

TEST(TestToolTest, AForeignExceptionReachesTheCaller) {
  const auto plugin = MakePlugin([](const std::string&, CallSpec::Output&) { throw 7; });
  EXPECT_THROW(Testing::Run(plugin, {"sample", "show", "--text=x"}), int);
}

TEST(TestToolTest, ThrowsForAPluginThatCannotBeLoaded) {
  EXPECT_THAT(
      [] { TestTool tool("/no/such.so"); },
      ThrowsMessage<KestrelException>(StartsWith("Unable to load plugin from /no/such.so")));
}

TEST(TestToolTest, ListsOnlyTheCommandsOfThePluginUnderTest) {
  const TestTool echo(KESTREL_ECHO_PLUGIN);
  std::vector<std::string> paths;
  for (const auto& [path, command] : echo.GetCommands()) {
    paths.push_back(path);
  }
  EXPECT_THAT(paths, ElementsAre("echo say"));
}

TEST(TestToolTest, ARunOutlivesTheTool) {
  std::unique_ptr<TestTool> tool = std::make_unique<TestTool>(KESTREL_ECHO_PLUGIN);
  const CommandRun run = tool->Run({"echo", "say", "--text", "x"});
  tool.reset();
  EXPECT_EQ(run.GetCommand()->GetDescription(), "Answers with the text it is given.");
}

TEST(PrintedTest, UsesAnotherFormatterAndItsParameters) {
  const CommandRun run =
      Testing::Run(MakePlugin(ReturnText), {"sample", "show", "--text", "one two three"});
  EXPECT_EQ(Printed(run), run.Output());
  EXPECT_EQ(Printed(run, "python"), "{\"Text\": \"\"\"one two three\"\"\", }\n");
  EXPECT_THAT(Printed(run, "simple", {{"header:Sample", "Top"}}), StartsWith("Top:\n"));
}

TEST(PrintedTest, IsEmptyWithoutAResultAndThrowsForAnUnknownFormatter) {
  EXPECT_EQ(Printed(Testing::Run(KESTREL_ECHO_PLUGIN, {"echo", "say"}), "json"), "");
  const CommandRun run = Testing::Run(KESTREL_ECHO_PLUGIN, {"echo", "say", "--text=x"});
  EXPECT_THAT([&] { Printed(run, "none"); },
              ThrowsMessage<KestrelException>("Unable to find requested formatter: none"));
}

}  // namespace
}  // namespace Kestrel::Testing
