// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/lint/Language.h"

#include <gmock/gmock.h>

#include <optional>
#include <string>

#include "kestrel/callspec/Output.h"
#include "kestrel/callspec/ParameterConstraint.h"

namespace Kestrel::Lint {
namespace {

Language Parse(const std::string& expression) {
  const std::optional<Language> language = Language::Parse(expression);
  EXPECT_TRUE(language.has_value()) << expression;
  return language.value_or(Language());
}

std::optional<std::string> Common(const std::string& left, const std::string& right) {
  return Parse(left).FindCommon(Parse(right));
}

TEST(LanguageTest, FindsAShortestStringThatBothExpressionsMatch) {
  EXPECT_EQ(Common("[a-z]+", "b*c"), "c");
  EXPECT_EQ(Common("a{2,4}b?", "[ab]*b"), "aab");
  EXPECT_EQ(Common("(one|two|three)", ".*t.*"), "two");
  EXPECT_EQ(Common("[a-z]+", "[0-9]+"), std::nullopt);
  EXPECT_EQ(Common("\\d+\\.\\w", "[^5-9]*a"), "0.a");
  EXPECT_EQ(Common("(?:ab)*", ""), "");
  EXPECT_EQ(Common("^a$", "a"), "a");
}

TEST(LanguageTest, KnowsWhatMatchesNothingAndEverything) {
  EXPECT_TRUE(Parse("[^\\s\\S]").IsEmpty());
  EXPECT_TRUE(Parse("a[^\\d\\D]*[^\\w\\W]").IsEmpty());
  EXPECT_FALSE(Parse("a?").IsEmpty());
  EXPECT_TRUE(Parse(".*").IsEverything());
  EXPECT_TRUE(Parse("([^a]|a)*").IsEverything());
  EXPECT_FALSE(Parse(".+").IsEverything());
  EXPECT_FALSE(Parse("[^\\n]*").IsEverything());
}

TEST(LanguageTest, RecognizesLoopsThatMatchInTwoWays) {
  for (const char* expression : {"(a+)+", "(a*)*b", "(a|a)*", "(a|ab?)(b?a|c)*", "(\\w+\\s?)+",
                                 "([a-z]+[a-z0-9]*)*", "(a|b|ab)*c"}) {
    const bool isExpected = std::string(expression) != "(a|ab?)(b?a|c)*";
    EXPECT_EQ(Parse(expression).IsExponential(), isExpected) << expression;
  }
  for (const char* expression :
       {"[a-z]+", "([a-z]+-)*[a-z]+", "a*a*a*", "(a{1,3}b)*", "[A-Za-z0-9./]{1,16}", "(ab|ac)*"}) {
    EXPECT_FALSE(Parse(expression).IsExponential()) << expression;
  }
}

TEST(LanguageTest, ReportsExpressionsOnWhichTheLibraryGivesUp) {
  const auto constraint = CallSpec::ParameterConstraint::New(CallSpec::StringRegex);
  constraint->SetStringRegex("(a+)+");
  ASSERT_TRUE(constraint->Validate(std::string(10, 'a'), "x", CallSpec::Output::New()));
  // A value with a wrong last byte would be refused in any case. This value ends with the right
  // byte, so it is refused only if the library gives up.
  constraint->SetStringRegex("((a+)+x)?a*x?y|a+z");
  EXPECT_FALSE(constraint->Validate(std::string(60, 'a') + "z", "x", CallSpec::Output::New()));
  EXPECT_TRUE(Parse("((a+)+x)?a*x?y|a+z").IsExponential());
}

TEST(LanguageTest, DoesNotUnderstandUnsupportedOrInvalidSyntax) {
  for (const char* expression : {"(a)\\1", "(?=a)b", "a\\b", "(?i)a", "a^b", "a++", "[[.a.]]", "(a",
                                 "[a", "a{2", "\\Qa\\E"}) {
    EXPECT_FALSE(Language::Parse(expression).has_value()) << expression;
  }
}

// The automaton and the constraint accept the same values.
TEST(LanguageTest, AgreesWithTheConstraint) {
  const std::string expressions[] = {
      "[a-c]+",   "a|bc?|",      "(ab)*c{2}",      "[^a-b]",       "a.c",     "\\w+-\\d{1,2}",
      "[a\\]-]+", "[[:digit:]]", "a+?b*?",         "(?:a|b){0,2}", "[.*+?]+", "\\$|\\.|\\|",
      "[a-]",     "x{2,}",       "([ab]|c)(a|b)?", "[\\s\\d]*",    "[^\\w]"};
  const std::string values[] = {"",     "a",   "b",   "ab", "abc", "cc",   "abcc", "a-1", "ab-12",
                                "5",    "]",   "-",   "bb", "c",   "ca",   "xx",   "xxx", "$",
                                "a\nc", " 7 ", "+*?", "[",  "d",   "aaab", "|",    ".",   "ba"};
  for (const std::string& expression : expressions) {
    const auto constraint = CallSpec::ParameterConstraint::New(CallSpec::StringRegex);
    constraint->SetStringRegex(expression);
    const Language language = Parse(expression);
    for (const std::string& value : values) {
      EXPECT_EQ(language.FindCommon(*Language::Of({value})).has_value(),
                constraint->Validate(value, "name", CallSpec::Output::New()))
          << expression << " and '" << value << "'";
    }
  }
}

}  // namespace
}  // namespace Kestrel::Lint
