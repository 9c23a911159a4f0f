// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/formatters/HeaderMarker.h"

#include <gtest/gtest.h>

#include <boost/regex.hpp>
#include <string>
#include <vector>

namespace Kestrel::AutoCli {
namespace {

TEST(HeaderMarkerTest, FindsTheFieldOfTheLastPair) {
  EXPECT_EQ(FindHeaderMarker("Disk %Name%"), "Name");
  EXPECT_EQ(FindHeaderMarker("%A% of %B% here"), "B");
  EXPECT_EQ(FindHeaderMarker("%A% 100%"), " 100");
  EXPECT_EQ(FindHeaderMarker("%two words%"), "two words");
  EXPECT_EQ(FindHeaderMarker("%a%%"), "a%");
}

TEST(HeaderMarkerTest, FindsNothingWithoutAPairAroundAByte) {
  EXPECT_EQ(FindHeaderMarker(""), "");
  EXPECT_EQ(FindHeaderMarker("plain"), "");
  EXPECT_EQ(FindHeaderMarker("100%"), "");
  EXPECT_EQ(FindHeaderMarker("%%"), "");
  EXPECT_EQ(FindHeaderMarker("a %% b"), "");
}

TEST(HeaderMarkerTest, ScansAMegabyte) {
  const std::string text(1000000, 'x');
  EXPECT_EQ(FindHeaderMarker("%" + text + "%"), text);
  EXPECT_EQ(FindHeaderMarker("%%" + text), "");
}

TEST(HeaderMarkerTest, EqualsTheExpressionOnEveryShortString) {
  const boost::regex expression(".*%(.+)%.*");
  const std::string alphabet = "a%\n ";
  std::vector<std::string> texts = {""};
  for (std::size_t i = 0; i < texts.size(); ++i) {
    const std::string text = texts[i];
    boost::smatch match;
    const std::string expected =
        boost::regex_match(text, match, expression) ? match[1].str() : std::string();
    ASSERT_EQ(FindHeaderMarker(text), expected) << "'" << text << "'";
    if (text.size() < 7) {
      for (const char c : alphabet) {
        texts.push_back(text + c);
      }
    }
  }
  EXPECT_EQ(texts.size(), 21845u);
}

}  // namespace
}  // namespace Kestrel::AutoCli
