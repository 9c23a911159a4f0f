// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/NamePattern.h"

#include <gtest/gtest.h>

#include <string>

namespace Kestrel::Host {
namespace {

struct PatternCase {
  const char* test;
  const char* name;
  const char* pattern;
  bool matches;
};

class NamePatternTest : public ::testing::TestWithParam<PatternCase> {};

TEST_P(NamePatternTest, MatchesOrNot) {
  EXPECT_EQ(MatchesNamePattern(GetParam().name, GetParam().pattern), GetParam().matches);
}

INSTANTIATE_TEST_SUITE_P(
    Patterns, NamePatternTest,
    ::testing::Values(
        // Without a star.
        PatternCase{"EmptyAndEmpty", "", "", true}, PatternCase{"NameAndEmpty", "a", "", false},
        PatternCase{"EmptyAndName", "", "a", false}, PatternCase{"Same", "bash", "bash", true},
        PatternCase{"Longer", "bash-static", "bash", false},
        PatternCase{"Shorter", "bas", "bash", false},
        PatternCase{"OtherCase", "Bash", "bash", false},
        // One star.
        PatternCase{"AnyEmpty", "", "*", true}, PatternCase{"Any", "bash", "*", true},
        PatternCase{"Start", "libc6", "lib*", true},
        PatternCase{"StartItself", "lib", "lib*", true},
        PatternCase{"NotAtTheStart", "glibc", "lib*", false},
        PatternCase{"End", "libc6-dev", "*-dev", true},
        PatternCase{"NotAtTheEnd", "libc6-devel", "*-dev", false},
        PatternCase{"BothEnds", "libc6-dev", "lib*-dev", true},
        PatternCase{"EndsThatOverlap", "aba", "ab*ba", false},
        PatternCase{"EndsThatTouch", "abba", "ab*ba", true},
        // Several stars.
        PatternCase{"Inside", "libstdc++6", "*stdc*", true},
        PatternCase{"NotInside", "libc6", "*stdc*", false},
        PatternCase{"Order", "abc", "*a*b*c*", true},
        PatternCase{"WrongOrder", "abc", "*b*a*", false},
        PatternCase{"SecondPlace", "aab", "*a*b", true},
        PatternCase{"NotTheSameByteTwice", "a", "*a*a*", false},
        PatternCase{"PieceUsedByTheEnd", "ab", "*b*b", false},
        PatternCase{"TwoStars", "ab", "a**b", true},
        // Characters that are special in regular expressions.
        PatternCase{"FullStop", "baXh", "ba.h", false}, PatternCase{"Plus", "g++", "g++", true},
        PatternCase{"PlusAndStar", "g++-12", "g++*", true},
        PatternCase{"Question", "ab", "a?", false}, PatternCase{"Brackets", "a", "[a]", false},
        PatternCase{"Backslash", "a*", "a\\*", false}),
    [](const auto& each) { return std::string(each.param.test); });

// Each star can end at any of the bytes of the name, so trying all combinations would practically
// never end.
TEST(NamePatternSpeedTest, DoesNotTryAllCombinationsOfPlaces) {
  const std::string name(100000, 'a');
  std::string pattern;
  for (int piece = 0; piece < 50; ++piece) {
    pattern += "*a";
  }
  EXPECT_TRUE(MatchesNamePattern(name, pattern));
  EXPECT_FALSE(MatchesNamePattern(name, pattern + "*b"));
}

TEST(NameFilterTest, AcceptsAllWithoutPatterns) {
  EXPECT_TRUE(NameFilter(*CallSpec::Input::New(), "name").Accepts("anything"));
}

TEST(NameFilterTest, AcceptsWhatOnePatternMatches) {
  const auto input = CallSpec::Input::New();
  input->AddParameter("name", "bash");
  input->AddParameter("name", "lib*");
  const NameFilter filter(*input, "name");
  EXPECT_TRUE(filter.Accepts("bash"));
  EXPECT_TRUE(filter.Accepts("libc6"));
  EXPECT_FALSE(filter.Accepts("dash"));
}

}  // namespace
}  // namespace Kestrel::Host
