// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/OsRelease.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kestrel/KestrelException.h"
#include "support/Random.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

namespace Kestrel::Host {
namespace {

using Testing::ScopedTempDir;

TEST(OsReleaseTest, ReadsValuesInTheQuotingOfTheShell) {
  const std::string text =
      "# NAME=comment\nPLAIN=a\n DOUBLE=\"b \\\"c\\\" \\$d\"\nSINGLE='e \\f'\nMIXED=g\"h\"'i'\n"
      "EMPTY=\nTWICE=1\nTWICE=2\nOPEN=\"j\nNAMED=k\n";
  EXPECT_EQ(ParseOsRelease(text, "PLAIN"), "a");
  EXPECT_EQ(ParseOsRelease(text, "DOUBLE"), "b \"c\" $d");
  EXPECT_EQ(ParseOsRelease(text, "SINGLE"), "e \\f");
  EXPECT_EQ(ParseOsRelease(text, "MIXED"), "ghi");
  EXPECT_EQ(ParseOsRelease(text, "EMPTY"), "");
  EXPECT_EQ(ParseOsRelease(text, "TWICE"), "2");
  EXPECT_EQ(ParseOsRelease(text, "OPEN"), "j");
  EXPECT_EQ(ParseOsRelease(text, "NAME"), "");
  EXPECT_EQ(ParseOsRelease("", "NAME"), "");
  EXPECT_EQ(ParseOsRelease("NAME=x\\", "NAME"), "x\\");
}

TEST(OsReleaseTest, FindsTheNameInEitherPlace) {
  const ScopedTempDir root;
  EXPECT_EQ(ReadDistributionName(root.GetPath()), "");
  root.Write("usr/lib/os-release", "NAME=Small\n");
  EXPECT_EQ(ReadDistributionName(root.GetPath()), "Small");
  root.Write("etc/os-release", "NAME=Big\nPRETTY_NAME=\"Big 3 (three)\"\n");
  EXPECT_EQ(ReadDistributionName(root.GetPath()), "Big 3 (three)");
}

struct ValueCase {
  const char* name;
  const char* text;
  const char* value;
};

const ValueCase kValues[] = {
    {"Plain", "KEY=a", "a"},
    {"Empty", "KEY=", ""},
    {"Absent", "OTHER=a", ""},
    {"LongerKey", "KEYS=a", ""},
    {"KeyWithoutAnEqualsSign", "KEY", ""},
    {"KeyThatIsALinesEnd", "A KEY=a", ""},
    {"CommentedOut", "#KEY=a", ""},
    {"LastOfTwo", "KEY=a\nKEY=b", "b"},
    {"EmptyAfterAnother", "KEY=a\nKEY=", ""},
    {"EqualsSignInTheValue", "KEY=a=b", "a=b"},
    {"SpaceAroundTheLine", "  KEY=a \t\r\nX=y", "a"},
    {"DoubleQuotes", "KEY=\"a b\"", "a b"},
    {"SingleQuotes", "KEY='a b'", "a b"},
    {"QuotesWithinQuotes", "KEY=\"it's\"", "it's"},
    {"EscapedQuote", "KEY=\"a\\\"b\"", "a\"b"},
    {"EscapedBackslash", "KEY=\"a\\\\b\"", "a\\b"},
    {"EscapedDollar", "KEY=\"\\$x\"", "$x"},
    {"BackslashInSingleQuotes", "KEY='a\\b'", "a\\b"},
    {"EscapeWithoutQuotes", "KEY=a\\ b", "a b"},
    {"BackslashAtTheEnd", "KEY=a\\", "a\\"},
    {"JoinedPieces", "KEY=a\"b\"'c'd", "abcd"},
    {"QuoteThatNeverEnds", "KEY=\"a b", "a b"},
    {"OnlyAQuote", "KEY=\"", ""},
    {"EmptyFile", "", ""},
};

class OsReleaseValueTest : public ::testing::TestWithParam<ValueCase> {};

TEST_P(OsReleaseValueTest, IsUnquoted) {
  EXPECT_EQ(ParseOsRelease(GetParam().text, "KEY"), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(Values, OsReleaseValueTest, ::testing::ValuesIn(kValues),
                         [](const auto& test) { return test.param.name; });

// Compares with the shell, for random values in each kind of quotes.
TEST(OsReleaseTest, UnquotesAsTheShellDoes) {
  const ScopedTempDir folder;
  Testing::Random random;
  const std::string letters = "ab=#;&|<>*?~!()[]{} \t";
  for (int round = 0; round < 40; ++round) {
    std::string plain;
    for (std::size_t size = random.Below(12); size > 0; --size) {
      plain += letters[random.Below(letters.size())];
    }
    for (const char quote : {'"', '\''}) {
      const std::string path = folder.Write("os-release", "KEY=" + (quote + plain) + quote + "\n");
      EXPECT_EQ(ParseOsRelease(folder.Read("os-release"), "KEY"),
                Testing::Witness(". " + path + "; printf %s \"$KEY\""))
          << random.HowToRepeat();
    }
  }
}

TEST(OsReleaseTest, ReportsAFileThatCannotBeRead) {
  for (const char* const file : {"usr/lib/os-release", "etc/os-release"}) {
    const ScopedTempDir root;
    root.MakeDirectory(file);
    EXPECT_THAT([&root] { ReadDistributionName(root.GetPath()); },
                ::testing::ThrowsMessage<KestrelException>("Unable to read " + root.GetPath(file) +
                                                           ": Is a directory"));
  }
}

TEST(OsReleaseTest, ReadsOnlyTheFileBelowEtcIfThereIsOne) {
  const ScopedTempDir root;
  root.Write("etc/os-release", "VERSION=1\n");
  root.Write("usr/lib/os-release", "NAME=Other\n");
  EXPECT_EQ(ReadDistributionName(root.GetPath()), "") << "also when it has no name";
}

}  // namespace
}  // namespace Kestrel::Host
