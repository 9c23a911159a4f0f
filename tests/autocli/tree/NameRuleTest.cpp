// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/tree/NameRule.h"

#include <gtest/gtest.h>

#include <boost/regex.hpp>
#include <cstddef>
#include <string>
#include <vector>

#include "kestrel/autocli/Util.h"

namespace Kestrel::AutoCli {
namespace {

const boost::regex& RuleExpression() {
  static const boost::regex expression("([a-z0-9]+[A-Z0-9]{0,1})+");
  return expression;
}

// Compares the rule with the expression for all strings of `length` characters of `alphabet`.
void ExpectEqualOnAllTexts(const std::string& alphabet, std::size_t length) {
  std::vector<std::size_t> digits(length, 0);
  std::string text(length, alphabet[0]);
  for (;;) {
    ASSERT_EQ(MatchesNameRule(text), boost::regex_match(text, RuleExpression())) << text;
    std::size_t place = 0;
    while (place < length && ++digits[place] == alphabet.size()) {
      digits[place] = 0;
      text[place] = alphabet[0];
      ++place;
    }
    if (place == length) {
      return;
    }
    text[place] = alphabet[digits[place]];
  }
}

TEST(NameRuleTest, EqualsTheExpressionOnAllShortStringsOfSampleCharacters) {
  for (std::size_t length = 0; length <= 8; ++length) {
    ExpectEqualOnAllTexts("a1B-Z", length);
  }
}

TEST(NameRuleTest, EqualsTheExpressionOnAllStringsOfUpToTwoBytes) {
  std::string everyByte;
  for (int byte = 0; byte < 256; ++byte) {
    everyByte += static_cast<char>(byte);
  }
  for (std::size_t length = 0; length <= 2; ++length) {
    ExpectEqualOnAllTexts(everyByte, length);
  }
}

TEST(NameRuleTest, ChecksLongNamesOnWhichBacktrackingFails) {
  const std::string lower(27000, 'a');
  std::string mixed;
  for (int i = 0; i < 13500; ++i) {
    mixed += "aB";
  }
  EXPECT_TRUE(MatchesNameRule(lower));
  EXPECT_TRUE(MatchesNameRule(mixed));
  EXPECT_FALSE(MatchesNameRule(lower + "_"));
  EXPECT_FALSE(MatchesNameRule(mixed + "B"));
  EXPECT_FALSE(MatchesNameRule("mystoragedevice_list"));
}

TEST(NameRuleTest, IsUsedByThePublicFunction) {
  EXPECT_TRUE(AutoCli_IsValidName("fooBar"));
  EXPECT_FALSE(AutoCli_IsValidName("FooBar"));
}

}  // namespace
}  // namespace Kestrel::AutoCli
