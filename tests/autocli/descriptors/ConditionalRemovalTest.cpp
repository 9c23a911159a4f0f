// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// TemplateTextTest compares the results with a model. These tests check how bytes that came from
// values are treated, and the amount of work: the number of bytes that all passes together look at.

#include "autocli/descriptors/ConditionalRemoval.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace Kestrel::AutoCli {
namespace {

std::string Repeat(std::string_view text, std::size_t count) {
  std::string repeated;
  for (; count > 0; --count) {
    repeated += text;
  }
  return repeated;
}

/// Returns the size of the text at the beginning of each pass, summed over all passes.
std::size_t BytesLookedAt(std::string_view text) {
  MarkedText rest(text);
  std::size_t bytes = rest.Size();
  while (RemoveConditionalsOnce(rest)) {
    bytes += rest.Size();
  }
  return bytes;
}

/// Returns nested blocks. Each removal takes away the end of the block around the conditional, so
/// that the next pass steps into that block.
std::string NestOfBlocks(std::size_t levels) {
  return Repeat("{ ", levels) + Repeat("$if{no,x} } {}", levels);
}

TEST(ConditionalRemovalTest, ReportsWhetherAPassRemovedAnything) {
  MarkedText text("a $if{no,x} {b}");
  EXPECT_TRUE(RemoveConditionalsOnce(text));
  EXPECT_EQ(text.Bytes(), "a  {b}");
  EXPECT_FALSE(RemoveConditionalsOnce(text));
  EXPECT_EQ(text.Bytes(), "a  {b}");
}

TEST(ConditionalRemovalTest, IgnoresMarkersInValues) {
  for (const char* value : {"$if{no,x}", "{", "}", "{}", "$", "$if{", "$if{no,"}) {
    MarkedText text("$if{no,");
    text.AppendValue(value);
    text.AppendTemplate("}{a}");
    while (RemoveConditionalsOnce(text)) {
    }
    EXPECT_EQ(text.Bytes(), "{a}") << value;
  }
}

TEST(ConditionalRemovalTest, AConditionalBeginsWithADollarAndABraceOfTheTemplate) {
  MarkedText dollar;
  dollar.AppendValue("$");
  dollar.AppendTemplate("if{no,x}");
  EXPECT_FALSE(RemoveConditionalsOnce(dollar));

  MarkedText brace("$if");
  brace.AppendValue("{no,x");
  brace.AppendTemplate("{}");
  EXPECT_FALSE(RemoveConditionalsOnce(brace));

  MarkedText name("$if{");
  name.AppendValue("no");
  name.AppendTemplate(",x}");
  EXPECT_TRUE(RemoveConditionalsOnce(name));
}

TEST(ConditionalRemovalTest, RemembersWhichBytesCameFromValues) {
  MarkedText text("$if{no,x}");
  text.AppendValue("$if{no,y}");
  text.AppendTemplate("{");
  EXPECT_TRUE(RemoveConditionalsOnce(text));
  ASSERT_EQ(text.Bytes(), "$if{no,y}{");
  EXPECT_TRUE(text.IsFromValue(0));
  EXPECT_TRUE(text.IsFromValue(8));
  EXPECT_FALSE(text.IsFromValue(9));
}

TEST(ConditionalRemovalTest, AFlatTemplateTakesAtMostTwoPasses) {
  for (const std::size_t count : {1, 100, 10000}) {
    const std::string text = Repeat("tool $if{no,--no '$val{no}'} ${HOME} {c}\n", count);
    EXPECT_LE(BytesLookedAt(text), 2 * text.size()) << count;
  }
}

TEST(ConditionalRemovalTest, NestedConditionalsTakeAtMostTwoPasses) {
  const std::string nest = Repeat("a $if{no,b ", 16) + Repeat(" c}", 16);
  for (const std::size_t count : {1, 100, 10000}) {
    const std::string text = Repeat(nest, count);
    EXPECT_LE(BytesLookedAt(text), 2 * text.size()) << count;
  }
}

TEST(ConditionalRemovalTest, NestedBlocksTakeAtMostOnePassForEachLevelAndOneMorePass) {
  constexpr std::size_t kLevels = 16;
  for (const std::size_t count : {1, 10, 1000}) {
    const std::string text = Repeat(NestOfBlocks(kLevels), count);
    EXPECT_LE(BytesLookedAt(text), (kLevels + 1) * text.size()) << count;
  }
}

TEST(ConditionalRemovalTest, AContrivedNestOfTenKilobytesTakesAtMostFiveMegabytesOfScanning) {
  constexpr std::size_t kSize = 10000;
  const std::size_t levels = kSize / NestOfBlocks(1).size();
  for (const std::string& text :
       {NestOfBlocks(levels), Repeat("{", kSize / 2) + NestOfBlocks(levels / 2),
        "$if{" + std::string(kSize / 3, 'a') + Repeat("{}", kSize / 6) + NestOfBlocks(levels / 3),
        Repeat("{", levels) + Repeat("$if{a,b}}{}", levels)}) {
    EXPECT_LE(BytesLookedAt(text), 5000000U) << text.substr(0, 20);
  }
}

}  // namespace
}  // namespace Kestrel::AutoCli
