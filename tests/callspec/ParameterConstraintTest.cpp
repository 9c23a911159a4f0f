// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/callspec/ParameterConstraint.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <locale>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "kestrel/KestrelException.h"
#include "kestrel/callspec/Output.h"
#include "support/SampleConstraints.h"

namespace Kestrel::CallSpec {
namespace {

using std::string_literals::operator""s;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using Testing::Range;
using Testing::Regex;
using Testing::Strings;
using testing::ThrowsMessage;

constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();

constexpr const char* kBadRange =
    "Invalid values for SetIntRange, constraints must have a min value <= max value";

using Bounds = std::pair<std::int64_t, std::int64_t>;

Bounds BoundsOf(const ParameterConstraint& constraint) {
  std::int64_t min = 1;
  std::int64_t max = 1;
  constraint.GetIntRange(min, max);
  return {min, max};
}

std::shared_ptr<ParameterConstraint> Integers(const std::vector<std::int64_t>& values) {
  const auto constraint = ParameterConstraint::New(IntEnum);
  for (const std::int64_t value : values) {
    constraint->AddIntEnum(value);
  }
  return constraint;
}

// Returns the messages for one value of the parameter "count". Expects that there are messages if,
// and only if, the value is invalid.
std::vector<std::string> Refusal(const std::shared_ptr<ParameterConstraint>& constraint,
                                 const std::string& value) {
  const auto output = Output::New();
  const bool isAccepted = constraint->Validate(value, "count", output);
  EXPECT_EQ(isAccepted, !output->HasError()) << value;
  return output->GetErrors();
}

bool Accepts(const std::shared_ptr<ParameterConstraint>& constraint, const std::string& value) {
  return Refusal(constraint, value).empty();
}

TEST(ParameterConstraintTest, NumbersOfTheTypesAreFixed) {
  EXPECT_EQ(static_cast<int>(NoConstraint), 0);
  EXPECT_EQ(static_cast<int>(IntRange), 1);
  EXPECT_EQ(static_cast<int>(IntEnum), 2);
  EXPECT_EQ(static_cast<int>(StringEnum), 3);
  EXPECT_EQ(static_cast<int>(StringRegex), 4);
  EXPECT_EQ(sizeof(ParameterConstraintType), 4U);
}

TEST(ParameterConstraintTest, IsEmptyAtFirst) {
  for (const auto type : {NoConstraint, IntRange, IntEnum, StringEnum, StringRegex}) {
    const auto constraint = ParameterConstraint::New(type);
    EXPECT_EQ(constraint->GetType(), type);
    EXPECT_EQ(BoundsOf(*constraint), Bounds(0, 0));
    EXPECT_THAT(constraint->GetIntEnum(), IsEmpty());
    EXPECT_THAT(constraint->GetStringEnum(), IsEmpty());
    EXPECT_THAT(constraint->GetStringEnumWithDesc(), IsEmpty());
    EXPECT_EQ(constraint->GetStringRegex(), "");
  }
}

TEST(ParameterConstraintTest, IsAPlainClassThatCannotBeCopied) {
  EXPECT_FALSE(std::is_polymorphic<ParameterConstraint>::value);
  EXPECT_FALSE((std::is_constructible<ParameterConstraint, ParameterConstraintType>::value));
  EXPECT_FALSE(std::is_copy_constructible<ParameterConstraint>::value);
  EXPECT_FALSE(std::is_copy_assignable<ParameterConstraint>::value);
}

TEST(ParameterConstraintTest, EqualBoundsAcceptExactlyOneValue) {
  const auto constraint = Range(5, 5);
  EXPECT_TRUE(Accepts(constraint, "5"));
  EXPECT_FALSE(Accepts(constraint, "4"));
  EXPECT_FALSE(Accepts(constraint, "6"));
}

TEST(ParameterConstraintTest, AReversedRangeThrowsAndKeepsTheBounds) {
  const auto constraint = Range(1, 10);
  EXPECT_THAT([&] { constraint->SetIntRange(6, 5); }, ThrowsMessage<KestrelException>(kBadRange));
  EXPECT_THAT([&] { constraint->SetIntRange(kMax, kMin); },
              ThrowsMessage<KestrelException>(kBadRange));
  EXPECT_EQ(BoundsOf(*constraint), Bounds(1, 10));
}

TEST(ParameterConstraintTest, ALaterRangeReplacesTheEarlierOne) {
  const auto constraint = Range(1, 10);
  constraint->SetIntRange(-3, -2);
  EXPECT_EQ(BoundsOf(*constraint), Bounds(-3, -2));
}

TEST(ParameterConstraintTest, ARangeIncludesBothBounds) {
  const auto constraint = Range(-5, 10);
  EXPECT_TRUE(Accepts(constraint, "-5"));
  EXPECT_TRUE(Accepts(constraint, "0"));
  EXPECT_TRUE(Accepts(constraint, "10"));
  EXPECT_FALSE(Accepts(constraint, "-6"));
  EXPECT_FALSE(Accepts(constraint, "11"));
}

TEST(ParameterConstraintTest, AnUnsetRangeAcceptsZeroOnly) {
  const auto constraint = ParameterConstraint::New(IntRange);
  EXPECT_TRUE(Accepts(constraint, "0"));
  EXPECT_FALSE(Accepts(constraint, "1"));
}

TEST(ParameterConstraintTest, ANumberBeyondTheBoundsOfTheTypeCountsAsTheNearestBound) {
  EXPECT_TRUE(Accepts(Range(0, kMax), "99999999999999999999"));
  EXPECT_TRUE(Accepts(Range(kMin, 0), "-99999999999999999999"));
  EXPECT_FALSE(Accepts(Range(0, kMax - 1), "99999999999999999999"));
  EXPECT_TRUE(Accepts(Integers({kMax}), "9223372036854775808"));
}

TEST(ParameterConstraintTest, AValueOutOfRangeIsNotNamed) {
  EXPECT_THAT(Refusal(Range(1, 10), "11"),
              ElementsAre("Invalid data constraint for parameter 'count'. Expected integer in the "
                          "range 1-10"));
}

TEST(ParameterConstraintTest, AValueThatIsNotAnIntegerCausesOnlyTheTypeMessage) {
  const char* const message = "Invalid data type for parameter 'count'. Expected an Integer";
  for (const std::string& value : {"abc"s, ""s, " "s, "7 "s, "11x"s, "7\0"s, "1.5"s}) {
    EXPECT_THAT(Refusal(Range(1, 10), value), ElementsAre(message));
    EXPECT_THAT(Refusal(Integers({7}), value), ElementsAre(message));
  }
}

TEST(ParameterConstraintTest, AcceptsLeadingSpacesAndAPlusButNoTrailingSpaces) {
  EXPECT_TRUE(Accepts(Range(7, 7), " 7"));
  EXPECT_TRUE(Accepts(Range(7, 7), "+7"));
  EXPECT_TRUE(Accepts(Integers({7}), "\t007"));
  EXPECT_FALSE(Accepts(Range(7, 7), "7 "));
}

TEST(ParameterConstraintTest, KeepsAllowedIntegersInTheOrderAdded) {
  const auto constraint = Integers({3, -1, kMax, 2, kMin});
  EXPECT_THAT(constraint->GetIntEnum(), ElementsAre(3, -1, kMax, 2, kMin));
}

TEST(ParameterConstraintTest, ADuplicateIntegerIsRefusedWithoutBeingNamed) {
  const auto constraint = Integers({1, 2});
  EXPECT_THAT(
      [&] { constraint->AddIntEnum(1); },
      ThrowsMessage<KestrelException>("Duplicate Value found in ParameterConstraint::AddIntEnum"));
  EXPECT_THAT(constraint->GetIntEnum(), ElementsAre(1, 2));
}

TEST(ParameterConstraintTest, AnIntegerOutsideTheSetIsNotNamed) {
  EXPECT_TRUE(Accepts(Integers({1, 2, 30}), "30"));
  EXPECT_THAT(Refusal(Integers({1, 2, 30}), "3"),
              ElementsAre("Invalid data constraint for parameter 'count'. Expected a single value "
                          "from the set [1, 2, 30]"));
}

TEST(ParameterConstraintTest, AnEmptySetOfIntegersRefusesEveryInteger) {
  EXPECT_THAT(Refusal(Integers({}), "0"),
              ElementsAre("Invalid data constraint for parameter 'count'. Expected a single value "
                          "from the set []"));
}

TEST(ParameterConstraintTest, ADuplicateStringIsRefusedAndNamed) {
  const auto constraint = ParameterConstraint::New(StringEnum);
  constraint->AddStringEnum("on");
  EXPECT_THAT([&] { constraint->AddStringEnum("on", "switches it on"); },
              ThrowsMessage<KestrelException>(
                  "Duplicate Value found in ParameterConstraint::AddStringEnum: on"));
  EXPECT_THAT(constraint->GetStringEnum(), ElementsAre("on"));
  EXPECT_THAT(constraint->GetStringEnumWithDesc(), IsEmpty());
}

TEST(ParameterConstraintTest, ADuplicateKeepsTheDescriptionOfTheFirst) {
  const auto constraint = ParameterConstraint::New(StringEnum);
  constraint->AddStringEnum("on", "first");
  EXPECT_THROW(constraint->AddStringEnum("on"s, "second"s), KestrelException);
  EXPECT_THAT(constraint->GetStringEnumWithDesc(), ElementsAre(Pair("on", "first")));
}

TEST(ParameterConstraintTest, ADuplicateOfTheEmptyStringThrows) {
  const auto constraint = Strings({""});
  EXPECT_THAT([&] { constraint->AddStringEnum(""); },
              ThrowsMessage<KestrelException>(
                  "Duplicate Value found in ParameterConstraint::AddStringEnum: "));
}

TEST(ParameterConstraintTest, StringsAreComparedByteByByte) {
  const auto constraint = Strings({"on", "On", "on ", "on\0"s});
  EXPECT_THAT(constraint->GetStringEnum(), ElementsAre("on", "On", "on ", "on\0"s));
  EXPECT_FALSE(Accepts(constraint, "ON"));
  EXPECT_TRUE(Accepts(constraint, "on\0"s));
  EXPECT_FALSE(Accepts(constraint, "on\0\0"s));
}

TEST(ParameterConstraintTest, ToStringKeepsTheOrderAddedAndDescriptionsAreSorted) {
  const auto constraint = ParameterConstraint::New(StringEnum);
  constraint->AddStringEnum("b", "second letter");
  constraint->AddStringEnum("a", "first letter");
  EXPECT_EQ(constraint->ToString(), "[b, a]");
  EXPECT_THAT(constraint->GetStringEnumWithDesc(),
              ElementsAre(Pair("a", "first letter"), Pair("b", "second letter")));
}

TEST(ParameterConstraintTest, OnlyDescribedStringsHaveAnEntryInTheMap) {
  const auto constraint = ParameterConstraint::New(StringEnum);
  constraint->AddStringEnum("plain"s);
  constraint->AddStringEnum("described"s, "with words"s);
  constraint->AddStringEnum("empty"s, ""s);
  constraint->AddStringEnum("literal");
  constraint->AddStringEnum("literal-empty", "");
  EXPECT_THAT(constraint->GetStringEnum(),
              ElementsAre("plain", "described", "empty", "literal", "literal-empty"));
  EXPECT_THAT(constraint->GetStringEnumWithDesc(), ElementsAre(Pair("described", "with words")));
}

TEST(ParameterConstraintTest, NullCountsAsTheEmptyString) {
  const auto constraint = ParameterConstraint::New(StringEnum);
  const char* const null = nullptr;
  constraint->AddStringEnum(null, null);
  EXPECT_THAT(constraint->GetStringEnum(), ElementsAre(""));
  EXPECT_THAT(constraint->GetStringEnumWithDesc(), IsEmpty());
  EXPECT_THROW(constraint->AddStringEnum(null), KestrelException);
}

TEST(ParameterConstraintTest, AStringOutsideTheSetIsNamed) {
  EXPECT_TRUE(Accepts(Strings({"on", "off"}), "off"));
  EXPECT_THAT(Refusal(Strings({"on", "off"}), "maybe"),
              ElementsAre("Invalid data constraint for parameter 'count'. Expected a single value "
                          "from the set [on, off] got 'maybe'"));
  EXPECT_THAT(Refusal(Strings({}), ""),
              ElementsAre("Invalid data constraint for parameter 'count'. Expected a single value "
                          "from the set [] got ''"));
}

TEST(ParameterConstraintTest, ValidateTakesTheValueBeforeTheName) {
  const auto output = Output::New();
  EXPECT_FALSE(Strings({"on"})->Validate("the-value", "the-name", output));
  EXPECT_THAT(output->GetErrors(),
              ElementsAre("Invalid data constraint for parameter 'the-name'. Expected a single "
                          "value from the set [on] got 'the-value'"));
}

TEST(ParameterConstraintTest, ARegularExpressionMatchesTheWholeValue) {
  const auto constraint = Regex("abc");
  EXPECT_TRUE(Accepts(constraint, "abc"));
  EXPECT_FALSE(Accepts(constraint, "xabc"));
  EXPECT_FALSE(Accepts(constraint, "abcx"));
  EXPECT_FALSE(Accepts(Regex("[a-z]+"), "abc1"));
  EXPECT_TRUE(Accepts(Regex("a|ab"), "ab"));
  EXPECT_FALSE(Accepts(Regex("abc$"), "abc\n"));
}

TEST(ParameterConstraintTest, AnEmptyExpressionAcceptsTheEmptyValueOnly) {
  EXPECT_TRUE(Accepts(Regex(""), ""));
  EXPECT_FALSE(Accepts(Regex(""), "a"));
  EXPECT_TRUE(Accepts(ParameterConstraint::New(StringRegex), ""));
  EXPECT_FALSE(Accepts(ParameterConstraint::New(StringRegex), "a"));
}

TEST(ParameterConstraintTest, ADotMatchesEveryByte) {
  EXPECT_TRUE(Accepts(Regex("a.b"), "a\nb"));
  EXPECT_TRUE(Accepts(Regex("a.b"), "a\0b"s));
  EXPECT_TRUE(Accepts(Regex("a.b"),
                      "a\xff"
                      "b"));
  EXPECT_FALSE(Accepts(Regex("a.b"), "ab"));
}

TEST(ParameterConstraintTest, ExpressionsHaveThePerlSyntax) {
  EXPECT_TRUE(Accepts(Regex("\\d{2,3}(?=x)x"), "123x"));
  EXPECT_TRUE(Accepts(Regex("(?i)abc"), "ABC"));
  EXPECT_TRUE(Accepts(Regex("(a+?)\\1"), "aaaa"));
}

TEST(ParameterConstraintTest, TheMessageForAValueThatDoesNotMatchContainsTheExpression) {
  EXPECT_THAT(Refusal(Regex("[a-z]+(x)"), "1"),
              ElementsAre("Invalid data constraint for parameter 'count'. Value does not match the "
                          "expected regular expression ([a-z]+(x))"));
}

TEST(ParameterConstraintTest, ABadExpressionThrowsTheErrorOfTheRegexLibraryAtEachValidation) {
  const auto constraint = Regex("[a");
  const auto output = Output::New();
  for (int round = 0; round < 2; ++round) {
    try {
      constraint->Validate("a", "count", output);
      FAIL() << "nothing was thrown";
    } catch (const KestrelException&) {
      FAIL() << "the error must be the library's own";
    } catch (const std::runtime_error& error) {
      EXPECT_THAT(error.what(), testing::HasSubstr("[a"));
    }
  }
  EXPECT_FALSE(output->HasError());
}

TEST(ParameterConstraintTest, ALaterExpressionReplacesTheEarlierOne) {
  const auto constraint = Regex("a");
  EXPECT_TRUE(Accepts(constraint, "a"));
  constraint->SetStringRegex("b");
  EXPECT_EQ(constraint->GetStringRegex(), "b");
  EXPECT_TRUE(Accepts(constraint, "b"));
  EXPECT_FALSE(Accepts(constraint, "a"));
  constraint->SetStringRegex("[");
  EXPECT_THROW(Accepts(constraint, "b"), std::runtime_error);
  constraint->SetStringRegex("c");
  EXPECT_TRUE(Accepts(constraint, "c"));
}

TEST(ParameterConstraintTest, AMatchThatIsTooCostlyCountsAsNoMatch) {
  const std::string expression = "([a-z]+)+x";
  EXPECT_THAT(Refusal(Regex(expression), std::string(40, 'a')),
              ElementsAre("Invalid data constraint for parameter 'count'. Value does not match the "
                          "expected regular expression (([a-z]+)+x)"));
}

TEST(ParameterConstraintTest, AMatchThatNeedsTooMuchMemoryCountsAsNoMatch) {
  EXPECT_TRUE(Accepts(Regex("(a|b)*"), std::string(100, 'a')));
  EXPECT_THAT(Refusal(Regex("(a|b)*"), std::string(1000000, 'a')),
              ElementsAre("Invalid data constraint for parameter 'count'. Value does not match the "
                          "expected regular expression ((a|b)*)"));
}

// Classifies characters as the classic locale does, but one more byte is a letter.
class LetterLocale : public std::ctype<char> {
 public:
  LetterLocale() : std::ctype<char>(Table()) {}

