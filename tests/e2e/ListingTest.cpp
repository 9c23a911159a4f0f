// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>

#include <string>

#include "e2e/Plugins.h"
#include "support/Golden.h"
#include "support/VexilRun.h"

namespace Kestrel::Testing {

namespace {

using ::testing::HasSubstr;

TEST(ListingTest, WithoutArgumentsTheRootIsListedAndTheStatusIsOne) {
  const VexilResult result = VexilRun().Run();
  EXPECT_THAT(result.out, MatchesGolden("clihelp/tool-root"));
  EXPECT_EQ("", result.err);
  EXPECT_EQ(1, result.status);
}

TEST(ListingTest, ANamespaceIsListed) {
  const VexilResult result = Try({"try"}).Run();
  EXPECT_THAT(result.out, MatchesGolden("clihelp/tool-namespace"));
  EXPECT_EQ("", result.err);
  EXPECT_EQ(1, result.status);
}

TEST(ListingTest, ANamespaceWithinANamespaceIsListed) {
  const VexilResult result = VexilRun({"vexil", "command"}).Run();
  EXPECT_THAT(result.out, MatchesGolden("clihelp/tool-nested"));
  EXPECT_EQ("", result.err);
  EXPECT_EQ(1, result.status);
}

TEST(ListingTest, AnUnknownOptionDoesNotShowInAListing) {
  const VexilResult result = VexilRun({"--colour"}).Run();
  EXPECT_THAT(result.out, MatchesGolden("clihelp/tool-root"));
  EXPECT_EQ("", result.err);
  EXPECT_EQ(1, result.status);
}

TEST(ListingTest, AnUnknownWordIsReportedOnOneLine) {
  const VexilResult result = VexilRun({"--colour=x", "vexil", "nosuch", "list"}).Run();
  EXPECT_EQ("", result.out);
  EXPECT_EQ("Unable to find a command or namespace with the name 'nosuch' in namespace vexil\n",
            result.err);
  EXPECT_EQ(1, result.status);
}

TEST(ListingTest, AnUnknownWordAtTheRootIsReportedOnOneLine) {
  const VexilResult result = VexilRun({"nosuch"}).Run();
  EXPECT_EQ("", result.out);
  EXPECT_EQ("Unable to find a command or namespace with the name 'nosuch' in namespace \n",
            result.err);
  EXPECT_EQ(1, result.status);
}

TEST(ListingTest, AWordAfterACommandIsReportedWithASuggestion) {
  const VexilResult result = VexilRun({"vexil", "command", "list", "extra", "-c", "list"}).Run();
  EXPECT_EQ("", result.out);
  EXPECT_EQ(
      "Unable to find a namespace or command with the name 'extra' on the command 'vexil command "
      "list'. Commands cannot have sub-commands or sub-namespaces.\n"
      "Did you mean: vexil command list?\n",
      result.err);
  EXPECT_EQ(1, result.status);
}

TEST(ListingTest, NamespacesTwoHundredDeepAreFoundAndListed) {
  std::vector<std::string> words(200, "deep");
  const VexilResult listing = Try(words).Run();
  EXPECT_THAT(listing.out, HasSubstr("Available Commands: \n\nend   Answers from far below.\n\n"));
  EXPECT_EQ(1, listing.status);
  words.push_back("end");
  const VexilResult answer = Try(words).Run();
  EXPECT_EQ("from far below\n", answer.out);
  EXPECT_EQ("", answer.err);
  EXPECT_EQ(0, answer.status);
}

}  // namespace

}  // namespace Kestrel::Testing
