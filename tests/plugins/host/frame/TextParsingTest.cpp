// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/TextParsing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Optional;

constexpr long kMax = std::numeric_limits<long>::max();
constexpr long kMin = std::numeric_limits<long>::min();

TEST(TextParsingTest, APrefixMayBeTheWholeString) {
  EXPECT_TRUE(StartsWith("abc", "ab"));
  EXPECT_TRUE(StartsWith("abc", "abc"));
  EXPECT_TRUE(StartsWith("abc", ""));
  EXPECT_TRUE(StartsWith("", ""));
  EXPECT_FALSE(StartsWith("ab", "abc"));
  EXPECT_FALSE(StartsWith("xab", "ab"));
}

TEST(TextParsingTest, TrimsBothEnds) {
  EXPECT_EQ(Trim(" \ta b\r\n"), "a b");
  EXPECT_EQ(Trim(" \n"), "");
  EXPECT_EQ(Trim(""), "");
}

TEST(TextParsingTest, SplitsKeepingEmptyPieces) {
  EXPECT_THAT(Split("a,,b,", ','), ElementsAre("a", "", "b", ""));
  EXPECT_THAT(Split("", ','), ElementsAre(""));
}

TEST(TextParsingTest, SplitsWordsAndLines) {
  EXPECT_THAT(SplitWords("  a\tb \n c"), ElementsAre("a", "b", "c"));
  EXPECT_THAT(SplitWords(" \n"), IsEmpty());
  EXPECT_THAT(SplitLines("a\n\nb\n"), ElementsAre("a", "", "b"));
  EXPECT_THAT(SplitLines("a\nb"), ElementsAre("a", "b"));
  EXPECT_THAT(SplitLines(""), IsEmpty());
}

TEST(TextParsingTest, ReadsNumbersThatAreTheWholeString) {
  EXPECT_THAT(ParseNumber("0"), Optional(0L));
  EXPECT_THAT(ParseNumber(" 12\n"), Optional(12L));
  EXPECT_THAT(ParseNumber("-7"), Optional(-7L));
  EXPECT_THAT(ParseNumber("9223372036854775807"), Optional(9223372036854775807L));
  for (const char* const text : {"", " ", "-", "+1", "1x", "1 2", "0x1", "9223372036854775808"}) {
    EXPECT_EQ(ParseNumber(text), std::nullopt) << text;
  }
}

TEST(TextParsingTest, ReadsNumberLists) {
  EXPECT_THAT(ParseNumberList("0\n"), ElementsAre(0));
  EXPECT_THAT(ParseNumberList("0-2,5,8-9\n"), ElementsAre(0, 1, 2, 5, 8, 9));
  EXPECT_THAT(ParseNumberList("\n"), IsEmpty());
  EXPECT_THAT(ParseNumberList("x,3,4-,-,5-4,6"), ElementsAre(3, 6));
  EXPECT_THAT(ParseNumberList("0-9223372036854775807,1"), ElementsAre(1));
}

struct NumberListCase {
  const char* name;
  const char* text;
  std::vector<long> numbers;
};

// No kernel writes such lists. Their parsing must still end, and must not overflow.
const NumberListCase kHostileLists[] = {
    {"RangeThatEndsAtTheLargestNumber",
     "9223372036854775806-9223372036854775807,7",
     {kMax - 1, kMax, 7}},
    {"RangeOfTheLargestNumberAlone", "9223372036854775807-9223372036854775807", {kMax}},
    {"RangeOfTheSmallestNumberAlone", "-9223372036854775808--9223372036854775808", {kMin}},
    {"RangeOfAllNumbers", "-9223372036854775808-9223372036854775807,7", {7}},
    {"RangeFromTheSmallestToZero", "-9223372036854775808-0,7", {7}},
    {"RangeThatRunsBackwardsOverAllNumbers", "9223372036854775807--9223372036854775808,7", {7}},
    {"NumberBeyond64Bits", "9223372036854775808,7", {7}},
    {"RangeEndBeyond64Bits", "0-99999999999999999999999999,7", {7}},
    {"OneNumberTooMany", "1-65537,7", {7}},
    {"NegativeRange", "-3--1", {-3, -2, -1}},
    {"OnlySeparators", ",,,", {}},
};

class HostileNumberListTest : public ::testing::TestWithParam<NumberListCase> {};

TEST_P(HostileNumberListTest, KeepsWhatIsUsable) {
  EXPECT_EQ(ParseNumberList(GetParam().text), GetParam().numbers);
}

INSTANTIATE_TEST_SUITE_P(TextParsing, HostileNumberListTest, ::testing::ValuesIn(kHostileLists),
                         [](const auto& test) { return test.param.name; });

TEST(TextParsingTest, TheLongestRangeHas65536Numbers) {
  const std::vector<long> numbers = ParseNumberList("0-65535");
  ASSERT_EQ(numbers.size(), 65536u);
  EXPECT_EQ(numbers.back(), 65535);
}

TEST(TextParsingTest, SumsStayWithin64Bits) {
  EXPECT_EQ(ClampedSum(2, -5), -3);
  EXPECT_EQ(ClampedSum(kMax, 1), kMax);
  EXPECT_EQ(ClampedSum(kMax, kMax), kMax);
  EXPECT_EQ(ClampedSum(kMin, -1), kMin);
  EXPECT_EQ(ClampedSum(kMax, kMin), -1);
}

TEST(TextParsingTest, DifferencesStayWithin64Bits) {
  EXPECT_EQ(ClampedDifference(2, 5), -3);
  EXPECT_EQ(ClampedDifference(0, kMin), kMax);
  EXPECT_EQ(ClampedDifference(kMax, -1), kMax);
  EXPECT_EQ(ClampedDifference(kMin, 1), kMin);
  EXPECT_EQ(ClampedDifference(kMin, kMin), 0);
}

TEST(TextParsingTest, ProductsStayWithin64Bits) {
  EXPECT_EQ(ClampedProduct(-3, 4), -12);
  EXPECT_EQ(ClampedProduct(kMax, 4), kMax);
  EXPECT_EQ(ClampedProduct(kMin, 4), kMin);
  EXPECT_EQ(ClampedProduct(kMin, -1), kMax);
  EXPECT_EQ(ClampedProduct(kMax, -2), kMin);
  EXPECT_EQ(ClampedProduct(kMax, 0), 0);
}

TEST(TextParsingTest, LowerCaseChangesTheLettersOfAsciiOnly) {
  EXPECT_EQ(LowerCase("AbZ 09_@[`{"), "abz 09_@[`{");
  EXPECT_EQ(LowerCase("\xC3\x84\xFF"), "\xC3\x84\xFF");
  EXPECT_EQ(LowerCase(""), "");
}

}  // namespace
}  // namespace Kestrel::Host
