// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/OsRelease.h"

#include <gtest/gtest.h>

#include "support/ScopedTempDir.h"

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

}  // namespace
}  // namespace Kestrel::Host
