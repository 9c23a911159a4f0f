// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/text/TextPieces.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/regex.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::AutoCli {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::vector<std::string> Cut(std::string_view text) {
  std::vector<std::string> list;
  TextPieces pieces(text, ',');
  for (std::string_view piece; pieces.Next(piece);) {
    list.emplace_back(piece);
  }
  return list;
}

TEST(TextPiecesTest, KeepsEmptyPiecesExceptTheLast) {
  EXPECT_THAT(Cut(""), IsEmpty());
  EXPECT_THAT(Cut(","), ElementsAre(""));
  EXPECT_THAT(Cut("a,,b,"), ElementsAre("a", "", "b"));
}

TEST(TextPiecesTest, StaysAtTheEnd) {
  TextPieces pieces("a", ',');
  std::string_view piece;
  EXPECT_TRUE(pieces.Next(piece));
  EXPECT_FALSE(pieces.Next(piece));
  EXPECT_FALSE(pieces.Next(piece));
  EXPECT_EQ(piece, "a");
}

/// Calls `visit` with every string of at most `length` letters of `alphabet`.
template <typename Visit>
void ForEachText(const std::string& alphabet, std::size_t length, const Visit& visit) {
  std::vector<std::string> texts = {""};
  for (std::size_t i = 0; i < texts.size(); ++i) {
    visit(texts[i]);
    if (texts[i].size() < length) {
      for (const char c : alphabet) {
        texts.push_back(texts[i] + c);
      }
    }
  }
}

TEST(TextPiecesTest, SplitsAsATokenIteratorOfAnExpressionDoes) {
  const boost::regex comma(",");
  int count = 0;
  ForEachText("a, ", 8, [&](const std::string& text) {
    const boost::sregex_token_iterator tokens(text.begin(), text.end(), comma, -1);
    ASSERT_EQ(Cut(text), std::vector<std::string>(tokens, boost::sregex_token_iterator())) << text;
    ++count;
  });
  EXPECT_EQ(count, 9841);
}

}  // namespace
}  // namespace Kestrel::AutoCli
