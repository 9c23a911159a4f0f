// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/package/PackagePolicy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kestrel/KestrelException.h>

namespace Kestrel::Host {
namespace {

using ::testing::IsEmpty;
using ::testing::ThrowsMessage;

constexpr char kBash[] =
    "bash:\n"
    "  Installed: 5.2.15-2+b8\n"
    "  Candidate: 5.2.15-2+b13\n"
    "  Version table:\n"
    "     5.3-1 -10\n"
    "        -10 http://deb.example.org/debian experimental/main amd64 Packages\n"
    "     5.2.15-2+b13 500\n"
    "        500 http://deb.example.org/debian stable/main amd64 Packages\n"
    "        500 http://other.example.org/debian stable/main amd64 Packages\n"
    " *** 5.2.15-2+b8 100\n"
    "        100 /var/lib/dpkg/status\n";

constexpr char kOwn[] =
    "own:i386:\n"
    "  Installed: 1\n"
    "  Candidate: 1\n"
    "  Version table:\n"
    " *** 1 100\n"
    "        100 /var/lib/dpkg/status\n";

PackagePolicy Parse(std::string_view text) {
  PackagePolicy policy;
  policy.Add(text);
  return policy;
}

TEST(PackagePolicyTest, ReadsTheCandidateAndItsFirstSource) {
  const PackagePolicy policy = Parse(kBash);
  ASSERT_EQ(policy.candidates.count("bash"), 1U);
  EXPECT_EQ(policy.candidates.at("bash").version, "5.2.15-2+b13");
  EXPECT_EQ(policy.candidates.at("bash").source,
            "http://deb.example.org/debian stable/main amd64 Packages");
  EXPECT_TRUE(policy.hasLists);
}

TEST(PackagePolicyTest, ReadsAPackageThatOnlyTheDatabaseContains) {
  const PackagePolicy policy = Parse(kOwn);
  ASSERT_EQ(policy.candidates.count("own:i386"), 1U);
  EXPECT_EQ(policy.candidates.at("own:i386").version, "1");
  EXPECT_EQ(policy.candidates.at("own:i386").source, "");
  EXPECT_FALSE(policy.hasLists);
}

TEST(PackagePolicyTest, AddsTheCandidatesOfAFurtherAnswer) {
  PackagePolicy policy = Parse(kBash);
  policy.Add(kOwn);
  EXPECT_EQ(policy.candidates.size(), 2U);
  EXPECT_TRUE(policy.hasLists);
}

TEST(PackagePolicyTest, MayHaveNoCandidate) {
  const PackagePolicy policy =
      Parse("a:\n  Installed: 1\n  Candidate: (none)\n  Version table:\n *** 1 -1\n");
  EXPECT_EQ(policy.candidates.at("a").version, "");
}

TEST(PackagePolicyTest, ReadsAWidePriorityAndAPhasedUpdate) {
  const PackagePolicy policy = Parse(
      "a:\n  Installed: 1\n  Candidate: 2\n  Package pin: 2\n  Version table:\n"
      "     2 1001 (phased 10%)\n"
      "       1001 https://deb.example.org/debian stable/main amd64 Packages\n");
  EXPECT_EQ(policy.candidates.at("a").source,
            "https://deb.example.org/debian stable/main amd64 Packages");
}

TEST(PackagePolicyTest, SurvivesALineWithoutAVersion) {
  EXPECT_EQ(Parse("a:\n  Candidate: 1\n *** \n        500 x\n").candidates.at("a").source, "");
}

TEST(PackagePolicyTest, ReadsAnEmptyAnswer) {
  EXPECT_THAT(Parse("").candidates, IsEmpty());
  EXPECT_THAT(Parse("\n \n").candidates, IsEmpty());
}

TEST(PackagePolicyTest, RefusesAnotherForm) {
  for (const std::string text : {"hello\n", ":\n", "  Candidate: 1\n", "a:\nb\n"}) {
    const std::string line = text == "a:\nb\n" ? "b" : text.substr(0, text.size() - 1);
    EXPECT_THAT([&] { Parse(text); }, ThrowsMessage<KestrelException>(
                                          "The output of apt-cache has an unknown form: " + line));
  }
}

}  // namespace
}  // namespace Kestrel::Host
