// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include "support/VexilRun.h"

namespace Kestrel::Testing {

namespace {

const char* const kList =
    "Namespace      Command  Description\n"
    "-------------  -------  -----------\n"
    "vexil.command  list     List all of the vexil commands.\n";

TEST(CommandListTest, ListsTheCommandsAndExitsWithStatus0) {
  const VexilResult result = VexilRun({"vexil", "command", "list"}).Run();
  EXPECT_EQ(kList, result.out);
  EXPECT_EQ("", result.err);
  EXPECT_EQ(0, result.status);
}

TEST(CommandListTest, TheFiltersTakeLongAndShortNames) {
  const VexilResult result =
      VexilRun({"vexil", "command", "list", "--command-filter=lis", "-n", "xil.com"}).Run();
  EXPECT_EQ(kList, result.out);
  EXPECT_EQ(0, result.status);
}

TEST(CommandListTest, AFilterThatMatchesNothingLeavesOnlyTheHeader) {
  const VexilResult result = VexilRun({"vexil", "command", "list", "-c", "List"}).Run();
  EXPECT_EQ("Namespace  Command  Description\n---------  -------  -----------\n", result.out);
  EXPECT_EQ("", result.err);
  EXPECT_EQ(0, result.status);
}

TEST(CommandListTest, EveryMistakeInTheParametersIsReported) {
  const VexilResult result =
      VexilRun({"vexil", "command", "list", "--nosuch=1", "--other", "-c", "a", "-c", "b"}).Run();
  EXPECT_EQ("", result.out);
  EXPECT_EQ(
      "Errors: \n"
      "Found multiple values for command-filter this parameter can only accept a single value.\n"
      "Unknown parameter : nosuch\n"
      "Unknown parameter : other\n",
      result.err);
  EXPECT_EQ(1, result.status);
}

TEST(CommandListTest, AMissingValueAndAnExtraWordAreReported) {
  const VexilResult result =
      VexilRun({"vexil", "command", "list", "-c", "--nosuch", "x", "extra", "--name="}).Run();
  EXPECT_EQ("", result.out);
  EXPECT_EQ(
      "Errors: \n"
      "-c must have value\n"
      "Found Extra non-parameter arguments at the end of input: 'extra' '--name=' \n",
      result.err);
  EXPECT_EQ(1, result.status);
}

}  // namespace

}  // namespace Kestrel::Testing
