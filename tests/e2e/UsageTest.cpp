// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>

#include <string>

#include "support/Golden.h"
#include "support/VexilRun.h"

namespace Kestrel::Testing {

namespace {

using ::testing::AnyOf;
using ::testing::StartsWith;

TEST(UsageTest, HelpPrintsTheUsageAndExitsWithStatus1) {
  for (const char* option : {"--help", "-h"}) {
    const VexilResult result = VexilRun({option}).Run();
    EXPECT_THAT(result.out, MatchesGolden("usage/vexil"));
    EXPECT_EQ("", result.err);
    EXPECT_EQ(1, result.status);
  }
}

TEST(UsageTest, TheUsageContainsTheNameThatTheToolWasCalledBy) {
  const VexilResult result = VexilRun({"--help"}).CalledAs("/opt/bin/other tool").Run();
  EXPECT_THAT(result.out, MatchesGolden("usage/other-name"));
  EXPECT_EQ("", result.err);
  EXPECT_EQ(1, result.status);
}

TEST(UsageTest, HelpIsPrintedWhateverElseIsRequested) {
  const VexilResult result =
      VexilRun({"--colour", "--plugin=/nosuch.so", "--formatter=a", "--formatter=b", "--help"})
          .Run();
  EXPECT_THAT(result.out, MatchesGolden("usage/vexil"));
  EXPECT_EQ("", result.err);
  EXPECT_EQ(1, result.status);
}

TEST(UsageTest, AnEmptyNameOfTheToolIsPrinted) {
  const VexilResult result = VexilRun().CalledAs("").Run();
  EXPECT_THAT(result.out, StartsWith("Usage:  [disp options] <namespaces> <command>\n"));
  EXPECT_EQ(1, result.status);
}

TEST(UsageTest, WithoutAnyNameTheToolStillListsTheRoot) {
  const VexilResult result = VexilRun().CalledByNoName().Run();
  // Linux 5.18 and later supply an empty name.
  EXPECT_THAT(result.out, AnyOf(StartsWith("Usage: vexil [disp options] <namespaces> <command>\n"),
                                StartsWith("Usage:  [disp options] <namespaces> <command>\n")));
  EXPECT_EQ("", result.err);
  EXPECT_EQ(1, result.status);
}

}  // namespace

}  // namespace Kestrel::Testing
