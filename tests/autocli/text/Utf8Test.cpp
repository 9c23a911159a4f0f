// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/text/Utf8.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace Kestrel::AutoCli {
namespace {

std::string Encoded(char32_t code) {
  std::string text;
  AppendCharacter(code, text);
  return text;
}

std::size_t SizeOf(std::string_view text) { return FirstCharacter(text).size; }

TEST(Utf8Test, EncodesInOneToFourBytes) {
  EXPECT_EQ(Encoded(0x7f), "\x7f");
  EXPECT_EQ(Encoded(0x80), "\xc2\x80");
  EXPECT_EQ(Encoded(0x7ff), "\xdf\xbf");
  EXPECT_EQ(Encoded(0x800), "\xe0\xa0\x80");
  EXPECT_EQ(Encoded(0xffff), "\xef\xbf\xbf");
  EXPECT_EQ(Encoded(0x10000), "\xf0\x90\x80\x80");
  EXPECT_EQ(Encoded(0x10ffff), "\xf4\x8f\xbf\xbf");
}

TEST(Utf8Test, DecodesEveryCharacter) {
  for (char32_t code = 0; code <= 0x10ffff; ++code) {
    const bool isSurrogate = code >= 0xd800 && code <= 0xdfff;
    const std::string text = Encoded(code);
    const Character first = FirstCharacter(text + "x");
    ASSERT_EQ(first.size, isSurrogate ? 0 : text.size()) << code;
    ASSERT_EQ(first.code, isSurrogate ? 0 : code);
  }
}

TEST(Utf8Test, DecodesNothingThatEndsTooEarly) {
  for (const char32_t code : {0x80, 0x800, 0x10000}) {
    std::string text = Encoded(code);
    for (text.pop_back(); !text.empty(); text.pop_back()) {
      EXPECT_EQ(SizeOf(text), 0u);
      EXPECT_EQ(SizeOf(text + "xyz"), 0u);
    }
  }
}

TEST(Utf8Test, DecodesNoOverlongForm) {
  EXPECT_EQ(SizeOf("\xc0\x80"), 0u);
  EXPECT_EQ(SizeOf("\xc1\xbf"), 0u);
  EXPECT_EQ(SizeOf("\xe0\x9f\xbf"), 0u);
  EXPECT_EQ(SizeOf("\xf0\x8f\xbf\xbf"), 0u);
}

TEST(Utf8Test, DecodesNoNumberBeyondTheLastCharacter) {
  EXPECT_EQ(SizeOf("\xf4\x90\x80\x80"), 0u);
  EXPECT_EQ(SizeOf("\xf5\x80\x80\x80"), 0u);
  EXPECT_EQ(SizeOf("\xff\xbf\xbf\xbf"), 0u);
}

TEST(Utf8Test, DecodesNoByteThatContinuesACharacter) {
  for (int byte = 0x80; byte < 0xc0; ++byte) {
    EXPECT_EQ(SizeOf(std::string(4, static_cast<char>(byte))), 0u);
  }
}

}  // namespace
}  // namespace Kestrel::AutoCli
