// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/text/TerminalText.h"

#include <gtest/gtest.h>

#include <string>

namespace Kestrel::AutoCli {
namespace {

TEST(TerminalTextTest, ShowsControlCharactersByTheirCode) {
  EXPECT_EQ(WithVisibleControls(""), "");
  EXPECT_EQ(WithVisibleControls("a\x1b[2Jb\r\x7f\b"), "a\\x1B[2Jb\\x0D\\x7F\\x08");
  EXPECT_EQ(WithVisibleControls(std::string("a\0b", 3)), "a\\x00b");
  EXPECT_EQ(WithVisibleControls("\xC2\x80\xC2\x9B\xC2\x9F"), "\\x80\\x9B\\x9F");
  EXPECT_EQ(WithVisibleControls("\x80 \x9B \x9F"), "\\x80 \\x9B \\x9F");
}

TEST(TerminalTextTest, KeepsAllOtherBytes) {
  const std::string text =
      "a\nb\tc ~\\ caf\xC3\xA9 \xC2\xA0 \xE2\x82\xAC \xE2\x80\x9C \xF0\x9F\x98\x80 \xC3\x9F \xFF";
  EXPECT_EQ(WithVisibleControls(text), text);
}

TEST(TerminalTextTest, AnIncompleteCharacterHidesNoControlCharacter) {
  EXPECT_EQ(WithVisibleControls("\xE2\x9Bx\x9B"), "\xE2\x9Bx\\x9B");
  EXPECT_EQ(WithVisibleControls("\xC3\x1b"), "\xC3\\x1B");
  EXPECT_EQ(WithVisibleControls("\xC2"), "\xC2");
}

TEST(TerminalTextTest, EscapesOnlyControlCharactersAmongTheAsciiBytes) {
  for (int byte = 0; byte < 0x80; ++byte) {
    const std::string text(1, static_cast<char>(byte));
    const bool isControl = (byte < 0x20 && byte != '\n' && byte != '\t') || byte == 0x7F;
    EXPECT_EQ(WithVisibleControls(text).size(), isControl ? 4u : 1u) << byte;
  }
}

}  // namespace
}  // namespace Kestrel::AutoCli