 private:
  static const mask* Table() {
    static const std::vector<mask> table = [] {
      std::vector<mask> masks(classic_table(), classic_table() + table_size);
      masks[static_cast<unsigned char>('\xe4')] = alpha | lower | print;
      return masks;
    }();
    return table.data();
  }
};

TEST(ParameterConstraintTest, LettersOfAnExpressionDoNotDependOnTheLocale) {
  const std::locale before =
      std::locale::global(std::locale(std::locale::classic(), new LetterLocale));
  const bool isLetter = std::isalpha('\xe4', std::locale());
  const bool isAccepted = Accepts(Regex("[[:alpha:]]+"), "\xe4");
  std::locale::global(before);
  EXPECT_TRUE(isLetter);
  EXPECT_FALSE(isAccepted);
}

TEST(ParameterConstraintTest, NoConstraintAcceptsEverything) {
  const auto constraint = ParameterConstraint::New(NoConstraint);
  for (const std::string& value : {""s, "abc"s, "-1"s, "\0\xff"s}) {
    EXPECT_TRUE(Accepts(constraint, value));
  }
}

TEST(ParameterConstraintTest, AnUnknownTypeRefusesWithoutAMessage) {
  const auto constraint = ParameterConstraint::New(static_cast<ParameterConstraintType>(5));
  const auto output = Output::New();
  EXPECT_FALSE(constraint->Validate("", "count", output));
  EXPECT_FALSE(output->HasError());
  EXPECT_EQ(constraint->ToString(), "unknown");
  EXPECT_EQ(ParameterConstraint::New(static_cast<ParameterConstraintType>(-1))->ToString(),
            "unknown");
}

TEST(ParameterConstraintTest, ToStringDescribesEachKindOfConstraint) {
  EXPECT_EQ(ParameterConstraint::New(NoConstraint)->ToString(), "no constraint");
  EXPECT_EQ(Range(1, 10)->ToString(), "integer in the range 1-10");
  EXPECT_EQ(Range(-5, 10)->ToString(), "integer in the range -5-10");
  EXPECT_EQ(Range(-10, -5)->ToString(), "integer in the range -10--5");
  EXPECT_EQ(Range(kMin, kMax)->ToString(),
            "integer in the range -9223372036854775808-9223372036854775807");
  EXPECT_EQ(Integers({})->ToString(), "[]");
  EXPECT_EQ(Integers({5})->ToString(), "[5]");
  EXPECT_EQ(Integers({3, -1, 2})->ToString(), "[3, -1, 2]");
  EXPECT_EQ(Strings({})->ToString(), "[]");
  EXPECT_EQ(Strings({""})->ToString(), "[]");
  EXPECT_EQ(Strings({"", ""s + "x"})->ToString(), "[, x]");
  EXPECT_EQ(Strings({"b", "a b", "c'"})->ToString(), "[b, a b, c']");
  EXPECT_EQ(Regex("[a-z]+")->ToString(), "a string matching the regular expression [a-z]+");
  EXPECT_EQ(Regex("")->ToString(), "a string matching the regular expression ");
  EXPECT_EQ(Regex("[")->ToString(), "a string matching the regular expression [");
}

// Sets the data of all types in a constraint of any type.
std::shared_ptr<ParameterConstraint> WithAllData(ParameterConstraintType type) {
  const auto constraint = ParameterConstraint::New(type);
  constraint->SetIntRange(1, 2);
  constraint->AddIntEnum(7);
  constraint->AddStringEnum("word", "described");
  constraint->SetStringRegex("x+");
  return constraint;
}

TEST(ParameterConstraintTest, StoresTheDataOfEveryTypeWhateverItsOwnTypeIs) {
  for (const auto type : {NoConstraint, IntRange, IntEnum, StringEnum, StringRegex}) {
    const auto constraint = WithAllData(type);
    EXPECT_EQ(BoundsOf(*constraint), Bounds(1, 2));
    EXPECT_THAT(constraint->GetIntEnum(), ElementsAre(7));
    EXPECT_THAT(constraint->GetStringEnum(), ElementsAre("word"));
    EXPECT_THAT(constraint->GetStringEnumWithDesc(), ElementsAre(Pair("word", "described")));
    EXPECT_EQ(constraint->GetStringRegex(), "x+");
  }
}

TEST(ParameterConstraintTest, OnlyTheDataOfTheTypeMatters) {
  const auto accepted = [](ParameterConstraintType type) {
    std::vector<std::string> values;
    for (const char* value : {"1", "7", "word", "xx", "other"}) {
      if (Accepts(WithAllData(type), value)) {
        values.emplace_back(value);
      }
    }
    return values;
  };
  EXPECT_THAT(accepted(NoConstraint), ElementsAre("1", "7", "word", "xx", "other"));
  EXPECT_THAT(accepted(IntRange), ElementsAre("1"));
  EXPECT_THAT(accepted(IntEnum), ElementsAre("7"));
  EXPECT_THAT(accepted(StringEnum), ElementsAre("word"));
  EXPECT_THAT(accepted(StringRegex), ElementsAre("xx"));
  EXPECT_EQ(WithAllData(IntRange)->ToString(), "integer in the range 1-2");
  EXPECT_EQ(WithAllData(IntEnum)->ToString(), "[7]");
  EXPECT_EQ(WithAllData(StringEnum)->ToString(), "[word]");
  EXPECT_EQ(WithAllData(StringRegex)->ToString(), "a string matching the regular expression x+");
}

TEST(ParameterConstraintTest, MessagesAreAppended) {
  const auto output = Output::New();
  output->AddErrorMessage("earlier");
  EXPECT_FALSE(Range(1, 2)->Validate("3", "first", output));
  EXPECT_FALSE(Range(1, 2)->Validate("x", "second", output));
  EXPECT_THAT(
      output->GetErrors(),
      ElementsAre("earlier",
                  "Invalid data constraint for parameter 'first'. Expected integer in the range "
                  "1-2",
                  "Invalid data type for parameter 'second'. Expected an Integer"));
}

TEST(ParameterConstraintTest, AMessageWithoutAnOutputThrows) {
  EXPECT_TRUE(Range(1, 2)->Validate("1", "count", nullptr));
  EXPECT_THAT([] { Range(1, 2)->Validate("3", "count", nullptr); },
              ThrowsMessage<KestrelException>("Null output passed to Validate"));
}

TEST(ParameterConstraintTest, LongSetsBehaveLikeShortOnes) {
  const auto integers = ParameterConstraint::New(IntEnum);
  const auto strings = ParameterConstraint::New(StringEnum);
  for (int i = 0; i < 100; ++i) {
    integers->AddIntEnum(3 * i);
    strings->AddStringEnum("s" + std::to_string(3 * i));
    EXPECT_EQ(integers->GetIntEnum().size(), static_cast<std::size_t>(i) + 1);
    EXPECT_EQ(strings->GetStringEnum().back(), "s" + std::to_string(3 * i));
    for (int j = 0; j <= i; ++j) {
      ASSERT_THROW(integers->AddIntEnum(3 * j), KestrelException) << i << " " << j;
      ASSERT_THROW(strings->AddStringEnum("s" + std::to_string(3 * j)), KestrelException);
      ASSERT_TRUE(Accepts(integers, std::to_string(3 * j)));
      ASSERT_TRUE(Accepts(strings, "s" + std::to_string(3 * j)));
      ASSERT_FALSE(Accepts(integers, std::to_string(3 * j + 1)));
      ASSERT_FALSE(Accepts(strings, "s" + std::to_string(3 * j + 1)));
    }
  }
}

TEST(ParameterConstraintTest, HoldsAHundredThousandValues) {
  constexpr int kCount = 100000;
  const auto integers = ParameterConstraint::New(IntEnum);
  const auto strings = ParameterConstraint::New(StringEnum);
  for (int i = 0; i < kCount; ++i) {
    integers->AddIntEnum(i);
    strings->AddStringEnum("value-" + std::to_string(i));
  }
  for (int i = 0; i < kCount; ++i) {
    ASSERT_TRUE(integers->Validate(std::to_string(i), "count", nullptr));
    ASSERT_TRUE(strings->Validate("value-" + std::to_string(i), "count", nullptr));
  }
  EXPECT_THROW(integers->AddIntEnum(kCount - 1), KestrelException);
  EXPECT_THROW(strings->AddStringEnum("value-0"), KestrelException);
  EXPECT_EQ(integers->GetIntEnum().size(), std::size_t{kCount});
  EXPECT_EQ(strings->GetStringEnum().size(), std::size_t{kCount});
}

TEST(ParameterConstraintTest, HoldsLongValues) {
  const std::string value(100000, 'v');
  EXPECT_TRUE(Accepts(Strings({value}), value));
  EXPECT_THAT(Refusal(Strings({"a"}), value),
              ElementsAre("Invalid data constraint for parameter 'count'. Expected a single value "
                          "from the set [a] got '" +
                          value + "'"));
  EXPECT_TRUE(Accepts(Regex("v+"), value));
  EXPECT_FALSE(Accepts(Regex("v+"), value + "w"));
}

}  // namespace
}  // namespace Kestrel::CallSpec
