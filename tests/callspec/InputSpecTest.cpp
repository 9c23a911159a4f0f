// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/callspec/InputSpec.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "kestrel/KestrelException.h"
#include "kestrel/callspec/Input.h"
#include "kestrel/callspec/Output.h"
#include "kestrel/callspec/ParameterConstraint.h"
#include "kestrel/callspec/ParameterSpec.h"
#include "support/Random.h"

namespace Kestrel::CallSpec {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::ThrowsMessage;

constexpr const char* kShortName = "Parameter name must be at least 2 characters";

std::shared_ptr<ParameterSpec> Parameter(const std::string& name, const std::string& shortName = "",
                                         ParameterType type = String) {
  const auto spec = ParameterSpec::New(name, type);
  if (!shortName.empty()) {
    spec->SetShortName(shortName);
  }
  return spec;
}

std::shared_ptr<ParameterSpec> Optional(const std::string& name, ParameterType type = String) {
  const auto spec = ParameterSpec::New(name, type);
  spec->SetRequired(false);
  return spec;
}

std::shared_ptr<InputSpec> SpecOf(const std::vector<std::shared_ptr<ParameterSpec>>& parameters) {
  const auto spec = InputSpec::New();
  for (const auto& parameter : parameters) {
    spec->AddParameter(parameter);
  }
  return spec;
}

std::vector<std::string> Names(const InputSpec& spec) {
  std::vector<std::string> names;
  for (const auto& parameter : spec.GetParameters()) {
    names.push_back(parameter->GetName());
  }
  return names;
}

using Given = std::vector<std::pair<std::string, std::string>>;

std::shared_ptr<Input> InputOf(const Given& given) {
  const auto input = Input::New();
  for (const auto& [name, value] : given) {
    input->AddParameter(name, value);
  }
  return input;
}

struct Verdict {
  bool isValid;
  std::vector<std::string> errors;
};

Verdict Validate(const std::shared_ptr<InputSpec>& spec, const Given& given) {
  const auto output = Output::New();
  const bool isValid = spec->Validate(InputOf(given), output);
  return {isValid, output->GetErrors()};
}

void ExpectValid(const std::shared_ptr<InputSpec>& spec, const Given& given) {
  const Verdict verdict = Validate(spec, given);
  EXPECT_TRUE(verdict.isValid);
  EXPECT_THAT(verdict.errors, IsEmpty());
}

template <typename... Messages>
void ExpectInvalid(const std::shared_ptr<InputSpec>& spec, const Given& given,
                   const Messages&... messages) {
  const Verdict verdict = Validate(spec, given);
  EXPECT_FALSE(verdict.isValid);
  EXPECT_THAT(verdict.errors, ElementsAre(messages...));
}

// Expects AddParameter to throw with this message and to change nothing.
void ExpectRefused(const std::shared_ptr<InputSpec>& spec,
                   const std::shared_ptr<ParameterSpec>& parameter, const std::string& message) {
  const std::vector<std::shared_ptr<ParameterSpec>> before = spec->GetParameters();
  EXPECT_THAT([&] { spec->AddParameter(parameter); }, ThrowsMessage<KestrelException>(message));
  EXPECT_EQ(spec->GetParameters(), before);
}

TEST(InputSpecTest, IsEmptyAtFirst) {
  const auto spec = InputSpec::New();
  EXPECT_THAT(spec->GetParameters(), IsEmpty());
  EXPECT_FALSE(spec->IsContextSupported("user"));
  EXPECT_FALSE(spec->IsContextSupported(""));
}

TEST(InputSpecTest, IsAPlainClassThatCannotBeCopied) {
  EXPECT_FALSE(std::is_polymorphic<InputSpec>::value);
  EXPECT_FALSE((std::is_constructible<InputSpec>::value));
  EXPECT_FALSE(std::is_copy_constructible<InputSpec>::value);
  EXPECT_FALSE(std::is_copy_assignable<InputSpec>::value);
}

TEST(InputSpecTest, ListsParametersByName) {
  const auto b = Parameter("b-param");
  const auto a = Parameter("a-param");
  EXPECT_THAT(SpecOf({b, a})->GetParameters(), ElementsAre(a, b));
}

TEST(InputSpecTest, SortsAfterEveryAddition) {
  const auto spec = InputSpec::New();
  const auto& parameters = spec->GetParameters();
  for (const char* name : {"mm", "zz", "aa", "m-", "mma", "m0", "help"}) {
    spec->AddParameter(Parameter(name));
    EXPECT_TRUE(std::is_sorted(
        parameters.begin(), parameters.end(),
        [](const auto& left, const auto& right) { return left->GetName() < right->GetName(); }));
  }
  EXPECT_THAT(Names(*spec), ElementsAre("aa", "help", "m-", "m0", "mm", "mma", "zz"));
}

TEST(InputSpecTest, AReturnedListShowsLaterAdditionsInTheirPlaces) {
  const auto spec = SpecOf({Parameter("mm"), Parameter("bb"), Parameter("xx")});
  const auto& parameters = spec->GetParameters();
  for (const char* name : {"zz", "aa", "nn"}) {
    spec->AddParameter(Parameter(name));
  }
  EXPECT_EQ(&spec->GetParameters(), &parameters);
  EXPECT_THAT(Names(*spec), ElementsAre("aa", "bb", "mm", "nn", "xx", "zz"));
  ExpectRefused(spec, Parameter("nn"),
                "Found a duplicate paramater specification for parameter named 'nn'");
}

TEST(InputSpecTest, AParameterNamedHelpIsInNameOrder) {
  EXPECT_THAT(Names(*SpecOf({Parameter("help"), Parameter("device"), Parameter("password")})),
              ElementsAre("device", "help", "password"));
}

TEST(InputSpecTest, RefusesAParameterWithANameOfOneCharacter) {
  const auto spec = SpecOf({Parameter("first")});
  ExpectRefused(spec, Parameter("x"), kShortName);
  spec->AddParameter(Parameter("xx"));
  EXPECT_THAT(Names(*spec), ElementsAre("first", "xx"));
}

TEST(InputSpecTest, TheLengthIsCheckedBeforeTheShortName) {
  ExpectRefused(SpecOf({Parameter("verbose", "v")}), Parameter("x", "v"), kShortName);
}

TEST(InputSpecTest, ADuplicateNameIsRefused) {
  ExpectRefused(SpecOf({Parameter("name"), Parameter("other")}), Parameter("name"),
                "Found a duplicate paramater specification for parameter named 'name'");
  const auto same = Parameter("same", "s");
  ExpectRefused(SpecOf({same}), same,
                "Found a duplicate paramater specification for parameter named 'same'");
}

TEST(InputSpecTest, ADuplicateShortNameIsRefused) {
  ExpectRefused(SpecOf({Parameter("verbose", "v")}), Parameter("version", "v"),
                "Invalid short name specified for --version. The short name -v is already used for "
                "--verbose");
  ExpectRefused(SpecOf({Parameter("verbose", "v")}), Parameter("aaa", "v"),
                "Invalid short name specified for --aaa. The short name -v is already used for "
                "--verbose");
}

TEST(InputSpecTest, ParametersWithoutShortNamesNeverClash) {
  const auto spec = SpecOf({Parameter("one"), Parameter("two"), Parameter("three", "t")});
  spec->AddParameter(Parameter("four"));
  EXPECT_THAT(Names(*spec), ElementsAre("four", "one", "three", "two"));
}

TEST(InputSpecTest, ShortNamesAreCaseSensitive) {
  const auto spec = SpecOf({Parameter("lower", "v"), Parameter("upper", "V")});
  EXPECT_THAT(Names(*spec), ElementsAre("lower", "upper"));
}

TEST(InputSpecTest, AClashThatSortsBeforeTheDuplicateIsReported) {
  ExpectRefused(SpecOf({Parameter("aa", "s"), Parameter("mm")}), Parameter("mm", "s"),
                "Invalid short name specified for --mm. The short name -s is already used for "
                "--aa");
}

TEST(InputSpecTest, ADuplicateThatSortsBeforeTheClashIsReported) {
  ExpectRefused(SpecOf({Parameter("mm"), Parameter("zz", "s")}), Parameter("mm", "s"),
                "Found a duplicate paramater specification for parameter named 'mm'");
}

TEST(InputSpecTest, ChecksAShortNameThatIsSetAfterTheAddition) {
  const auto late = Parameter("late");
  const auto spec = SpecOf({late, Parameter("early", "e")});
  late->SetShortName("x");
  ExpectRefused(spec, Parameter("other", "x"),
                "Invalid short name specified for --other. The short name -x is already used for "
                "--late");
  late->SetShortName("e");
  ExpectRefused(spec, Parameter("other", "e"),
                "Invalid short name specified for --other. The short name -e is already used for "
                "--early");
  spec->AddParameter(Parameter("other", "x"));
  EXPECT_THAT(Names(*spec), ElementsAre("early", "late", "other"));
}

TEST(InputSpecTest, ANullParameterIsRefused) {
  ExpectRefused(SpecOf({Parameter("name")}), nullptr,
                "Null parameter specification passed to AddParameter");
}

TEST(InputSpecTest, RefusesRandomAdditionsAsASimpleModelDoes) {
  Testing::Random random;
  SCOPED_TRACE(random.HowToRepeat());
  // The length of the new name is checked first. Then the new parameter is compared with each
  // existing one in name order: first the names, then the short names.
  const auto refusal = [](const std::vector<std::shared_ptr<ParameterSpec>>& existing,
                          const ParameterSpec& added) -> std::string {
    if (added.GetName().size() < 2) {
      return kShortName;
    }
    for (const auto& other : existing) {
      if (other->GetName() == added.GetName()) {
        return "Found a duplicate paramater specification for parameter named '" + added.GetName() +
               "'";
      }
      if (!added.GetShortName().empty() && other->GetShortName() == added.GetShortName()) {
        return "Invalid short name specified for --" + added.GetName() + ". The short name -" +
               added.GetShortName() + " is already used for --" + other->GetName();
      }
    }
    return "";
  };
  const auto anyOf = [&random](const std::string& letters) {
    return std::string(1, random.Pick(letters));
  };
  for (int rounds = Testing::Rounds(500, 50000); rounds > 0; --rounds) {
    const auto spec = InputSpec::New();
    for (int addition = 0; addition < 20; ++addition) {
      std::string name = anyOf("ab0-");
      while (!random.Chance(25)) {
        name += anyOf("ab0-");
      }
      const auto parameter = Parameter(name, random.Chance(50) ? anyOf("abcABC0") : "");
      const std::string expected = refusal(spec->GetParameters(), *parameter);
      std::string message;
      try {
        spec->AddParameter(parameter);
      } catch (const KestrelException& error) {
        message = error.what();
      }
      ASSERT_EQ(message, expected);
    }
    const std::vector<std::string> names = Names(*spec);
    ASSERT_TRUE(std::is_sorted(names.begin(), names.end()));
    ASSERT_EQ(std::set<std::string>(names.begin(), names.end()).size(), names.size());
  }
}

TEST(InputSpecTest, KnowsTheContextsThatWereAdded) {
  const auto spec = InputSpec::New();
  spec->SetContextSupported("user");
  spec->SetContextSupported("user");
  spec->SetContextSupported("");
  EXPECT_TRUE(spec->IsContextSupported("user"));
  EXPECT_TRUE(spec->IsContextSupported(""));
  EXPECT_FALSE(spec->IsContextSupported("User"));
  EXPECT_FALSE(spec->IsContextSupported("use"));
}

TEST(InputSpecTest, ASpecWithoutParametersAcceptsAnEmptyInputAndRefusesAnUnknownParameter) {
  ExpectValid(InputSpec::New(), {});
  ExpectInvalid(InputSpec::New(), {{"any", ""}}, "Unknown parameter : any");
}

TEST(InputSpecTest, AcceptsWhatIsDeclared) {
  const auto spec = SpecOf({Parameter("text"), Parameter("count", "", Int), Optional("loud", Flag),
                            Optional("numbers", IntList)});
  ExpectValid(spec, {{"text", "a"}, {"count", "7"}});
  ExpectValid(spec,
              {{"numbers", "1"}, {"text", ""}, {"numbers", "2"}, {"loud", ""}, {"count", "-7"}});
}

TEST(InputSpecTest, HelpMakesEveryInputValid) {
  const auto spec = SpecOf({Parameter("needed", "", Int)});
  ExpectValid(spec, {{"help", ""}, {"unknown", "x"}});
  ExpectValid(spec, {{"unknown", "x"}, {"needed", "no integer"}, {"help", "with a value"}});
  EXPECT_TRUE(InputSpec::New()->Validate(InputOf({{"help", ""}}), nullptr));
}

TEST(InputSpecTest, OnlyTheWholeWordIsHelp) {
  ExpectInvalid(InputSpec::New(), {{"Help", ""}, {"h", ""}, {"helper", ""}},
                "Unknown parameter : Help", "Unknown parameter : h", "Unknown parameter : helper");
}

TEST(InputSpecTest, UnknownParametersComeBeforeMissingOnes) {
  ExpectInvalid(SpecOf({Parameter("aa")}), {{"zz", "1"}}, "Unknown parameter : zz",
                "Missing required parameter --aa");
}

TEST(InputSpecTest, MissingParametersComeInTheOrderOfNames) {
  ExpectInvalid(SpecOf({Parameter("cc"), Optional("bb"), Parameter("aa"), Parameter("dd")}),
                {{"dd", "given"}}, "Missing required parameter --aa",
                "Missing required parameter --cc");
}

TEST(InputSpecTest, GivenParametersAreCheckedInNameOrder) {
  const auto spec = SpecOf({Parameter("bb", "", Int), Parameter("dd", "", Int), Parameter("ff")});
  ExpectInvalid(spec, {{"ee", ""}, {"dd", "x"}, {"cc", ""}, {"bb", "y"}, {"aa", ""}, {"zz", ""}},
                "Unknown parameter : aa", "Invalid data 'y' for parameter bb expected type Integer",
                "Unknown parameter : cc", "Invalid data 'x' for parameter dd expected type Integer",
                "Unknown parameter : ee", "Unknown parameter : zz",
                "Missing required parameter --ff");
}

TEST(InputSpecTest, NamesAreComparedExactly) {
  ExpectInvalid(SpecOf({Optional("name")}), {{"Name", ""}, {"nam", ""}, {"names", ""}, {"", ""}},
                "Unknown parameter : ", "Unknown parameter : Name", "Unknown parameter : nam",
                "Unknown parameter : names");
}

TEST(InputSpecTest, AShortNameThatWasNotFoldedIsUnknown) {
  ExpectInvalid(SpecOf({Parameter("verbose", "v", Flag)}), {{"v", ""}}, "Unknown parameter : v",
                "Missing required parameter --verbose");
}

TEST(InputSpecTest, TooManyValuesAddAMessageAndTheResultIsTrue) {
  const Verdict verdict = Validate(SpecOf({Parameter("name")}), {{"name", "a"}, {"name", "b"}});
  EXPECT_TRUE(verdict.isValid);
  EXPECT_THAT(
      verdict.errors,
      ElementsAre("Found multiple values for name this parameter can only accept a single value."));
}

TEST(InputSpecTest, AFailureIsNotForgottenByALaterSuccess) {
  ExpectInvalid(SpecOf({Parameter("aa", "", Int), Parameter("bb", "", Int)}),
                {{"aa", "x"}, {"bb", "1"}},
                "Invalid data 'x' for parameter aa expected type Integer");
  ExpectInvalid(SpecOf({Parameter("bb", "", Int)}), {{"aa", ""}, {"bb", "1"}},
                "Unknown parameter : aa");
}

TEST(InputSpecTest, TheConstraintReportsInsteadOfItsParameter) {
  const auto constraint = ParameterConstraint::New(StringEnum);
  constraint->AddStringEnum("on");
  const auto parameter = Parameter("mode");
  parameter->SetConstraint(constraint);
  ExpectInvalid(SpecOf({parameter}), {{"mode", "off"}, {"zz", ""}},
                "Invalid data constraint for parameter 'mode'. Expected a single value from the "
                "set [on] got 'off'",
                "Unknown parameter : zz");
}

TEST(InputSpecTest, ABadRegularExpressionThrows) {
  const auto constraint = ParameterConstraint::New(StringRegex);
  constraint->SetStringRegex("(");
  const auto parameter = Parameter("mode");
  parameter->SetConstraint(constraint);
  EXPECT_THROW(Validate(SpecOf({parameter}), {{"mode", "a"}}), std::runtime_error);
}

TEST(InputSpecTest, ValidationDoesNotChangeTheInput) {
  const auto input = InputOf({{"name", "x"}, {"other", "y"}});
  const auto before = input->GetParameters();
  SpecOf({Parameter("name", "", Int)})->Validate(input, Output::New());
  EXPECT_EQ(input->GetParameters(), before);
}

TEST(InputSpecTest, MessagesAreAppended) {
  const auto output = Output::New();
  output->AddErrorMessage("earlier");
  EXPECT_TRUE(InputSpec::New()->Validate(Input::New(), output));
  EXPECT_FALSE(InputSpec::New()->Validate(InputOf({{"xx", ""}}), output));
  EXPECT_THAT(output->GetErrors(), ElementsAre("earlier", "Unknown parameter : xx"));
}

TEST(InputSpecTest, ANullInputThrows) {
  EXPECT_THAT([] { InputSpec::New()->Validate(nullptr, Output::New()); },
              ThrowsMessage<KestrelException>("Null input passed to Validate"));
}

TEST(InputSpecTest, AMessageWithoutAnOutputThrows) {
  const auto spec = SpecOf({Parameter("name")});
  EXPECT_TRUE(spec->Validate(InputOf({{"name", ""}}), nullptr));
  EXPECT_THAT(
      [&] {
        spec->Validate(InputOf({{"other", ""}}), nullptr);
      },
      ThrowsMessage<KestrelException>("Null output passed to Validate"));
  EXPECT_THAT([&] { spec->Validate(Input::New(), nullptr); },
              ThrowsMessage<KestrelException>("Null output passed to Validate"));
}

TEST(InputSpecTest, ValidatesRandomInputsAsASimpleModelDoes) {
  Testing::Random random;
  SCOPED_TRACE(random.HowToRepeat());
  const std::vector<std::string> pool = {"aa", "ab", "b0", "bb", "c-", "cc", "dd", "zz"};
  for (int rounds = Testing::Rounds(2000, 200000); rounds > 0; --rounds) {
    std::map<std::string, bool> declared;  // whether each name is required
    std::set<std::string> given;
    const auto spec = InputSpec::New();
    const auto input = Input::New();
    std::vector<std::string> expected;
    for (const std::string& name : pool) {
      if (random.Chance(50)) {
        declared[name] = random.Chance(50);
        spec->AddParameter(declared[name] ? Parameter(name) : Optional(name));
      }
      if (random.Chance(50)) {
        given.insert(name);
        input->AddParameter(name, "value");
      }
    }
    for (const std::string& name : given) {
      if (declared.count(name) == 0) {
        expected.push_back("Unknown parameter : " + name);
      }
    }
    for (const auto& [name, isRequired] : declared) {
      if (isRequired && given.count(name) == 0) {
        expected.push_back("Missing required parameter --" + name);
      }
    }
    const auto output = Output::New();
    ASSERT_EQ(spec->Validate(input, output), expected.empty());
    ASSERT_EQ(output->GetErrors(), expected);
  }
}

TEST(InputSpecTest, HoldsTenThousandParameters) {
  constexpr int kCount = 10000;
  const auto spec = InputSpec::New();
  const auto input = Input::New();
  for (int i = kCount; i > 0; --i) {
    const std::string name = "parameter-" + std::to_string(i);
    spec->AddParameter(Parameter(name, "", Int));
    input->AddParameter(name, std::to_string(i));
  }
  const std::vector<std::string> names = Names(*spec);
  EXPECT_EQ(names.size(), std::size_t{kCount});
  EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
  ExpectRefused(spec, Parameter("parameter-5000"),
                "Found a duplicate paramater specification for parameter named 'parameter-5000'");
  const auto output = Output::New();
  EXPECT_TRUE(spec->Validate(input, output));
  EXPECT_FALSE(output->HasError());
  EXPECT_FALSE(spec->Validate(Input::New(), output));
  EXPECT_EQ(output->GetErrors().size(), std::size_t{kCount});
}

TEST(InputSpecTest, HoldsLongNamesAndValues) {
  const std::string name(100000, 'n');
  ExpectValid(SpecOf({Parameter(name)}), {{name, std::string(100000, 'v')}});
  ExpectInvalid(SpecOf({Parameter(name)}), {{name + "n", ""}}, "Unknown parameter : " + name + "n",
                "Missing required parameter --" + name);
}

}  // namespace
}  // namespace Kestrel::CallSpec
