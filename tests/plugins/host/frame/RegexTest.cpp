// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/Regex.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>
#include <string>

#include "kestrel/KestrelException.h"
#include "support/MemoryLimit.h"
#include "support/Sanitizer.h"

namespace Kestrel::Host {
namespace {

using ::testing::StartsWith;
using ::testing::ThrowsMessage;

TEST(RegexTest, MatchesAnyPartOfAString) {
  EXPECT_TRUE(Regex("b+").IsFoundIn("abbc"));
  EXPECT_FALSE(Regex("^b").IsFoundIn("abbc"));
  EXPECT_TRUE(Regex("").IsFoundIn(""));
  EXPECT_TRUE(Regex("\\d{3}$").IsFoundIn("x123"));
}

TEST(RegexTest, ReportsAnInvalidExpression) {
  EXPECT_THAT([] { Regex("(a"); },
              ThrowsMessage<KestrelException>(StartsWith("'(a' is not a regular expression: ")));
}

TEST(RegexTest, EndsASearchThatTakesTooLong) {
  const Regex pattern("^(a+a+)+$");
  EXPECT_THAT([&] { pattern.IsFoundIn(std::string(100, 'a') + "!"); },
              ThrowsMessage<KestrelException>(
                  "The regular expression '^(a+a+)+$' takes too long to search for"));
}

TEST(RegexTest, ReportsAnyOtherReasonWhyASearchEnds) {
  const Regex pattern("((?2))((?1))");
  EXPECT_THAT([&] { pattern.IsFoundIn("abc"); },
              ThrowsMessage<KestrelException>(
                  "The regular expression '((?2))((?1))' cannot be searched for: nested recursion "
                  "at the same subject position"));
}

TEST(RegexTest, ReportsThatMemoryForASearchRanOut) {
  if (Testing::kIsSanitized) {
    GTEST_SKIP() << "the sanitizer needs too much memory for a limit";
  }
  const Regex pattern("^(a|b)*$");
  const std::string text(1000000, 'a');
  const Testing::MemoryLimit limit;
  EXPECT_THROW(pattern.IsFoundIn(text), std::bad_alloc);
}

struct SearchCase {
  const char* name;
  const char* expression;
  const char* text;
  bool isFound;
};

const SearchCase kSearches[] = {
    {"EmptyExpression", "", "anything", true},
    {"EmptyText", "a", "", false},
    {"Anywhere", "b", "abc", true},
    {"CaseIsSignificant", "B", "abc", false},
    {"CaseMayBeIgnored", "(?i)B", "abc", true},
    {"Start", "^a", "abc", true},
    {"NotAtTheStart", "^b", "abc", false},
    {"End", "c$", "abc", true},
    {"Whole", "^abc$", "abc", true},
    {"Alternatives", "x|b", "abc", true},
    {"Repetition", "^(ab){2}$", "abab", true},
    {"Class", "[0-9]", "abc", false},
    {"Digit", "\\d", "a1", true},
    {"WordBoundary", "\\bb", "a b", true},
    {"LookAhead", "a(?=b)", "ab", true},
    {"BackReference", "(.)\\1", "abb", true},
    {"EscapedDot", "a\\.b", "axb", false},
    {"DotMatchesALineFeed", "a.b", "a\nb", true},
    {"DotMatchesAWholeCharacter", "^.$", "\u00e9", true},
    {"CaseOfOtherLettersMayBeIgnored", "(?i)\u00c9", "\u00e9", true},
    {"TextAroundInvalidBytes", "b$",
     "a\xff"
     "b",
     true},
    {"DotMatchesNoInvalidByte", "^a.b$",
     "a\xff"
     "b",
     false},
    {"BytesThatAreNotUtf8", "\xff", "a\xff", true},
};

class RegexSearchTest : public ::testing::TestWithParam<SearchCase> {};

TEST_P(RegexSearchTest, IsFoundOrNot) {
  EXPECT_EQ(Regex(GetParam().expression).IsFoundIn(GetParam().text), GetParam().isFound);
}

INSTANTIATE_TEST_SUITE_P(Searches, RegexSearchTest, ::testing::ValuesIn(kSearches),
                         [](const auto& test) { return test.param.name; });

TEST(RegexTest, RefusesEveryInvalidExpression) {
  for (const std::string expression : {"(", ")", "[", "*", "a{2,1}", "(?<", "\\", "[z-a]"}) {
    EXPECT_THAT([&] { Regex{expression}; },
                ThrowsMessage<KestrelException>(
                    StartsWith("'" + expression + "' is not a regular expression: ")));
  }
}

}  // namespace
}  // namespace Kestrel::Host
