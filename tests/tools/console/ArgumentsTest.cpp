// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/console/Arguments.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Kestrel::Console {
namespace {

const OptionNames kNames = {{"--list", "-l"}, {"--color"}};

/// Reads the words; returns each option with its value, and each operand, in brackets.
std::string Read(const std::vector<std::string>& words) {
  std::string read;
  ReadArguments(words, kNames, [&read](const std::string& option, const std::string& value) {
    read += '[' + option + '|' + value + ']';
  });
  return read;
}

std::string FaultOf(const std::vector<std::string>& words) {
  try {
    Read(words);
  } catch (const UsageError& error) {
    return error.what();
  }
  return "";
}

TEST(ArgumentsTest, ReadsNothingFromNoWords) { EXPECT_EQ(Read({}), ""); }

TEST(ArgumentsTest, ReadsOptionsAndOperandsInTheirOrder) {
  EXPECT_EQ(Read({"hat", "--list", "coat", "-l"}), "[|hat][--list|][|coat][-l|]");
}

TEST(ArgumentsTest, AValueIsInTheWordOfItsOptionOrTheNextOne) {
  EXPECT_EQ(Read({"--color=red", "--color", "blue"}), "[--color|red][--color|blue]");
}

TEST(ArgumentsTest, AValueMayBeEmptyOrContainAnEqualsSign) {
  EXPECT_EQ(Read({"--color=", "--color=a=b"}), "[--color|][--color|a=b]");
}

TEST(ArgumentsTest, TheNextWordIsTheValueWhateverItIs) {
  EXPECT_EQ(Read({"--color", "--list", "--color", "--"}), "[--color|--list][--color|--]");
}

TEST(ArgumentsTest, AHyphenAndTheEmptyWordAreOperands) { EXPECT_EQ(Read({"-", ""}), "[|-][|]"); }

TEST(ArgumentsTest, AllWordsAfterTwoHyphensAreOperands) {
  EXPECT_EQ(Read({"--list", "--", "--list", "--"}), "[--list|][|--list][|--]");
}

TEST(ArgumentsTest, RefusesAnUnknownOption) {
  EXPECT_EQ(FaultOf({"--size"}), "there is no option --size");
  EXPECT_EQ(FaultOf({"--size=7"}), "there is no option --size");
  EXPECT_EQ(FaultOf({"-x"}), "there is no option -x");
}

TEST(ArgumentsTest, RefusesAFlagWithAValue) {
  EXPECT_EQ(FaultOf({"--list=7"}), "--list takes no value");
}

TEST(ArgumentsTest, RefusesAnOptionWithoutItsValue) {
  EXPECT_EQ(FaultOf({"hat", "--color"}), "--color has no value");
}

}  // namespace
}  // namespace Kestrel::Console
