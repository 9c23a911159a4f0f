// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Tests what the real tool prints in addition to the library's messages, on a terminal and into
// files.

#include <gmock/gmock.h>

#include <string>
#include <utility>
#include <vector>

#include "e2e/Plugins.h"
#include "kestrel/Version.h"
#include "support/PseudoTerminal.h"
#include "support/ScopedTempDir.h"
#include "support/TestPlugins.h"
#include "support/VexilRun.h"

namespace Kestrel::Testing {

namespace {

const std::string kSuggested =
    "Unable to find a command or namespace with the name 'comand' in namespace vexil\n"
    "Did you mean: vexil command list?\n";

// Returns the output and messages of the tool on a terminal.
std::string RunOnTerminal(const VexilRun& run) {
  PseudoTerminal terminal;
  terminal.Start([&run]() -> int { run.Exec(); });
  terminal.WaitForEnd();
  return terminal.ReadRest();
}

TEST(AdviceTest, PathsThatMayBeMeantFollowTheMessage) {
  const VexilResult result = VexilRun({"vexil", "comand", "list"}).Run();
  EXPECT_EQ("", result.out);
  EXPECT_EQ(kSuggested, result.err);
  EXPECT_EQ(1, result.status);
}

TEST(AdviceTest, APathInOneArgumentIsSuggestedAsWords) {
  EXPECT_EQ(
      "Unable to find a command or namespace with the name 'vexil command list' in namespace \n"
      "Did you mean: vexil command list?\n",
      VexilRun({"vexil command list"}).Run().err);
}

TEST(AdviceTest, TheSuggestedPathIsCompleteWhenAnOptionTookItsFirstWord) {
  EXPECT_EQ(
      "Unable to find a command or namespace with the name 'command' in namespace \n"
      "Did you mean: vexil command list?\n",
      VexilRun({"--debug", "vexil", "command", "list"}).Run().err);
}

TEST(AdviceTest, TheCommandIsSuggestedForAWordAfterIt) {
  EXPECT_EQ(
      "Unable to find a namespace or command with the name 'all' on the command 'vexil "
      "command list'. Commands cannot have sub-commands or sub-namespaces.\n"
      "Did you mean: vexil command list?\n",
      VexilRun({"vexil", "command", "list", "all"}).Run().err);
}

TEST(AdviceTest, TheSamePathsAreSuggestedForALineOfAStream) {
  EXPECT_EQ(kSuggested, VexilRun({"--input=STDIN"}).WithInput("vexil comand list\n").Run().err);
  const ScopedTempDir folder;
  const std::string file = folder.Write("lines", "# a line\n\"vexil\" comand list\n");
  EXPECT_EQ(kSuggested, VexilRun({"--input", file}).Run().err);
}

TEST(AdviceTest, NothingFollowsWhenNothingIsSimilar) {
  EXPECT_EQ("Unable to find a command or namespace with the name 'nosuch' in namespace \n",
            VexilRun({"nosuch"}).Run().err);
}

TEST(AdviceTest, ThereAreNoHintsWithoutATerminal) {
  EXPECT_EQ("Errors: \nUnknown parameter : comand-filter\n",
            VexilRun({"vexil", "command", "list", "--comand-filter=x"}).Run().err);
  EXPECT_EQ("", VexilRun({"--screen-width=x", "vexil", "command", "list"}).Run().err);
}

TEST(AdviceTest, HintsFollowEverythingElseOnATerminal) {
  EXPECT_EQ(
      "Errors: \r\nUnknown parameter : comand-filter\r\n"
      "Hint: 'vexil command list' has no option --comand-filter. Did you mean "
      "--command-filter?\r\n",
      RunOnTerminal(VexilRun({"vexil", "command", "list", "--comand-filter=x"})));
  EXPECT_EQ(
      "Unable to find a command or namespace with the name 'command' in namespace \r\n"
      "Did you mean: vexil command list?\r\n"
      "Hint: --debug took the word 'vexil' as its value.\r\n",
      RunOnTerminal(VexilRun({"--debug", "vexil", "command", "list"})));
}

TEST(AdviceTest, EachLineOfAStreamGetsItsHints) {
  const ScopedTempDir folder;
  const std::string file = folder.Write(
      "lines", "--screen-width=x vexil command list --nosuch\nvexil command list --nosuch\n");
  EXPECT_EQ(
      "Errors: \r\nUnknown parameter : nosuch\r\n"
      "Hint: The screen width 'x' is not a number.\r\n"
      "Errors: \r\nUnknown parameter : nosuch\r\n"
      "Hint: The screen width '8x' is not a number.\r\n",
      RunOnTerminal(VexilRun({"--screen-width=8x", "--input", file})));
}

TEST(AdviceTest, ACommandThatSucceedsCanGetAHint) {
  EXPECT_THAT(RunOnTerminal(VexilRun({"--screen-width=x", "vexil", "command", "list"})),
              ::testing::EndsWith("commands.\r\nHint: The screen width 'x' is not a number.\r\n"));
}

TEST(AdviceTest, ALineThatIsRightGetsNoHint) {
  EXPECT_THAT(RunOnTerminal(VexilRun({"vexil", "command", "list"})),
              ::testing::EndsWith("List all of the vexil commands.\r\n"));
}

TEST(VersionOptionTest, PrintsNameAndVersionWhenItIsTheOnlyArgument) {
  const VexilResult result = VexilRun({"--version"}).CalledAs("/somewhere/else").Run();
  EXPECT_EQ("vexil " KESTREL_VERSION_STRING "\n", result.out);
  EXPECT_EQ("", result.err);
  EXPECT_EQ(0, result.status);
}

TEST(VersionOptionTest, IsUnknownToTheDispatcherWithOtherWords) {
  const VexilResult result = VexilRun({"--version=1", "vexil", "command", "list"}).Run();
  EXPECT_EQ("", result.out);
  EXPECT_EQ("Errors: \nUnknown dispatcher parameter: version\n", result.err);
  EXPECT_EQ(1, result.status);
}

TEST(VersionOptionTest, IsAnOptionOfTheDispatcherInAStream) {
  const VexilResult result = VexilRun({"--input=STDIN"}).WithInput("--version\n").Run();
  EXPECT_THAT(result.out, ::testing::StartsWith("Usage: "));
  EXPECT_EQ(1, result.status);
}

TEST(VersionOptionTest, ReportsThatItCouldNotWrite) {
  const VexilResult result = VexilRun({"--version"}).WithOutputTo("/dev/full").Run();
  EXPECT_EQ("Unable to write to standard output\n", result.err);
  EXPECT_EQ(1, result.status);
}

}  // namespace

}  // namespace Kestrel::Testing
