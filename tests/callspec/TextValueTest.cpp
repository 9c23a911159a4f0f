// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "callspec/TextValue.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "support/Random.h"

namespace Kestrel::CallSpec {
namespace {

using std::string_literals::operator""s;

std::optional<std::int64_t> Read(const std::string& text) {
  std::int64_t number = 0;
  return ReadInteger(text, number) ? std::optional(number) : std::nullopt;
}

// Computes with `strtoll` what Read should return. The program runs in the C locale.
std::optional<std::int64_t> ReadByStrtoll(const std::string& text) {
  char* end = nullptr;
  const long long number = std::strtoll(text.c_str(), &end, 10);
  const bool isWhole = !text.empty() && end == text.data() + text.size();
  return isWhole ? std::optional<std::int64_t>(number) : std::nullopt;
}

struct IntegerCase {
  const char* name;
  std::string text;
  std::optional<std::int64_t> number;
};

class TextValueIntegerTest : public testing::TestWithParam<IntegerCase> {};

TEST_P(TextValueIntegerTest, IsReadOrRefusedAsByStrtoll) {
  EXPECT_EQ(Read(GetParam().text), GetParam().number);
  EXPECT_EQ(Read(GetParam().text), ReadByStrtoll(GetParam().text));
}

constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();

const IntegerCase kIntegerCases[] = {
    // No digits.
    {"Empty", "", std::nullopt},
    {"Space", " ", std::nullopt},
    {"AllWhiteSpace", " \t\n\v\f\r", std::nullopt},
    {"Plus", "+", std::nullopt},
    {"Minus", "-", std::nullopt},
    {"SpaceMinus", " -", std::nullopt},
    {"Nul", "\0"s, std::nullopt},
    {"Word", "abc", std::nullopt},
    // Digits.
    {"Zero", "0", 0},
    {"MinusZero", "-0", 0},
    {"LeadingZeros", "000", 0},
    {"OctalLooking", "010", 10},
    {"HexLooking", "0x10", std::nullopt},
    {"Negative", "-5", -5},
    {"PlusSigned", "+5", 5},
    {"MinusOne", "-1", -1},
    // Signs in the wrong place.
    {"TwoPluses", "++5", std::nullopt},
    {"TwoMinuses", "--5", std::nullopt},
    {"PlusMinus", "+-5", std::nullopt},
    {"MinusPlus", "-+5", std::nullopt},
    {"SignSpace", "- 5", std::nullopt},
    {"PlusSpace", "+ 5", std::nullopt},
    {"TrailingSign", "5-", std::nullopt},
    // White space.
    {"LeadingSpace", " 7", 7},
    {"LeadingWhiteSpaceOfAllKinds", " \t\n\v\f\r7", 7},
    {"LeadingSpaceAndSign", "  +7", 7},
    {"TrailingSpace", "7 ", std::nullopt},
    {"TrailingNewline", "7\n", std::nullopt},
    {"InnerSpace", "7 7", std::nullopt},
    {"NoBreakSpace",
     "\xa0"
     "7",
     std::nullopt},
    // Characters after the digits.
    {"TrailingLetter", "12abc", std::nullopt},
    {"Fraction", "1.5", std::nullopt},
    {"Exponent", "1e3", std::nullopt},
    {"Grouped", "1,000", std::nullopt},
    {"TrailingNul", "12\0"s, std::nullopt},
    {"NulAndDigits",
     "12\0"
     "34"s,
     std::nullopt},
    {"LeadingNul",
     "\0"
     "12"s,
     std::nullopt},
    {"ArabicDigits", "\u0661\u0662", std::nullopt},
    // The bounds.
    {"Maximum", "9223372036854775807", kMax},
    {"Minimum", "-9223372036854775808", kMin},
    {"OneAboveMaximum", "9223372036854775808", kMax},
    {"OneBelowMinimum", "-9223372036854775809", kMin},
    {"UnsignedMaximum", "18446744073709551615", kMax},
    {"FarAbove", "99999999999999999999999999", kMax},
    {"FarBelow", "-99999999999999999999999999", kMin},
    {"PlusFarAbove", " +99999999999999999999999999", kMax},
    {"FarAboveWithLeftOver", "99999999999999999999999999 ", std::nullopt},
    {"LongZeros", std::string(100000, '0') + "7", 7},
    {"LongDigits", std::string(100000, '9'), kMax},
    {"LongSpaces", std::string(100000, ' ') + "-7", -7},
};

INSTANTIATE_TEST_SUITE_P(Table, TextValueIntegerTest, testing::ValuesIn(kIntegerCases),
                         [](const auto& row) { return row.param.name; });

TEST(TextValueTest, FailureLeavesTheIntegerAlone) {
  std::int64_t number = 42;
  EXPECT_FALSE(ReadInteger("12abc", number));
  EXPECT_FALSE(ReadInteger("", number));
  EXPECT_EQ(number, 42);
}

TEST(TextValueTest, ReadingAnIntegerLeavesTheErrorNumberAlone) {
  std::int64_t number = 0;
  errno = 0;
  EXPECT_TRUE(ReadInteger("99999999999999999999999999", number));
  EXPECT_EQ(errno, 0);
}

TEST(TextValueTest, IntegersAgreeWithStrtollOnAllShortStrings) {
  const std::string alphabet = "09 +-a\n\0"s;
  std::vector<std::string> texts = {""};
  for (std::size_t first = 0, length = 0; length < 5; ++length) {
    const std::size_t end = texts.size();
    for (; first < end; ++first) {
      for (const char c : alphabet) {
        texts.push_back(texts[first] + c);
      }
    }
  }
  ASSERT_GT(texts.size(), 30000U);
  for (const std::string& text : texts) {
    ASSERT_EQ(Read(text), ReadByStrtoll(text)) << testing::PrintToString(text);
  }
}

TEST(TextValueTest, IntegersAgreeWithStrtollOnEveryByteAroundADigit) {
  for (int byte = 0; byte < 256; ++byte) {
    const std::string c(1, static_cast<char>(byte));
    for (const std::string& text : {c, c + "5", "5" + c, c + c + "5", "-" + c + "5"}) {
      ASSERT_EQ(Read(text), ReadByStrtoll(text)) << testing::PrintToString(text);
    }
  }
}

TEST(TextValueTest, IntegersAgreeWithStrtollOnRandomStrings) {
  Testing::Random random;
  SCOPED_TRACE(random.HowToRepeat());
  const std::string alphabet = "0123456789012345678901234567890123456789+- \tx\0"s;
  for (int rounds = Testing::Rounds(100000, 10000000); rounds > 0; --rounds) {
    const std::string text = random.Text(alphabet, 23);
    ASSERT_EQ(Read(text), ReadByStrtoll(text)) << testing::PrintToString(text);
  }
}

TEST(TextValueTest, PrintedRandomIntegersReadBack) {
  Testing::Random random;
  SCOPED_TRACE(random.HowToRepeat());
  for (int rounds = Testing::Rounds(100000, 10000000); rounds > 0; --rounds) {
    const std::size_t bits = random.Below(std::numeric_limits<std::size_t>::max());
    const auto number = static_cast<std::int64_t>(bits >> (1 + random.Below(63)));
    ASSERT_EQ(Read(std::to_string(number)), number);
    ASSERT_EQ(Read(std::to_string(-number)), -number);
  }
}

TEST(TextValueTest, ReadsTheBooleanWords) {
  for (const char* word : {"1", "yes", "y", "true", "True", "t", "T"}) {
    bool value = false;
    EXPECT_TRUE(ReadBoolean(word, value)) << word;
    EXPECT_TRUE(value) << word;
  }
  for (const char* word : {"0", "no", "n", "false", "False", "f", "F"}) {
    bool value = true;
    EXPECT_TRUE(ReadBoolean(word, value)) << word;
    EXPECT_FALSE(value) << word;
  }
}

TEST(TextValueTest, RefusesAnyOtherBooleanWordAndLeavesTheValueAlone) {
  const std::vector<std::string> words = {
      "",    " ",     "YES",   "TRUE",   "FALSE", "Yes", "No",   "NO",  "Y",
      "N",   "on",    "off",   "2",      "-1",    "01",  "00",   " 1",  "1 ",
      "tru", "truee", "true ", " false", "yes\n", "ja",  "1\0"s, "\0"s, "true\0"s};
  for (const std::string& word : words) {
    bool value = true;
    EXPECT_FALSE(ReadBoolean(word, value)) << testing::PrintToString(word);
    EXPECT_TRUE(value);
    value = false;
    EXPECT_FALSE(ReadBoolean(word, value)) << testing::PrintToString(word);
    EXPECT_FALSE(value);
  }
}

TEST(TextValueTest, ANullPointerIsTheEmptyString) {
  EXPECT_EQ(TextOrEmpty(nullptr), "");
  EXPECT_EQ(TextOrEmpty("text"), "text");
}

}  // namespace
}  // namespace Kestrel::CallSpec
