// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/testing/Examples.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "kestrel/testing/GoogleTest.h"
#include "testing/SamplePlugin.h"

namespace Kestrel::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(SplitShellWordsTest, SplitsLikeAShell) {
  EXPECT_THAT(SplitShellWords("  a 'b c'  \"d\\\"e\" f\\ g ''"),
              ElementsAre("a", "b c", "d\"e", "f g", ""));
  EXPECT_THAT(SplitShellWords(""), IsEmpty());
  EXPECT_THAT(SplitShellWords("--x='a b'\n'\\n'"), ElementsAre("--x=a b", "\\n"));
}

/// Counts the calls of its command.
struct CountingPlugin {
  explicit CountingPlugin(const std::string& example, const std::string& changes = "false")
      : plugin(MakePlugin(
            [this](const std::string& text, CallSpec::Output& output) {
              ++calls;
              ReturnText(text, output);
            },
            [&](SampleCommand& command) {
              command.AddExample(example, "Do it");
              command.AddMetaData("changes", changes);
            })) {}

  int calls = 0;
  std::shared_ptr<AutoCli::Plugin> plugin;
};

TEST(ExamplesTest, RunsEachExample) {
  CountingPlugin good("--text 'a b'");
  EXPECT_TRUE(Passes(RunExamples(good.plugin)));
  EXPECT_EQ(good.calls, 1);
}

TEST(ExamplesTest, ReportsAnExampleThatFails) {
  CountingPlugin bad("--txt=a");
  EXPECT_THAT(RunExamples(bad.plugin).GetProblems(),
              ElementsAre("the example 'sample show --txt=a': it reports: Unknown parameter : txt",
                          "the example 'sample show --txt=a': it reports: Missing required "
                          "parameter --text"));
  EXPECT_EQ(bad.calls, 0);
}

TEST(ExamplesTest, DoesNotRunWhatChangesSomething) {
  CountingPlugin good("--text a", "true");
  EXPECT_TRUE(Passes(RunExamples(good.plugin)));
  EXPECT_EQ(good.calls, 0);
  CountingPlugin bad("", "true");
  EXPECT_THAT(RunExamples(bad.plugin).GetProblems(),
              ElementsAre("the example 'sample show': it is refused: Missing required parameter "
                          "--text"));
}

TEST(ExamplesTest, CheckExamplesRunsNoExample) {
  CountingPlugin good("--text a");
  EXPECT_TRUE(Passes(CheckExamples(good.plugin)));
  EXPECT_EQ(good.calls, 0);
}

}  // namespace
}  // namespace Kestrel::Testing
