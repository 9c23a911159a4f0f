// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "plugins/host/support/HostRun.h"
#include "support/Witness.h"

// The plug-in in the real tool, as a user sees it.
namespace Kestrel::Testing {
namespace {

using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::StartsWith;

TEST(HostToolTest, ListsTheAreasOfTheMachine) {
  const VexilResult result = HostRun({}).Run();
  for (const char* const line :
       {"\nnetwork  ", "\nstorage  ", "\nsystem   The machine, its kernel and its processes.\n"}) {
    EXPECT_THAT(result.out, HasSubstr(line));
  }
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 1);
}

TEST(HostToolTest, PrintsAValue) {
  const VexilResult result = HostRun({"system", "cpu", "count"}).Run();
  EXPECT_EQ(result.out, Witness("getconf _NPROCESSORS_ONLN"));
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
}

TEST(HostToolTest, PrintsAStructure) {
  const VexilResult result = HostRun({"system", "load", "get"}).Run();
  EXPECT_THAT(result.out, MatchesRegex("SystemLoad:\n"
                                       "   One Minute     : [0-9.]+\n"
                                       "   Five Minutes   : [0-9.]+\n"
                                       "   Fifteen Minutes: [0-9.]+\n"
                                       "   Running        : [0-9]+\n"
                                       "   Tasks          : [0-9]+\n"));
  EXPECT_EQ(result.status, 0);
}

TEST(HostToolTest, PrintsAListWithAnotherFormatter) {
  const VexilResult result =
      HostRun({"--formatter=simple", "system", "account", "list", "--name=root"}).Run();
  EXPECT_EQ(result.out,
            "\nAccount:\n   Name: root\n   User Id: 0\n   Login: true\n"
            "   Shell: " +
                Witness("getent passwd root | cut -d: -f7") +
                "   Home: " + Witness("getent passwd root | cut -d: -f6") + "\n");
  EXPECT_EQ(result.status, 0);
}

TEST(HostToolTest, PrintsOtherColumns) {
  const VexilResult result = HostRun({"--format-param", "fields:Account=User Id,Name", "system",
                                      "account", "list", "--name=root"})
                                 .Run();
  EXPECT_EQ(result.out, "User Id  Name\n-------  ----\n      0  root\n");
}

TEST(HostToolTest, CollectsAllMistakesOfACall) {
  const VexilResult result =
      HostRun({"system", "process", "list", "--minimum-memory=much", "--id=x", "--colour=red"})
          .Run();
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err,
            "Errors: \n"
            "Unknown parameter : colour\n"
            "Invalid data 'x' for parameter id expected type Integer\n"
            "Invalid data 'much' for parameter minimum-memory expected type Integer\n");
  EXPECT_EQ(result.status, 1);
}

TEST(HostToolTest, AnswersLinesOfAStream) {
  const VexilResult result = HostRun({"--input", "STDIN"})
                                 .WithInput(
                                     "system cpu count\n"
                                     "# a comment\n"
                                     "system account groups --name root\n"
                                     "system module check --name kernel\n")
                                 .Run();
  EXPECT_EQ(result.out,
            Witness("getconf _NPROCESSORS_ONLN; id -Gn root | sed 's/ /, /g'") + "true\n");
  EXPECT_EQ(result.status, 0);
}

TEST(HostToolTest, PrintsTheHeaderOfProcessorsOnANarrowScreen) {
  const VexilResult result =
      HostRun({"--screen-width=70", "system", "cpu", "list", "--number=0"}).Run();
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.out, StartsWith("Number  Online  Node  Socket  Core  Siblings  Frequency  "));
}

}  // namespace
}  // namespace Kestrel::Testing
