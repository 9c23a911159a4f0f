// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/formats/DisplayText.h"

#include <gmock/gmock.h>
#include <wchar.h>

#include <string>
#include <vector>

#include "vexil/formats/DisplayFixture.h"
#include "vexil/formats/Utf8.h"

namespace Kestrel::Formats {
namespace {

using ::testing::ElementsAre;

std::vector<std::string> Break(std::string_view text, std::size_t width, bool marks = false) {
  std::vector<std::string> lines;
  for (const DisplayLine& line : BreakText(text, width, marks)) {
    EXPECT_LE(line.width.max, width);
    lines.push_back(line.text);
  }
  return lines;
}

std::string Shown(std::string_view text) { return Break(text, 1000).at(0); }

std::size_t UsualWidth(std::string_view text) { return MeasureText(text).usual; }

// Characters that the system does not know, or that the table hides, are not compared.
TEST(WidthClassTest, IsThatOfTheSystem) {
  const Utf8Locale locale;
  for (char32_t code = 0; code < 0x110000; ++code) {
    const int width = wcwidth(static_cast<wchar_t>(code));
    const WidthClass widthClass = WidthClassOf(code);
    if (width >= 0 && widthClass != WidthClass::Hidden) {
      ASSERT_EQ(static_cast<int>(widthClass), width) << std::hex << static_cast<unsigned>(code);
    }
  }
}

TEST(WidthClassTest, HidesWhatActsOnTheTerminalOrOnOtherCharacters) {
  for (const char32_t code : {0x0U,    0x1fU,   0x7fU,   0x80U,   0x9fU,   0xadU,    0x61cU,
                              0x200bU, 0x200eU, 0x200fU, 0x2028U, 0x2029U, 0x202aU,  0x202eU,
                              0x2066U, 0x2069U, 0xfeffU, 0xd800U, 0xffffU, 0xe0041U, 0x10ffffU}) {
    EXPECT_EQ(WidthClassOf(code), WidthClass::Hidden) << std::hex << static_cast<unsigned>(code);
  }
}

TEST(MeasureTextTest, CountsColumns) {
  EXPECT_EQ(UsualWidth(""), 0u);
  EXPECT_EQ(UsualWidth("abc"), 3u);
  EXPECT_EQ(UsualWidth("Zo\u00eb"), 3u);
  EXPECT_EQ(UsualWidth("Zoe\u0308"), 3u);
  EXPECT_EQ(UsualWidth("\u6f22\u5b57"), 4u);
  EXPECT_EQ(UsualWidth("\uff71"), 1u);
  EXPECT_EQ(UsualWidth("\U0001f600"), 2u);
  EXPECT_EQ(UsualWidth("\u1112\u1161\u11ab"), 2u);
  EXPECT_EQ(UsualWidth("\n\x1b\xff"), 10u);
}

TEST(MeasureTextTest, AnEmojiSelectorAfterANarrowCharacterMayTakeAColumn) {
  const TextWidth afterEscape = MeasureText("\x80\ufe0f");
  EXPECT_EQ(afterEscape.usual, 4u);
  EXPECT_EQ(afterEscape.max, 5u);
  const TextWidth atTheBeginning = MeasureText("\ufe0f");  // perhaps after a space
  EXPECT_EQ(atTheBeginning.usual, 0u);
  EXPECT_EQ(atTheBeginning.max, 1u);
}

TEST(MeasureTextTest, KnowsThatTerminalsDifferAboutJoinedEmoji) {
  const TextWidth family = MeasureText("\U0001f468\u200d\U0001f469\u200d\U0001f467");
  EXPECT_EQ(family.usual, 2u);
  EXPECT_EQ(family.max, 6u);
  const TextWidth heart = MeasureText("\u2764\ufe0f");
  EXPECT_EQ(heart.usual, 1u);
  EXPECT_EQ(heart.max, 2u);
  EXPECT_EQ(UsualWidth("\U0001f1e9\U0001f1ea"), 2u);
  EXPECT_EQ(UsualWidth("a\u200db"), 2u);
}

TEST(BreakTextTest, BreaksAfterSpaces) {
  EXPECT_THAT(Break("", 5), ElementsAre(""));
  EXPECT_THAT(Break("one two", 7), ElementsAre("one two"));
  EXPECT_THAT(Break("one two", 6), ElementsAre("one", "two"));
  EXPECT_THAT(Break("one   two  ", 4), ElementsAre("one", "two"));
  EXPECT_THAT(Break("one two three", 7), ElementsAre("one two", "three"));
  EXPECT_THAT(Break("  one two", 6), ElementsAre("  one", "two"));
  EXPECT_THAT(Break("          ", 4), ElementsAre(""));
}

TEST(BreakTextTest, BreaksWordsThatAreTooLong) {
  EXPECT_THAT(Break("abcdefgh", 3), ElementsAre("abc", "def", "gh"));
  EXPECT_THAT(Break("a bcdefgh", 3), ElementsAre("a", "bcd", "efg", "h"));
  EXPECT_THAT(Break("   abcd", 3), ElementsAre("", "abc", "d"));
}

TEST(BreakTextTest, BreaksAfterWideCharacters) {
  EXPECT_THAT(Break("\u6f22\u5b57\u6f22", 5), ElementsAre("\u6f22\u5b57", "\u6f22"));
  EXPECT_THAT(Break("ab\u6f22cd", 5), ElementsAre("ab\u6f22", "cd"));
  EXPECT_THAT(Break("\u6f22\u0301\u6f22", 3), ElementsAre("\u6f22\u0301", "\u6f22"));
}

TEST(BreakTextTest, KeepsMarksWithTheirCharacter) {
  EXPECT_THAT(Break("abe\u0301\u0302", 3), ElementsAre("abe\u0301\u0302"));
  EXPECT_THAT(Break("abce\u0301", 3), ElementsAre("abc", "e\u0301"));
}

TEST(BreakTextTest, ShowsHiddenCharactersAsEscapes) {
  EXPECT_EQ(Shown("a\nb\rc\td"), "a\\nb\\rc\\td");
  EXPECT_EQ(Shown(std::string("\0", 1) + "\x1b[2J\x7f"), "\\x00\\x1b[2J\\x7f");
  EXPECT_EQ(Shown("\u009b\u202e\ufeff"), "\\u{9b}\\u{202e}\\u{feff}");
  EXPECT_EQ(Shown("\x80\xff\xe2\x82"), "\\x80\\xff\\xe2\\x82");
  EXPECT_EQ(Shown("\xed\xa0\x80"), "\\xed\\xa0\\x80");
}

TEST(BreakTextTest, MarksEscapesThatAreNotInTheText) {
  EXPECT_THAT(Break("\\n\n", 10, true), ElementsAre("\\n\x1b[7m\\n\x1b[27m"));
}

TEST(BreakTextTest, KeepsEscapesWholeIfPossible) {
  EXPECT_THAT(Break("ab\x1b", 4), ElementsAre("ab", "\\x1b"));
  EXPECT_THAT(Break("\x1b", 3), ElementsAre("\\x1", "b"));
  EXPECT_THAT(Break("\x1b", 1, true), ElementsAre("\x1b[7m\\\x1b[27m", "\x1b[7mx\x1b[27m",
                                                  "\x1b[7m1\x1b[27m", "\x1b[7mb\x1b[27m"));
  EXPECT_THAT(Break("\u6f22", 1), ElementsAre("\\", "u", "{", "6", "f", "2", "2", "}"));
}

TEST(BreakTextTest, UsesTheFullWidthOfAJoinedEmojiThatBeginsALine) {
  const auto lines = BreakText("\U0001f468\u200d\U0001f469", 3, false);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[1].width.usual, 2u);
}

}  // namespace
}  // namespace Kestrel::Formats
