// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/callspec/Input.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "kestrel/KestrelException.h"
#include "kestrel/callspec/InputSpec.h"
#include "kestrel/callspec/ParameterSpec.h"

namespace Kestrel::CallSpec {
namespace {

using std::string_literals::operator""s;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::ThrowsMessage;

using Values = std::vector<std::string>;

// Declares one parameter of each type, each with a short name.
std::shared_ptr<InputSpec> SpecOfAllTypes() {
  const auto spec = InputSpec::New();
  const auto add = [&](const char* name, const char* shortName, ParameterType type) {
    const auto parameter = ParameterSpec::New(name, type);
    parameter->SetShortName(shortName);
    spec->AddParameter(parameter);
  };
  add("text", "t", String);
  add("number", "n", Int);
  add("truth", "b", Bool);
  add("flag", "f", Flag);
  add("texts", "T", StringList);
  add("numbers", "N", IntList);
  add("truths", "B", BoolList);
  return spec;
}

std::shared_ptr<Input> DeclaredInput() {
  const auto input = Input::New();
  input->SetInputSpec(SpecOfAllTypes());
  return input;
}

std::shared_ptr<Input> InputWith(const std::string& name, const Values& values) {
  const auto input = DeclaredInput();
  input->AddParameter(name, values);
  return input;
}

TEST(InputTest, IsEmptyAtFirst) {
  const auto input = Input::New();
  EXPECT_THAT(input->GetParameters(), IsEmpty());
  EXPECT_FALSE(input->HasParameter(""));
  EXPECT_EQ(input->GetContext(""), "");
}

TEST(InputTest, HasAVirtualDestructorAndCannotBeCopied) {
  EXPECT_TRUE(std::has_virtual_destructor<Input>::value);
  EXPECT_FALSE(std::is_default_constructible<Input>::value);
  EXPECT_FALSE(std::is_copy_constructible<Input>::value);
  EXPECT_FALSE(std::is_copy_assignable<Input>::value);
}

TEST(InputTest, KeepsValuesInTheOrderGiven) {
  const auto input = Input::New();
  input->AddParameter("name", "b");
  input->AddParameter("other", "x");
  input->AddParameter("name", "a");
  input->AddParameter("name", "b");
  EXPECT_THAT(input->GetParameters(), ElementsAre(Pair("name", ElementsAre("b", "a", "b")),
                                                  Pair("other", ElementsAre("x"))));
}

TEST(InputTest, AddsWithoutAnyCheck) {
  const auto input = DeclaredInput();
  input->AddParameter("", "");
  input->AddParameter("Not A Name\0"s, "\0\xff"s);
  input->AddParameter("number", "no integer");
  EXPECT_THAT(input->GetParameters(),
              ElementsAre(Pair("", ElementsAre("")), Pair("Not A Name\0"s, ElementsAre("\0\xff"s)),
                          Pair("number", ElementsAre("no integer"))));
}

TEST(InputTest, AddsEachValueOfAList) {
  const auto input = Input::New();
  input->AddParameter("name", Values{"a", "", "b"});
  input->AddParameter("name", Values{"c"});
  EXPECT_THAT(input->GetParameters(), ElementsAre(Pair("name", ElementsAre("a", "", "b", "c"))));
}

TEST(InputTest, AnEmptyListAddsNoEntry) {
  const auto input = Input::New();
  input->AddParameter("name", Values());
  EXPECT_FALSE(input->HasParameter("name"));
  input->AddParameter("name", "a");
  input->AddParameter("name", Values());
  EXPECT_THAT(input->GetParameters(), ElementsAre(Pair("name", ElementsAre("a"))));
}

TEST(InputTest, AddsItsOwnValuesOnceMore) {
  const auto input = Input::New();
  const std::string longText(100, 'x');
  input->AddParameter("name", Values{"a", longText});
  input->AddParameter("name", input->GetParameters().at("name"));
  input->AddParameter("name", input->GetParameters().at("name").front());
  EXPECT_THAT(input->GetParameters().at("name"), ElementsAre("a", longText, "a", longText, "a"));
}

TEST(InputTest, KnowsWhetherAParameterWasGiven) {
  const auto input = Input::New();
  input->AddParameter("given", "value");
  EXPECT_TRUE(input->HasParameter("given"));
  EXPECT_TRUE(input->HasParameter("given"s));
  EXPECT_FALSE(input->HasParameter("Given"));
  EXPECT_FALSE(input->HasParameter("give"s));
}

TEST(InputTest, EveryGivenParameterCountsAsASetFlag) {
  const auto input = DeclaredInput();
  input->AddParameter("flag", "");
  input->AddParameter("number", "0");
  EXPECT_TRUE(input->IsFlagSet("flag"));
  EXPECT_TRUE(input->IsFlagSet("flag"s));
  EXPECT_TRUE(input->IsFlagSet("number"));
  EXPECT_FALSE(input->IsFlagSet("text"));
  EXPECT_FALSE(input->IsFlagSet("undeclared"s));
}

TEST(InputTest, NullNamesAreEmptyNames) {
  const auto input = DeclaredInput();
  const char* const null = nullptr;
  EXPECT_FALSE(input->HasParameter(null));
  EXPECT_FALSE(input->IsFlagSet(null));
  EXPECT_THAT([&] { input->GetParameter(null); },
              ThrowsMessage<KestrelException>("Request for unknown parameter: "));
  input->AddParameter("", "");
  EXPECT_TRUE(input->HasParameter(null));
  EXPECT_TRUE(input->IsFlagSet(null));
}

TEST(InputTest, FoldsAShortNameIntoTheLongOne) {
  const auto input = Input::New();
  input->AddParameter("t", "value");
  input->SetInputSpec(SpecOfAllTypes());
  EXPECT_THAT(input->GetParameters(), ElementsAre(Pair("text", ElementsAre("value"))));
}

TEST(InputTest, ValuesOfTheLongNameComeBeforeThoseOfTheShortName) {
  const auto input = Input::New();
  input->AddParameter("T", "short one");
  input->AddParameter("texts", "long one");
  input->AddParameter("T", "short two");
  input->AddParameter("texts", "long two");
  input->SetInputSpec(SpecOfAllTypes());
  EXPECT_THAT(
      input->GetParameters(),
      ElementsAre(Pair("texts", ElementsAre("long one", "long two", "short one", "short two"))));
}

TEST(InputTest, FoldingLeavesOtherEntriesAlone) {
  const auto input = Input::New();
  input->AddParameter("x", "undeclared");
  input->AddParameter("", "without a name");
  input->AddParameter("other", "long");
  const auto spec = SpecOfAllTypes();
  spec->AddParameter(ParameterSpec::New("nameless", String));
  input->SetInputSpec(spec);
  EXPECT_THAT(input->GetParameters(), ElementsAre(Pair("", ElementsAre("without a name")),
                                                  Pair("other", ElementsAre("long")),
                                                  Pair("x", ElementsAre("undeclared"))));
}

TEST(InputTest, FoldsByTheFirstOfTwoEqualShortNames) {
  const auto first = ParameterSpec::New("aa", String);
  const auto second = ParameterSpec::New("bb", String);
  const auto spec = InputSpec::New();
  spec->AddParameter(second);
  spec->AddParameter(first);
  first->SetShortName("x");
  second->SetShortName("x");
  const auto input = Input::New();
  input->AddParameter("x", "value");
  input->SetInputSpec(spec);
  EXPECT_THAT(input->GetParameters(), ElementsAre(Pair("aa", ElementsAre("value"))));
}

TEST(InputTest, AShortNameGivenAfterTheSpecIsFoldedByTheNextSpec) {
  const auto input = DeclaredInput();
  input->AddParameter("t", "value");
  EXPECT_EQ(input->GetParameter("text"), "");
  input->SetInputSpec(SpecOfAllTypes());
  EXPECT_EQ(input->GetParameter("text"), "value");
}

TEST(InputTest, ALaterSpecReplacesTheEarlierOne) {
  const auto input = DeclaredInput();
  input->SetInputSpec(InputSpec::New());
  EXPECT_THROW(input->GetParameterType("text"), KestrelException);
}

TEST(InputTest, ANullSpecThrowsAndChangesNothing) {
  const auto input = DeclaredInput();
  input->AddParameter("t", "value");
  EXPECT_THAT([&] { input->SetInputSpec(nullptr); },
              ThrowsMessage<KestrelException>("Null input specification passed to SetInputSpec"));
  EXPECT_EQ(input->GetParameterType("text"), String);
  EXPECT_TRUE(input->HasParameter("t"));
}

TEST(InputTest, KnowsTheDeclaredTypes) {
  const auto input = DeclaredInput();
  EXPECT_EQ(input->GetParameterType("text"), String);
  EXPECT_EQ(input->GetParameterType("number"), Int);
  EXPECT_EQ(input->GetParameterType("truth"), Bool);
  EXPECT_EQ(input->GetParameterType("flag"), Flag);
  EXPECT_EQ(input->GetParameterType("texts"), StringList);
  EXPECT_EQ(input->GetParameterType("numbers"), IntList);
  EXPECT_EQ(input->GetParameterType("truths"), BoolList);
}

TEST(InputTest, AnUndeclaredParameterThrows) {
  const auto input = DeclaredInput();
  for (const std::string& name : {"other"s, ""s, "t"s, "Text"s, "zzz"s}) {
    input->AddParameter(name, "1");
    const std::string message = "Request for unknown parameter: " + name;
    EXPECT_THAT([&] { input->GetParameterType(name); }, ThrowsMessage<KestrelException>(message));
    EXPECT_THAT([&] { input->GetParameter(name); }, ThrowsMessage<KestrelException>(message));
    EXPECT_THAT([&] { input->GetParameter(name.c_str()); },
                ThrowsMessage<KestrelException>(message));
    EXPECT_THAT([&] { input->GetParameterInt(name); }, ThrowsMessage<KestrelException>(message));
    EXPECT_THAT([&] { input->GetParameterBool(name); }, ThrowsMessage<KestrelException>(message));
  }
}

TEST(InputTest, WithoutASpecEveryParameterIsUnknown) {
  const auto input = Input::New();
  input->AddParameter("text", "1");
  const char* const message = "Request for unknown parameter: text";
  EXPECT_THAT([&] { input->GetParameterType("text"); }, ThrowsMessage<KestrelException>(message));
  EXPECT_THAT([&] { input->GetParameter("text"); }, ThrowsMessage<KestrelException>(message));
  EXPECT_THAT([&] { input->GetParameterInt("text"); }, ThrowsMessage<KestrelException>(message));
  EXPECT_THAT([&] { input->GetParameterBool("text"); }, ThrowsMessage<KestrelException>(message));
}

TEST(InputTest, AskingAFlagForItsValueThrows) {
  const auto input = InputWith("flag", {""});
  const char* const message = "Request for GetParameter on a flag type parameter: flag";
  EXPECT_THAT([&] { input->GetParameter("flag"); }, ThrowsMessage<KestrelException>(message));
  EXPECT_THAT([&] { input->GetParameter("flag"s); }, ThrowsMessage<KestrelException>(message));
  EXPECT_THAT([&] { input->GetParameterInt("flag"); }, ThrowsMessage<KestrelException>(message));
  EXPECT_THAT([&] { input->GetParameterBool("flag"); }, ThrowsMessage<KestrelException>(message));
}

TEST(InputTest, AskingAListForItsOneValueThrows) {
  const auto input = DeclaredInput();
  for (const std::string& name : {"texts"s, "numbers"s, "truths"s}) {
    input->AddParameter(name, "1");
    const std::string message =
        "Request for GetParameter on a parameter that can have multiple values: " + name;
    EXPECT_THAT([&] { input->GetParameter(name); }, ThrowsMessage<KestrelException>(message));
    EXPECT_THAT([&] { input->GetParameterInt(name); }, ThrowsMessage<KestrelException>(message));
    EXPECT_THAT([&] { input->GetParameterBool(name); }, ThrowsMessage<KestrelException>(message));
  }
}

TEST(InputTest, TheTypeIsCheckedEvenForAbsentParameters) {
  EXPECT_THROW(DeclaredInput()->GetParameter("flag"), KestrelException);
  EXPECT_THROW(DeclaredInput()->GetParameter("texts"), KestrelException);
}

TEST(InputTest, ReturnsAReferenceToTheStoredValue) {
  const auto input = InputWith("text", {"value"});
  EXPECT_EQ(input->GetParameter("text"), "value");
  EXPECT_EQ(&input->GetParameter("text"), &input->GetParameters().at("text").front());
  EXPECT_EQ(&input->GetParameter("text"s), &input->GetParameter("text"));
}

TEST(InputTest, ReturnsAnEmptyStringUnlessThereIsOneValue) {
  EXPECT_EQ(DeclaredInput()->GetParameter("text"), "");
  EXPECT_EQ(InputWith("text", {"a", "b"})->GetParameter("text"), "");
  EXPECT_EQ(InputWith("number", {"1", "2"})->GetParameter("number"), "");
}

TEST(InputTest, AbsentValuesAndContextsAreTheSameEmptyString) {
  const auto first = InputWith("text", {"a", "b"});
  const auto second = DeclaredInput();
  EXPECT_EQ(&first->GetParameter("text"), &second->GetParameter("number"));
  EXPECT_EQ(&first->GetContext("user"), &second->GetParameter("text"));
}

TEST(InputTest, ReadsAnInteger) {
  EXPECT_EQ(InputWith("number", {"42"})->GetParameterInt("number"), 42);
  EXPECT_EQ(InputWith("number", {" -42"})->GetParameterInt("number"), -42);
  EXPECT_EQ(InputWith("number", {"-1"})->GetParameterInt("number"), -1);
  EXPECT_EQ(InputWith("number", {"99999999999999999999"})->GetParameterInt("number"), INT64_MAX);
  EXPECT_EQ(InputWith("text", {"7"})->GetParameterInt("text"), 7);
}

TEST(InputTest, MinusOneStandsForABadOrMissingInteger) {
  EXPECT_EQ(DeclaredInput()->GetParameterInt("number"), -1);
  for (const std::string& value : {""s, "abc"s, "7 "s, "7x"s, "7\0"s}) {
    EXPECT_EQ(InputWith("number", {value})->GetParameterInt("number"), -1);
  }
  EXPECT_EQ(InputWith("number", {"1", "2"})->GetParameterInt("number"), -1);
}

TEST(InputTest, ReadsABoolean) {
  for (const char* word : {"true", "1", "yes", "y", "t", "True", "T"}) {
    EXPECT_TRUE(InputWith("truth", {word})->GetParameterBool("truth")) << word;
  }
  for (const char* word : {"false", "0", "no", "", "YES", "TRUE", "on", "true ", "2"}) {
    EXPECT_FALSE(InputWith("truth", {word})->GetParameterBool("truth")) << word;
  }
  EXPECT_FALSE(DeclaredInput()->GetParameterBool("truth"));
  EXPECT_FALSE(InputWith("truth", {"yes", "yes"})->GetParameterBool("truth"));
}

TEST(InputTest, AppendsAllValues) {
  Values out = {"before"};
  InputWith("texts", {"a", "", "b"})->GetParameterList("texts", out);
  EXPECT_THAT(out, ElementsAre("before", "a", "", "b"));
  DeclaredInput()->GetParameterList("texts", out);
  EXPECT_THAT(out, ElementsAre("before", "a", "", "b"));
}

TEST(InputTest, ValuesAreReadAsAListWithoutASpecOrAListType) {
  const auto input = Input::New();
  input->AddParameter("any", Values{"1", "x", "yes"});
  Values texts;
  std::vector<std::int64_t> numbers;
  std::vector<bool> truths;
  input->GetParameterList("any", texts);
  input->GetParameterIntList("any", numbers);
  input->GetParameterBoolList("any", truths);
  EXPECT_THAT(texts, ElementsAre("1", "x", "yes"));
  EXPECT_THAT(numbers, ElementsAre(1));
  EXPECT_THAT(truths, ElementsAre(true, false, true));
  InputWith("flag", {""})->GetParameterList("flag", texts);
  EXPECT_THAT(texts, ElementsAre("1", "x", "yes", ""));
}

TEST(InputTest, AppendsTheIntegersAndSkipsTheRest) {
  std::vector<std::int64_t> out = {5};
  InputWith("numbers", {"1", "", "x", " 2", "3 ", "-4", "99999999999999999999", "5\0"s})
      ->GetParameterIntList("numbers", out);
  EXPECT_THAT(out, ElementsAre(5, 1, 2, -4, INT64_MAX));
  DeclaredInput()->GetParameterIntList("numbers", out);
  EXPECT_EQ(out.size(), 5U);
}

TEST(InputTest, AppendsABooleanForEachValue) {
  std::vector<bool> out = {true};
  InputWith("truths", {"yes", "no", "maybe", "", "T"})->GetParameterBoolList("truths", out);
  EXPECT_THAT(out, ElementsAre(true, true, false, false, false, true));
  DeclaredInput()->GetParameterBoolList("truths", out);
  EXPECT_EQ(out.size(), 6U);
}

TEST(InputTest, JoinsTheValues) {
  const auto input = InputWith("texts", {"a", "b"});
  EXPECT_EQ(input->GetParameterListAsString("texts", ',', true), "\"a,b\"");
  EXPECT_EQ(input->GetParameterListAsString("texts", ',', false), "a,b");
  EXPECT_EQ(input->GetParameterListAsString("texts", '\0', false), "a\0b"s);
}

TEST(InputTest, JoinsOneValueWithoutASeparator) {
  EXPECT_EQ(InputWith("texts", {"a"})->GetParameterListAsString("texts", ',', false), "a");
  EXPECT_EQ(InputWith("texts", {""})->GetParameterListAsString("texts", ',', false), "");
  EXPECT_EQ(InputWith("texts", {"", ""})->GetParameterListAsString("texts", ',', true), "\",\"");
}

TEST(InputTest, JoinsWithoutEscaping) {
  EXPECT_EQ(InputWith("texts", {"a\"b", "c,d"})->GetParameterListAsString("texts", ',', true),
            "\"a\"b,c,d\"");
}

TEST(InputTest, JoinsAbsentValuesToAnEmptyString) {
  EXPECT_EQ(Input::New()->GetParameterListAsString("texts", ',', false), "");
  EXPECT_EQ(Input::New()->GetParameterListAsString("texts", ',', true), "\"\"");
}

TEST(InputTest, KeepsContexts) {
  const auto input = Input::New();
  input->SetContext("user", "first");
  input->SetContext("", "nameless");
  EXPECT_EQ(input->GetContext("user"), "first");
  EXPECT_EQ(input->GetContext(""), "nameless");
  input->SetContext("user", "second");
  EXPECT_EQ(input->GetContext("user"), "second");
  EXPECT_EQ(input->GetContext("User"), "");
  EXPECT_FALSE(input->HasParameter("user"));
}

TEST(InputTest, HoldsManyAndLongValues) {
  const auto input = DeclaredInput();
  for (int i = 0; i < 100000; ++i) {
    input->AddParameter("N", std::to_string(i));
  }
  input->AddParameter("t", std::string(100000, 'x'));
  input->SetInputSpec(SpecOfAllTypes());
  std::vector<std::int64_t> numbers;
  input->GetParameterIntList("numbers", numbers);
  ASSERT_EQ(numbers.size(), 100000U);
  EXPECT_EQ(numbers.back(), 99999);
  EXPECT_EQ(input->GetParameter("text"), std::string(100000, 'x'));
}

TEST(InputTest, FoldsTenThousandParameters) {
  const auto spec = SpecOfAllTypes();
  const auto input = Input::New();
  for (int i = 0; i < 10000; ++i) {
    const std::string name = "parameter-" + std::to_string(i);
    spec->AddParameter(ParameterSpec::New(name, Int));
    input->AddParameter(name, std::to_string(i));
  }
  input->SetInputSpec(spec);
  for (int i = 0; i < 10000; ++i) {
    ASSERT_EQ(input->GetParameterInt("parameter-" + std::to_string(i)), i);
  }
}

}  // namespace
}  // namespace Kestrel::CallSpec
