// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/Parameter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kestrel/KestrelException.h"
#include "kestrel/callspec/Input.h"
#include "kestrel/callspec/Output.h"
#include "kestrel/callspec/ParameterConstraint.h"

namespace Kestrel::Host {
namespace {

using CallSpec::Input;
using CallSpec::InputSpec;
using CallSpec::Output;
using CallSpec::ParameterSpec;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::Throws;

std::shared_ptr<InputSpec> SpecWith(const Parameter& parameter) {
  auto spec = InputSpec::New();
  parameter.AddTo(*spec);
  return spec;
}

std::shared_ptr<ParameterSpec> Declared(const Parameter& parameter) {
  return SpecWith(parameter)->GetParameters().at(0);
}

// Returns the error messages for an input in which the parameter "item" has the value `value`.
std::vector<std::string> ErrorsFor(const Parameter& parameter, const std::string& value) {
  const auto spec = SpecWith(parameter);
  const auto input = Input::New();
  const auto output = Output::New();
  input->SetInputSpec(spec);
  input->AddParameter("item", value);
  spec->Validate(input, output);
  return output->GetErrors();
}

TEST(ParameterTest, IsOptionalAndPublicUnlessDeclaredOtherwise) {
  const auto spec = Declared(Parameter("item", CallSpec::String, "What it is."));
  EXPECT_EQ(spec->GetName(), "item");
  EXPECT_EQ(spec->GetType(), CallSpec::String);
  EXPECT_EQ(spec->GetDescription(false), "What it is.");
  EXPECT_EQ(spec->GetShortName(), "");
  EXPECT_FALSE(spec->IsRequired());
  EXPECT_FALSE(spec->IsSecret());
  EXPECT_EQ(spec->GetConstraint(), nullptr);
}

TEST(ParameterTest, CombinesDeclarationsInOneChain) {
  const auto spec = Declared(
      Parameter("item", CallSpec::String, "x").Short("s").Required().Secret().Matching("[a-z]+"));
  EXPECT_EQ(spec->GetShortName(), "s");
  EXPECT_TRUE(spec->IsRequired());
  EXPECT_TRUE(spec->IsSecret());
  EXPECT_EQ(spec->GetConstraint()->GetStringRegex(), "[a-z]+");
}

TEST(ParameterTest, AcceptsIntegersBetweenItsBounds) {
  const Parameter parameter = Parameter("item", CallSpec::Int, "x").Between(-1, 3);
  for (const char* const value : {"-1", "0", "3"}) {
    EXPECT_THAT(ErrorsFor(parameter, value), IsEmpty()) << value;
  }
  for (const char* const value : {"-2", "4", "99999999999"}) {
    EXPECT_THAT(ErrorsFor(parameter, value),
                ElementsAre("Invalid data constraint for parameter 'item'. Expected integer in the "
                            "range -1-3"))
        << value;
  }
}

TEST(ParameterTest, AcceptsOneOfItsIntegers) {
  const Parameter parameter = Parameter("item", CallSpec::Int, "x").OneOf({4, 6});
  EXPECT_THAT(ErrorsFor(parameter, "4"), IsEmpty());
  EXPECT_THAT(ErrorsFor(parameter, "+6"), IsEmpty());
  EXPECT_THAT(
      ErrorsFor(parameter, "5"),
      ElementsAre("Invalid data constraint for parameter 'item'. Expected a single value from "
                  "the set [4, 6]"));
}

TEST(ParameterTest, AcceptsOneOfItsWords) {
  const Parameter parameter = Parameter("item", CallSpec::String, "One of:%FULLENUM%")
                                  .OneOf({{"up", "runs"}, {"down", ""}});
  EXPECT_THAT(ErrorsFor(parameter, "down"), IsEmpty());
  EXPECT_THAT(ErrorsFor(parameter, "Up"), SizeIs(1)) << "words are case-sensitive";
  const auto spec = Declared(parameter);
  EXPECT_THAT(spec->GetConstraint()->GetStringEnum(), ElementsAre("up", "down"));
  EXPECT_EQ(spec->GetDescription(true), "One of:\n    up: runs\n");
}

TEST(ParameterTest, AcceptsOnlyValuesThatMatchCompletely) {
  const Parameter parameter = Parameter("item", CallSpec::String, "x").Matching("[a-z]+");
  EXPECT_THAT(ErrorsFor(parameter, "abc"), IsEmpty());
  for (const char* const value : {"", "abc1", "1abc", "ABC"}) {
    EXPECT_THAT(
        ErrorsFor(parameter, value),
        ElementsAre("Invalid data constraint for parameter 'item'. Value does not match the "
                    "expected regular expression ([a-z]+)"))
        << value;
  }
}

TEST(ParameterTest, IsAddedOnlyOnce) {
  const auto spec = InputSpec::New();
  const Parameter parameter("item", CallSpec::Flag, "x");
  parameter.AddTo(*spec);
  EXPECT_THAT([&] { parameter.AddTo(*spec); }, Throws<KestrelException>());
  EXPECT_THAT(spec->GetParameters(), SizeIs(1));
}

TEST(ParameterTest, OnlyAStringMayBeSecret) {
  EXPECT_THAT([] { Parameter("item", CallSpec::Int, "x").Secret(); }, Throws<KestrelException>());
}

}  // namespace
}  // namespace Kestrel::Host
