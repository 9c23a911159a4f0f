// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>

#include "e2e/Plugins.h"
#include "support/Golden.h"
#include "support/VexilRun.h"

namespace Kestrel::Testing {

namespace {

TEST(HelpTest, ACommandPrintsItsPageAndExitsWithStatus0) {
  for (const char* option : {"--help", "-h"}) {
    const VexilResult result = VexilRun({"vexil", "command", "list", option}).Run();
    EXPECT_THAT(result.out, MatchesGolden("commandhelp/tool-command-list"));
    EXPECT_EQ("", result.err);
    EXPECT_EQ(0, result.status);
  }
}

TEST(HelpTest, AnExampleHasItsPrefixAndItsColonOnce) {
  const VexilResult result = Try({"try", "say", "--help"}).Run();
  EXPECT_THAT(result.out, MatchesGolden("commandhelp/tool-say"));
  EXPECT_EQ("", result.err);
  EXPECT_EQ(0, result.status);
}

TEST(HelpTest, ThePageIsWrappedToTheScreenWidth) {
  const VexilResult result = Try({"try", "unlock", "--help"}, {"--screen-width", "60"}).Run();
  EXPECT_THAT(result.out, MatchesGolden("commandhelp/tool-unlock-60"));
  EXPECT_EQ("", result.err);
  EXPECT_EQ(0, result.status);
}

TEST(HelpTest, ThePageIsPrintedWhateverElseIsGiven) {
  const VexilResult result =
      VexilRun({"vexil", "command", "list", "--nosuch=1", "--help", "me"}).Run();
  EXPECT_THAT(result.out, MatchesGolden("commandhelp/tool-command-list"));
  EXPECT_EQ("", result.err);
  EXPECT_EQ(0, result.status);
}

TEST(HelpTest, AGivenSecretCausesNoPromptBeforeThePage) {
  const VexilResult result = Try({"try", "unlock", "--password", "x", "--pin=y", "--help"}).Run();
  EXPECT_EQ("Usage: vexil try unlock <options>\n", result.out.substr(0, 34));
  EXPECT_EQ(0, result.status);
}

TEST(HelpTest, AnotherFormatterPrintsTheHelpPageAsAStructure) {
  const VexilResult result =
      VexilRun({"--formatter=simple", "vexil", "command", "list", "--help"}).Run();
  EXPECT_THAT(result.out, MatchesGolden("commandhelp/tool-command-list-simple"));
  EXPECT_EQ("", result.err);
  EXPECT_EQ(0, result.status);
}

}  // namespace

}  // namespace Kestrel::Testing
