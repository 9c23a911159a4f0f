// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/FormatParameters.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <utility>

namespace Kestrel::AutoCli {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

std::vector<std::string> Split(const std::string& value) {
  FormatParameters params;
  params.SetParameter("list", value);
  return params.GetParameterAsList("list");
}

TEST(FormatParametersTest, StartsWithoutFormatterAndParameters) {
  const FormatParameters params;
  EXPECT_EQ(params.GetFormatter(), "");
  EXPECT_THAT(params.GetParameters(), IsEmpty());
}

TEST(FormatParametersTest, SetFormatterReplacesTheName) {
  FormatParameters params;
  params.SetFormatter("table");
  EXPECT_EQ(params.GetFormatter(), "table");
  params.SetFormatter(std::string("xml"));
  EXPECT_EQ(params.GetFormatter(), "xml");
  params.SetFormatter("");
  EXPECT_EQ(params.GetFormatter(), "");
}

TEST(FormatParametersTest, NullStringsCountAsEmpty) {
  FormatParameters params;
  params.SetFormatter("table");
  params.SetFormatter(static_cast<const char*>(nullptr));
  params.SetParameter(static_cast<const char*>(nullptr), "value");
  params.SetParameter("key", static_cast<const char*>(nullptr));
  EXPECT_EQ(params.GetFormatter(), "");
  EXPECT_THAT(params.GetParameters(), ElementsAre(Pair("", "value"), Pair("key", "")));
}

TEST(FormatParametersTest, KeysAreExactByteStringsInByteOrder) {
  FormatParameters params;
  params.SetParameter("fields:Disk", "Name");
  params.SetParameter("Fields", "upper");
  params.SetParameter(std::string("fields"), std::string("lower"));
  EXPECT_THAT(params.GetParameters(), ElementsAre(Pair("Fields", "upper"), Pair("fields", "lower"),
                                                  Pair("fields:Disk", "Name")));
  EXPECT_TRUE(params.HasParameter("fields"));
  EXPECT_FALSE(params.HasParameter("FIELDS"));
  EXPECT_FALSE(params.HasParameter("fields:"));
  EXPECT_FALSE(params.HasParameter("fields:Disk "));
}

TEST(FormatParametersTest, SetParameterOverwritesAValue) {
  FormatParameters params;
  params.SetParameter("key", "one");
  params.SetParameter("key", "two");
  EXPECT_THAT(params.GetParameters(), ElementsAre(Pair("key", "two")));
}

TEST(FormatParametersTest, AnAbsentKeyHasASharedEmptyValueAndIsNotInserted) {
  FormatParameters params;
  const FormatParameters others;
  const std::string& absent = params.GetParameter("absent");
  EXPECT_EQ(absent, "");
  EXPECT_EQ(&absent, &others.GetParameter("another"));
  EXPECT_FALSE(params.HasParameter("absent"));
  EXPECT_THAT(params.GetParameterAsList("absent"), IsEmpty());
  EXPECT_THAT(params.GetParameters(), IsEmpty());
}

TEST(FormatParametersTest, GetParameterRefersToTheStoredValue) {
  FormatParameters params;
  params.SetParameter("key", "value");
  EXPECT_EQ(params.GetParameter("key"), "value");
  EXPECT_EQ(&params.GetParameter("key"), &params.GetParameters().at("key"));
}

TEST(FormatParametersTest, OverrideValuesKeepsTheNameWhenTheOtherHasNone) {
  FormatParameters params;
  params.SetFormatter("table");
  params.OverrideValues(FormatParameters());
  EXPECT_EQ(params.GetFormatter(), "table");
}

TEST(FormatParametersTest, OverrideValuesTakesTheOthersName) {
  FormatParameters params;
  params.SetFormatter("table");
  FormatParameters other;
  other.SetFormatter("xml");
  params.OverrideValues(other);
  EXPECT_EQ(params.GetFormatter(), "xml");
  EXPECT_EQ(other.GetFormatter(), "xml");
}

TEST(FormatParametersTest, OverrideValuesMergesTheParameters) {
  FormatParameters params;
  params.SetParameter("both", "mine");
  params.SetParameter("only-mine", "kept");
  FormatParameters other;
  other.SetParameter("both", "theirs");
  other.SetParameter("only-theirs", "");
  params.OverrideValues(other);
  EXPECT_THAT(params.GetParameters(), ElementsAre(Pair("both", "theirs"), Pair("only-mine", "kept"),
                                                  Pair("only-theirs", "")));
  EXPECT_THAT(other.GetParameters(), ElementsAre(Pair("both", "theirs"), Pair("only-theirs", "")));
}

TEST(FormatParametersTest, OverridingByItselfChangesNothing) {
  FormatParameters params;
  params.SetFormatter("table");
  params.SetParameter("key", "value");
  params.OverrideValues(params);
  EXPECT_EQ(params.GetFormatter(), "table");
  EXPECT_THAT(params.GetParameters(), ElementsAre(Pair("key", "value")));
}

TEST(FormatParametersTest, IsCopiedAndMovedAsAPlainValue) {
  FormatParameters params;
  params.SetFormatter("table");
  params.SetParameter("key", "value");
  const FormatParameters copy = params;
  FormatParameters target;
  target.SetParameter("old", "gone");
  target = std::move(params);
  for (const FormatParameters* each : {&copy, &std::as_const(target)}) {
    EXPECT_EQ(each->GetFormatter(), "table");
    EXPECT_THAT(each->GetParameters(), ElementsAre(Pair("key", "value")));
  }
  EXPECT_TRUE(std::is_nothrow_move_assignable_v<FormatParameters>);
}

TEST(FormatParametersTest, AListIsSplitAtEveryComma) {
  EXPECT_THAT(Split("a,b"), ElementsAre("a", "b"));
  EXPECT_THAT(Split("a"), ElementsAre("a"));
}

TEST(FormatParametersTest, AListKeepsSpaces) {
  EXPECT_THAT(Split(" a, b"), ElementsAre(" a", " b"));
}

TEST(FormatParametersTest, AListKeepsEmptyPiecesBetweenAndBeforeCommas) {
  EXPECT_THAT(Split("a,,b"), ElementsAre("a", "", "b"));
  EXPECT_THAT(Split(",a"), ElementsAre("", "a"));
}

TEST(FormatParametersTest, AListDropsTheEmptyPieceAfterATrailingComma) {
  EXPECT_THAT(Split("a,b,"), ElementsAre("a", "b"));
  EXPECT_THAT(Split(","), ElementsAre(""));
  EXPECT_THAT(Split(",,"), ElementsAre("", ""));
}

TEST(FormatParametersTest, AnEmptyValueIsAnEmptyList) { EXPECT_THAT(Split(""), IsEmpty()); }

TEST(FormatParametersTest, AListOfAHundredThousandNamesIsSplit) {
  std::string value;
  for (int i = 0; i < 100000; ++i) {
    value += "n" + std::to_string(i) + ",";
  }
  const std::vector<std::string> names = Split(value);
  ASSERT_EQ(names.size(), 100000u);
  EXPECT_EQ(names.front(), "n0");
  EXPECT_EQ(names.back(), "n99999");
}

}  // namespace
}  // namespace Kestrel::AutoCli
