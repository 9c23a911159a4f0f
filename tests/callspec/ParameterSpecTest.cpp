// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/callspec/ParameterSpec.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "kestrel/KestrelException.h"
#include "kestrel/callspec/Output.h"
#include "kestrel/callspec/ParameterConstraint.h"
#include "support/SampleConstraints.h"

namespace Kestrel::CallSpec {
namespace {

using std::string_literals::operator""s;
using testing::ElementsAre;
using testing::IsEmpty;
using Testing::Range;
using Testing::Regex;
using Testing::Strings;
using testing::ThrowsMessage;

const std::vector<ParameterType> kAllTypes = {String,     Int,     Bool,    Flag,
                                              StringList, IntList, BoolList};

std::string NameMessage(const std::string& name) {
  return "Invalid Parameter name '" + name +
         "' parameter names can only contain lower-case alphanumeric characters, numbers and '-'";
}

std::string BoolMessage(const std::string& value) {
  return "Invalid data '" + value +
         "' for parameter given expected one of [1, 0, y, n, true, false, True, False, yes, no, t, "
         "f, T, F]";
}

constexpr const char* kManyValues =
    "Found multiple values for given this parameter can only accept a single value.";

std::shared_ptr<ParameterSpec> Spec(ParameterType type) {
  return ParameterSpec::New("given", type);
}

struct Verdict {
  bool isValid;
  std::vector<std::string> errors;
};

Verdict Validate(const std::shared_ptr<ParameterSpec>& spec,
                 const std::vector<std::string>& values) {
  const auto output = Output::New();
  const bool isValid = spec->Validate(values, output);
  return {isValid, output->GetErrors()};
}

void ExpectValid(const std::shared_ptr<ParameterSpec>& spec,
                 const std::vector<std::string>& values) {
  const Verdict verdict = Validate(spec, values);
  EXPECT_TRUE(verdict.isValid) << testing::PrintToString(values);
  EXPECT_THAT(verdict.errors, IsEmpty());
}

template <typename... Messages>
void ExpectInvalid(const std::shared_ptr<ParameterSpec>& spec,
                   const std::vector<std::string>& values, const Messages&... messages) {
  const Verdict verdict = Validate(spec, values);
  EXPECT_FALSE(verdict.isValid) << testing::PrintToString(values);
  EXPECT_THAT(verdict.errors, ElementsAre(messages...));
}

TEST(ParameterSpecTest, NumbersOfTheTypesAreFixed) {
  for (std::size_t i = 0; i < kAllTypes.size(); ++i) {
    EXPECT_EQ(static_cast<std::size_t>(kAllTypes[i]), i);
  }
  EXPECT_EQ(sizeof(ParameterType), 4U);
}

TEST(ParameterSpecTest, IsRequiredAndHasOnlyNameAndTypeAtFirst) {
  for (const ParameterType type : kAllTypes) {
    const auto spec = ParameterSpec::New("some-name", type);
    EXPECT_EQ(spec->GetName(), "some-name");
    EXPECT_EQ(spec->GetParameterType(), type);
    EXPECT_EQ(spec->GetType(), type);
    EXPECT_EQ(spec->GetShortName(), "");
    EXPECT_EQ(spec->GetDescription(false), "");
    EXPECT_EQ(spec->GetDescription(true), "");
    EXPECT_EQ(spec->GetConstraint(), nullptr);
    EXPECT_TRUE(spec->IsRequired());
    EXPECT_FALSE(spec->IsSecret());
  }
}

TEST(ParameterSpecTest, IsAPlainClassThatCannotBeCopied) {
  EXPECT_FALSE(std::is_polymorphic<ParameterSpec>::value);
  EXPECT_FALSE((std::is_constructible<ParameterSpec, const char*, ParameterType>::value));
  EXPECT_FALSE(std::is_copy_constructible<ParameterSpec>::value);
  EXPECT_FALSE(std::is_copy_assignable<ParameterSpec>::value);
}

TEST(ParameterSpecTest, IsMadeFromEveryFormOfTheName) {
  const std::string copied("copied");
  std::string moved("moved-name-that-is-too-long-for-a-small-string");
  EXPECT_EQ(ParameterSpec::New(copied, Int)->GetName(), "copied");
  EXPECT_EQ(copied, "copied");
  EXPECT_EQ(ParameterSpec::New(std::move(moved), Int)->GetName(),
            "moved-name-that-is-too-long-for-a-small-string");
  EXPECT_EQ(ParameterSpec::New("literal", Int)->GetName(), "literal");
}

TEST(ParameterSpecTest, AcceptsANameOfOneCharacter) {
  EXPECT_EQ(ParameterSpec::New("a", String)->GetName(), "a");
  EXPECT_EQ(ParameterSpec::New("-", String)->GetName(), "-");
  EXPECT_EQ(ParameterSpec::New("7", String)->GetName(), "7");
}

TEST(ParameterSpecTest, AcceptsLongNames) {
  EXPECT_EQ(ParameterSpec::New(std::string(100000, 'a'), String)->GetName().size(), 100000U);
  EXPECT_THROW(ParameterSpec::New(std::string(100000, 'a') + "_", String), KestrelException);
}

TEST(ParameterSpecTest, RefusesNamesWithOtherCharacters) {
  for (const std::string& name : {"Name"s, "my_name"s, ""s, " "s, "na me"s, "name\n"s, "name "s,
                                  "name\0"s, "\0"s, "n\xe4me"s, "name="s, "na.me"s, "nAme"s}) {
    EXPECT_THAT([&] { ParameterSpec::New(name, String); },
                ThrowsMessage<KestrelException>(NameMessage(name).c_str()));
    EXPECT_THAT([&] { ParameterSpec::New(std::string(name), String); },
                ThrowsMessage<KestrelException>(NameMessage(name).c_str()));
  }
  EXPECT_THAT([] { ParameterSpec::New("Name", String); },
              ThrowsMessage<KestrelException>(NameMessage("Name")));
}

TEST(ParameterSpecTest, ANullNameIsTheEmptyName) {
  const char* const null = nullptr;
  EXPECT_THAT([&] { ParameterSpec::New(null, String); },
              ThrowsMessage<KestrelException>(NameMessage("")));
}

TEST(ParameterSpecTest, AcceptsEveryShortNameOfOneLetterOrDigit) {
  const auto spec = Spec(String);
  for (int byte = 0; byte < 256; ++byte) {
    const char c = static_cast<char>(byte);
    const bool isLetterOrDigit =
        (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    if (isLetterOrDigit) {
      spec->SetShortName(std::string(1, c));
      EXPECT_EQ(spec->GetShortName(), std::string(1, c));
    } else {
      EXPECT_THROW(spec->SetShortName(std::string(1, c)), KestrelException) << byte;
    }
  }
}

TEST(ParameterSpecTest, ABadShortNameThrowsAndKeepsTheOldOne) {
  const auto spec = Spec(String);
  spec->SetShortName("Z");
  const char* const message =
      "Invalid value for shortName, must be a single character a-z, A-Z or 0-9";
  for (const std::string& shortName : {"ab"s, ""s, "-"s, " "s, "a\0"s, "\xe4"s, "zz"s}) {
    EXPECT_THAT([&] { spec->SetShortName(shortName); }, ThrowsMessage<KestrelException>(message));
    EXPECT_EQ(spec->GetShortName(), "Z");
  }
  const char* const null = nullptr;
  EXPECT_THAT([&] { spec->SetShortName("ab"); }, ThrowsMessage<KestrelException>(message));
  EXPECT_THAT([&] { spec->SetShortName(null); }, ThrowsMessage<KestrelException>(message));
  EXPECT_EQ(spec->GetShortName(), "Z");
}

TEST(ParameterSpecTest, StoresTheDescriptionUnchanged) {
  const auto spec = Spec(String);
  spec->SetDescription("plain");
  EXPECT_EQ(spec->GetDescription(false), "plain");
  spec->SetDescription("with\0nul and %ENUM%"s);
  EXPECT_EQ(spec->GetDescription(false), "with\0nul and %ENUM%"s);
  const char* const null = nullptr;
  spec->SetDescription(null);
  EXPECT_EQ(spec->GetDescription(false), "");
}

TEST(ParameterSpecTest, RequiredCanBeSetForEveryType) {
  for (const ParameterType type : kAllTypes) {
    const auto spec = Spec(type);
    spec->SetRequired(false);
    EXPECT_FALSE(spec->IsRequired());
    spec->SetRequired(true);
    EXPECT_TRUE(spec->IsRequired());
  }
}

TEST(ParameterSpecTest, OnlyAStringCanBeSecret) {
  const auto spec = Spec(String);
  spec->SetSecret(true);
  EXPECT_TRUE(spec->IsSecret());
  spec->SetSecret(false);
  EXPECT_FALSE(spec->IsSecret());
  for (const ParameterType type : kAllTypes) {
    if (type == String) {
      continue;
    }
    for (const bool secret : {true, false}) {
      const auto other = Spec(type);
      EXPECT_THAT([&] { other->SetSecret(secret); },
                  ThrowsMessage<KestrelException>("Cannot be set for parameter given"));
      EXPECT_FALSE(other->IsSecret());
    }
  }
}

TEST(ParameterSpecTest, OnlySuitableConstraintsCanBeSet) {
  const std::vector<std::pair<ParameterType, ParameterConstraintType>> allowed = {
      {Int, IntRange},          {Int, IntEnum},           {IntList, IntRange},
      {IntList, IntEnum},       {String, StringEnum},     {String, StringRegex},
      {StringList, StringEnum}, {StringList, StringRegex}};
  for (const ParameterType type : kAllTypes) {
    for (int number = 0; number <= 5; ++number) {
      const auto constraint =
          ParameterConstraint::New(static_cast<ParameterConstraintType>(number));
      const auto spec = Spec(type);
      const bool isAllowed = std::find(allowed.begin(), allowed.end(),
                                       std::pair(type, constraint->GetType())) != allowed.end();
      if (isAllowed) {
        spec->SetConstraint(constraint);
        EXPECT_EQ(spec->GetConstraint(), constraint);
        continue;
      }
      EXPECT_THAT([&] { spec->SetConstraint(constraint); },
                  ThrowsMessage<KestrelException>(
                      "Invalid constraint specified for parameter given.  The parameter "
                      "constraint specified is not allowed for a parameter of this type."))
          << type << " " << number;
      EXPECT_EQ(spec->GetConstraint(), nullptr);
    }
  }
}

TEST(ParameterSpecTest, ARefusedConstraintDoesNotReplaceTheEarlierOne) {
  const auto spec = Spec(Int);
  const auto range = Range(1, 2);
  spec->SetConstraint(range);
  EXPECT_THROW(spec->SetConstraint(Regex("a")), KestrelException);
  EXPECT_EQ(spec->GetConstraint(), range);
}

TEST(ParameterSpecTest, ANullConstraintIsIgnored) {
  const auto spec = Spec(Int);
  spec->SetConstraint(nullptr);
  EXPECT_EQ(spec->GetConstraint(), nullptr);
  const auto range = Range(1, 2);
  spec->SetConstraint(range);
  spec->SetConstraint(nullptr);
  EXPECT_EQ(spec->GetConstraint(), range);
  const auto flag = Spec(Flag);
  flag->SetConstraint(nullptr);
  EXPECT_EQ(flag->GetConstraint(), nullptr);
}

TEST(ParameterSpecTest, ALaterConstraintReplacesTheEarlierOne) {
  const auto spec = Spec(Int);
  spec->SetConstraint(Range(1, 2));
  const auto later = Range(5, 6);
  spec->SetConstraint(later);
  EXPECT_EQ(spec->GetConstraint(), later);
}

TEST(ParameterSpecTest, TheListTypesAllowMultipleValues) {
  for (const ParameterType type : {StringList, IntList, BoolList}) {
    EXPECT_TRUE(Spec(type)->AllowMultiple()) << type;
  }
  for (const ParameterType type : {String, Int, Bool, Flag}) {
    EXPECT_FALSE(Spec(type)->AllowMultiple()) << type;
  }
  EXPECT_FALSE(Spec(static_cast<ParameterType>(7))->AllowMultiple());
  EXPECT_FALSE(Spec(static_cast<ParameterType>(-1))->AllowMultiple());
}

TEST(ParameterSpecTest, ReadsIntegers) {
  std::int64_t number = 0;
  EXPECT_TRUE(ParameterSpec::GetInt(" +42", number));
  EXPECT_EQ(number, 42);
  EXPECT_TRUE(ParameterSpec::GetInt("-99999999999999999999", number));
  EXPECT_EQ(number, INT64_MIN);
  for (const std::string& text : {""s, "42 "s, "4x"s, "42\0"s}) {
    number = 7;
    EXPECT_FALSE(ParameterSpec::GetInt(text, number));
    EXPECT_EQ(number, 7);
  }
}

TEST(ParameterSpecTest, ReadsBooleans) {
  bool value = false;
  EXPECT_TRUE(ParameterSpec::GetBool("True", value));
  EXPECT_TRUE(value);
  EXPECT_FALSE(ParameterSpec::GetBool("YES", value));
  EXPECT_TRUE(value);
  EXPECT_TRUE(ParameterSpec::GetBool("F", value));
  EXPECT_FALSE(value);
  EXPECT_FALSE(ParameterSpec::GetBool("TRUE", value));
  EXPECT_FALSE(value);
}

TEST(ParameterSpecTest, AMissingValueAddsAMessageAndTheResultIsTrue) {
  for (const ParameterType type : kAllTypes) {
    const Verdict verdict = Validate(Spec(type), {});
    EXPECT_TRUE(verdict.isValid);
    EXPECT_THAT(verdict.errors, ElementsAre("Missing value for parameter given"));
  }
}

TEST(ParameterSpecTest, TooManyValuesAddAMessageAndTheResultIsTrue) {
  const std::vector<std::pair<ParameterType, std::string>> values = {
      {String, "a"}, {Int, "1"}, {Bool, "y"}, {Flag, ""}};
  for (const auto& [type, value] : values) {
    for (std::size_t count = 2; count < 5; ++count) {
      const Verdict verdict = Validate(Spec(type), std::vector<std::string>(count, value));
      EXPECT_TRUE(verdict.isValid);
      EXPECT_THAT(verdict.errors, ElementsAre(kManyValues));
    }
  }
}

TEST(ParameterSpecTest, TooManyValidBooleansAddAMessageAndTheResultIsTrue) {
  const Verdict verdict = Validate(Spec(Bool), {"y", "n"});
  EXPECT_TRUE(verdict.isValid);
  EXPECT_THAT(verdict.errors, ElementsAre(kManyValues));
}

TEST(ParameterSpecTest, AListTypeAcceptsManyValues) {
  ExpectValid(Spec(StringList), {"a", "", "b"});
  ExpectValid(Spec(IntList), {"1", "-2", " 3"});
  ExpectValid(Spec(BoolList), {"y", "n", "True"});
}

TEST(ParameterSpecTest, AStringAcceptsEverything) {
  for (const std::string& value : {""s, "text"s, "\0\xff\n"s, std::string(100000, 'x')}) {
    ExpectValid(Spec(String), {value});
    ExpectValid(Spec(StringList), {value});
  }
}

TEST(ParameterSpecTest, ABadIntegerIsNamed) {
  ExpectInvalid(Spec(Int), {"12x"}, "Invalid data '12x' for parameter given expected type Integer");
  ExpectInvalid(Spec(IntList), {""}, "Invalid data '' for parameter given expected type Integer");
  ExpectInvalid(Spec(Int), {"7\0"s},
                "Invalid data '7\0' for parameter given expected type Integer"s);
}

TEST(ParameterSpecTest, ABadBooleanIsNamed) {
  ExpectInvalid(Spec(Bool), {"maybe"}, BoolMessage("maybe"));
  ExpectInvalid(Spec(BoolList), {"TRUE"}, BoolMessage("TRUE"));
}

TEST(ParameterSpecTest, AFlagTakesTheEmptyValueOnly) {
  ExpectValid(Spec(Flag), {""});
  ExpectInvalid(Spec(Flag), {"true"},
                "Invalid data 'true' for parameter given.  This parameter is a flag and cannot "
                "accept any values. ");
}

TEST(ParameterSpecTest, TheValuesAfterAnInvalidOneAreCheckedToo) {
  ExpectInvalid(Spec(IntList), {"1", "x", "2", "y"},
                "Invalid data 'x' for parameter given expected type Integer",
                "Invalid data 'y' for parameter given expected type Integer");
  ExpectInvalid(Spec(BoolList), {"no", "x", "y", "z"}, BoolMessage("x"), BoolMessage("z"));
}

TEST(ParameterSpecTest, TooManyValuesComeBeforeBadOnes) {
  ExpectInvalid(Spec(Bool), {"y", "maybe"}, kManyValues, BoolMessage("maybe"));
  ExpectInvalid(Spec(Flag), {"a", "b"}, kManyValues,
                "Invalid data 'a' for parameter given.  This parameter is a flag and cannot accept "
                "any values. ",
                "Invalid data 'b' for parameter given.  This parameter is a flag and cannot accept "
                "any values. ");
}

TEST(ParameterSpecTest, OnlyValuesOfTheRightTypeReachTheConstraint) {
  const auto spec = Spec(Int);
  spec->SetConstraint(Range(1, 10));
  ExpectValid(spec, {"10"});
  ExpectInvalid(spec, {"x"}, "Invalid data 'x' for parameter given expected type Integer");
  ExpectInvalid(
      spec, {"11"},
      "Invalid data constraint for parameter 'given'. Expected integer in the range 1-10");
}

TEST(ParameterSpecTest, TheConstraintChecksEachValueOfAList) {
  const auto integers = Spec(IntList);
  integers->SetConstraint(Range(1, 10));
  ExpectInvalid(integers, {"0", "x", "5", "11"},
                "Invalid data constraint for parameter 'given'. Expected integer in the range 1-10",
                "Invalid data 'x' for parameter given expected type Integer",
                "Invalid data constraint for parameter 'given'. Expected integer in the range "
                "1-10");
  const auto strings = Spec(StringList);
  strings->SetConstraint(Strings({"a", "b"}));
  ExpectInvalid(strings, {"a", "c", "b", ""},
                "Invalid data constraint for parameter 'given'. Expected a single value from the "
                "set [a, b] got 'c'",
                "Invalid data constraint for parameter 'given'. Expected a single value from the "
                "set [a, b] got ''");
}

TEST(ParameterSpecTest, TheConstraintChecksEachOfTooManyValues) {
  const auto spec = Spec(String);
  spec->SetConstraint(Strings({"a"}));
  ExpectInvalid(spec, {"a", "c"}, kManyValues,
                "Invalid data constraint for parameter 'given'. Expected a single value from the "
                "set [a] got 'c'");
}

TEST(ParameterSpecTest, ABadRegularExpressionThrows) {
  const auto spec = Spec(String);
  spec->SetConstraint(Regex("("));
  EXPECT_THROW(spec->Validate({"a"}, Output::New()), std::runtime_error);
}

TEST(ParameterSpecTest, AMessageWithoutAnOutputThrows) {
  EXPECT_TRUE(Spec(Int)->Validate({"1"}, nullptr));
  for (const auto& values : std::vector<std::vector<std::string>>{{}, {"x"}, {"1", "2"}}) {
    EXPECT_THAT([&] { Spec(Int)->Validate(values, nullptr); },
                ThrowsMessage<KestrelException>("Null output passed to Validate"));
  }
}

TEST(ParameterSpecTest, AnUnknownTypeAcceptsEveryValue) {
  ExpectValid(Spec(static_cast<ParameterType>(9)), {"text"});
  const Verdict verdict = Validate(Spec(static_cast<ParameterType>(9)), {"a", "b"});
  EXPECT_TRUE(verdict.isValid);
  EXPECT_THAT(verdict.errors, ElementsAre(kManyValues));
}

TEST(ParameterSpecTest, ChecksAHundredThousandValues) {
  const auto spec = Spec(IntList);
  spec->SetConstraint(Range(0, 99999));
  std::vector<std::string> values;
  for (int i = 0; i < 100000; ++i) {
    values.push_back(std::to_string(i));
  }
  ExpectValid(spec, values);
  values.emplace_back("x");
  ExpectInvalid(spec, values, "Invalid data 'x' for parameter given expected type Integer");
}

TEST(ParameterSpecTest, MarkersStayWithoutSubstitutionOrConstraint) {
  const std::string text = "%REGEX% %ENUM% %FULLENUM%";
  const auto spec = Spec(String);
  spec->SetDescription(text);
  EXPECT_EQ(spec->GetDescription(true), text);
  spec->SetConstraint(Strings({"a"}));
  EXPECT_EQ(spec->GetDescription(false), text);
}

TEST(ParameterSpecTest, ADescriptionWithoutMarkersStaysUnchanged) {
  const auto spec = Spec(String);
  spec->SetConstraint(Strings({"a"}));
  for (const char* text : {"", "plain", "100% %regex% %ENUM %FULL"}) {
    spec->SetDescription(text);
    EXPECT_EQ(spec->GetDescription(true), text);
  }
}

TEST(ParameterSpecTest, OnlyTheFirstOfEachMarkerIsReplaced) {
  const auto spec = Spec(String);
  spec->SetConstraint(Strings({"a", "b"}));
  spec->SetDescription("one of %ENUM%, really %ENUM%");
  EXPECT_EQ(spec->GetDescription(true), "one of [a, b], really %ENUM%");
  spec->SetDescription("%REGEX%%REGEX%");
  EXPECT_EQ(spec->GetDescription(true), "[a, b]%REGEX%");
  spec->SetDescription("%FULLENUM%%FULLENUM%");
  EXPECT_EQ(spec->GetDescription(true), "%FULLENUM%");
}

TEST(ParameterSpecTest, RegexAndEnumMarkersAreReplacedForEveryConstraint) {
  const auto range = Spec(Int);
  range->SetConstraint(Range(-5, 10));
  range->SetDescription("%ENUM% and %REGEX%");
  EXPECT_EQ(range->GetDescription(true),
            "integer in the range -5-10 and integer in the range -5-10");
  const auto regex = Spec(StringList);
  regex->SetConstraint(Regex("[a-z]+"));
  regex->SetDescription("(%REGEX%)");
  EXPECT_EQ(regex->GetDescription(true), "(a string matching the regular expression [a-z]+)");
}

TEST(ParameterSpecTest, TheFullMarkerListsDescribedStringsInSortedOrder) {
  const auto constraint = ParameterConstraint::New(StringEnum);
  constraint->AddStringEnum("b", "second");
  constraint->AddStringEnum("c");
  constraint->AddStringEnum("a", "first");
  const auto spec = Spec(String);
  spec->SetConstraint(constraint);
  spec->SetDescription("Values:%FULLENUM%done, %ENUM%");
  EXPECT_EQ(spec->GetDescription(true), "Values:\n    a: first\n    b: second\ndone, [b, c, a]");
}

TEST(ParameterSpecTest, TheFullMarkerIsEmptyWithoutDescribedStrings) {
  const auto strings = Spec(String);
  strings->SetConstraint(Strings({"a", "b"}));
  strings->SetDescription("<%FULLENUM%>");
  EXPECT_EQ(strings->GetDescription(true), "<>");
  const auto stray = ParameterConstraint::New(StringRegex);
  stray->AddStringEnum("a", "described but not read");
  const auto regex = Spec(String);
  regex->SetConstraint(stray);
  regex->SetDescription("<%FULLENUM%>");
  EXPECT_EQ(regex->GetDescription(true), "<>");
}

// The kinds of markers are replaced in the order %REGEX%, %ENUM%, %FULLENUM%. What replaces a
// marker may contain further markers.
TEST(ParameterSpecTest, AnInsertedMarkerOfALaterKindIsReplacedIfItIsTheFirst) {
  const auto regex = Spec(String);
  regex->SetConstraint(Regex("%ENUM%"));
  regex->SetDescription("%REGEX%");
  EXPECT_EQ(regex->GetDescription(true),
            "a string matching the regular expression a string matching the regular expression "
            "%ENUM%");
  regex->SetDescription("%ENUM% %REGEX%");
  EXPECT_EQ(regex->GetDescription(true),
            "a string matching the regular expression %ENUM% a string matching the regular "
            "expression %ENUM%");
}

TEST(ParameterSpecTest, TheFullMarkerIsReplacedAfterTheOthers) {
  const auto constraint = ParameterConstraint::New(StringEnum);
  constraint->AddStringEnum("%FULLENUM%", "a marker for a value");
  const auto spec = Spec(String);
  spec->SetConstraint(constraint);
  spec->SetDescription("%ENUM%");
  EXPECT_EQ(spec->GetDescription(true), "[\n    %FULLENUM%: a marker for a value\n]");
  spec->SetDescription("%REGEX%");
  EXPECT_EQ(spec->GetDescription(true), "[\n    %FULLENUM%: a marker for a value\n]");
}

TEST(ParameterSpecTest, AnInsertedMarkerOfAnEarlierKindStays) {
  const auto constraint = ParameterConstraint::New(StringEnum);
  constraint->AddStringEnum("a", "see %ENUM%");
  const auto spec = Spec(String);
  spec->SetConstraint(constraint);
  spec->SetDescription("%FULLENUM%");
  EXPECT_EQ(spec->GetDescription(true), "\n    a: see %ENUM%\n");
}

}  // namespace
}  // namespace Kestrel::CallSpec
