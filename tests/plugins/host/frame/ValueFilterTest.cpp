// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/ValueFilter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kestrel/callspec/InputSpec.h"
#include "plugins/host/frame/Parameter.h"

namespace Kestrel::Host {
namespace {

using CallSpec::Input;

// Returns an input with `values` for the parameter "item", which has the type `type`.
std::shared_ptr<Input> InputFor(CallSpec::ParameterType type,
                                const std::vector<std::string>& values) {
  const auto spec = CallSpec::InputSpec::New();
  Parameter("item", type, "x").AddTo(*spec);
  auto input = Input::New();
  input->SetInputSpec(spec);
  for (const std::string& value : values) {
    input->AddParameter("item", value);
  }
  return input;
}

TEST(ValueFilterTest, AcceptsEverythingIfNoValueWasGiven) {
  const auto input = InputFor(CallSpec::StringList, {});
  const StringFilter filter(*input, "item");
  EXPECT_FALSE(filter.IsGiven());
  EXPECT_TRUE(filter.Accepts(""));
  EXPECT_TRUE(filter.Accepts("x"));
  EXPECT_TRUE(filter.AcceptsAnyOf({}));
}

TEST(ValueFilterTest, AcceptsTheGivenStringsOnly) {
  const auto input = InputFor(CallSpec::StringList, {"a", "b c"});
  const StringFilter filter(*input, "item");
  EXPECT_TRUE(filter.IsGiven());
  EXPECT_TRUE(filter.Accepts("a"));
  EXPECT_TRUE(filter.Accepts("b c"));
  for (const char* const other : {"", "A", "ab", "b", " a"}) {
    EXPECT_FALSE(filter.Accepts(other)) << other;
  }
}

TEST(ValueFilterTest, AcceptsAListWithOneOfTheGivenStrings) {
  const auto input = InputFor(CallSpec::StringList, {"a", "b"});
  const StringFilter filter(*input, "item");
  EXPECT_TRUE(filter.AcceptsAnyOf({"x", "b"}));
  EXPECT_FALSE(filter.AcceptsAnyOf({"x", "y"}));
  EXPECT_FALSE(filter.AcceptsAnyOf({}));
}

TEST(ValueFilterTest, ComparesIntegersByValue) {
  const auto input = InputFor(CallSpec::IntList, {"+07", " -1"});
  const IntFilter filter(*input, "item");
  EXPECT_TRUE(filter.Accepts(7));
  EXPECT_TRUE(filter.Accepts(-1));
  EXPECT_FALSE(filter.Accepts(0));
  EXPECT_FALSE(filter.Accepts(1));
  EXPECT_TRUE(filter.AcceptsAnyOf({0, 7}));
}

TEST(ValueFilterTest, KnowsEveryWordForTrueAndAListOfBothBooleans) {
  for (const char* const word : {"1", "y", "true", "True", "yes", "t", "T"}) {
    const auto input = InputFor(CallSpec::Bool, {word});
    EXPECT_TRUE(BoolFilter(*input, "item").Accepts(true)) << word;
    EXPECT_FALSE(BoolFilter(*input, "item").Accepts(false)) << word;
  }
  const auto both = InputFor(CallSpec::BoolList, {"no", "yes"});
  EXPECT_TRUE(BoolFilter(*both, "item").Accepts(true));
  EXPECT_TRUE(BoolFilter(*both, "item").Accepts(false));
}

TEST(ValueFilterTest, TakesOneValueOfAParameterThatIsNotAList) {
  const auto number = InputFor(CallSpec::Int, {"4"});
  EXPECT_TRUE(IntFilter(*number, "item").Accepts(4));
  EXPECT_FALSE(IntFilter(*number, "item").Accepts(6));
  const auto word = InputFor(CallSpec::String, {"x"});
  EXPECT_TRUE(StringFilter(*word, "item").Accepts("x"));
  EXPECT_FALSE(StringFilter(*word, "item").Accepts("y"));
}

TEST(ValueFilterTest, KnowsWhetherOnlyCertainValuesWereGiven) {
  const StringFilter filter(*InputFor(CallSpec::StringList, {"a", "1"}), "item");
  EXPECT_TRUE(filter.AreAllIn({"1", "a"}));
  EXPECT_TRUE(filter.AreAllIn({"1", "a", "b"}));
  EXPECT_FALSE(filter.AreAllIn({"a"}));
  EXPECT_FALSE(filter.AreAllIn({}));
  EXPECT_TRUE(StringFilter(*InputFor(CallSpec::StringList, {}), "item").AreAllIn({}));
}

}  // namespace
}  // namespace Kestrel::Host
