// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iomanip>
#include <ios>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "kestrel/autocli/Util.h"
#include "support/LimitedBuffer.h"
#include "support/Random.h"
#include "support/SlowFitString.h"

namespace Kestrel::AutoCli {
namespace {

using ::Kestrel::Testing::FitArguments;
using ::Kestrel::Testing::FitSlowly;
using ::Kestrel::Testing::LimitedBuffer;

std::string Fit(const FitArguments& a) {
  std::ostringstream out;
  AutoCli_FitString(a.indent, a.width, a.text, a.skipFirstIndent, out, a.endLine, a.wrapChar,
                    a.splitLines);
  return out.str();
}

TEST(UtilFitStringTest, WritesAStringThatFitsAfterItsMargin) {
  EXPECT_EQ(Fit({4, 20, "short"}), "    short");
}

TEST(UtilFitStringTest, WritesOneSpaceForAMarginOfAtMostOneColumn) {
  EXPECT_EQ(Fit({0, 20, "short"}), " short");
  EXPECT_EQ(Fit({-3, 20, "short"}), " short");
  EXPECT_EQ(Fit({1, 20, "short"}), " short");
}

TEST(UtilFitStringTest, TheExceptionOfAStreamReachesTheCaller) {
  LimitedBuffer buffer(3);
  std::ostream out(&buffer);
  out.exceptions(std::ios_base::badbit);
  EXPECT_THROW(AutoCli_FitString(4, 20, "short", false, out, false, ' ', false),
               std::ios_base::failure);
}

TEST(UtilFitStringTest, OmitsTheFirstMargin) {
  EXPECT_EQ(Fit({4, 20, "short", true}), "short");
  EXPECT_EQ(Fit({4, 20, "aaaa bbbb cccc dddd", true}), "aaaa bbbb cccc \n    dddd");
}

TEST(UtilFitStringTest, EndsTheLastLineOnRequest) {
  EXPECT_EQ(Fit({4, 20, "short", false, true}), "    short\n");
  EXPECT_EQ(Fit({4, 20, "", false, true}), "    \n");
}

TEST(UtilFitStringTest, BreaksAtSpacesAndKeepsOne) {
  EXPECT_EQ(Fit({4, 20, "aaaa bbbb cccc dddd"}), "    aaaa bbbb cccc \n    dddd");
}

TEST(UtilFitStringTest, EndsABrokenLineWithTheWrapCharacter) {
  EXPECT_EQ(Fit({4, 20, "aaaa bbbb cccc dddd", false, true, '\\'}),
            "    aaaa bbbb cccc\\\n    dddd\n");
}

TEST(UtilFitStringTest, DoesNotBreakAStringOfExactlyTheWidth) {
  EXPECT_EQ(Fit({4, 20, "aaaa bbbb cccc d"}), "    aaaa bbbb cccc d");
  EXPECT_EQ(Fit({4, 20, "aaaa bbbb cccc dd"}), "    aaaa bbbb cccc \n    dd");
}

TEST(UtilFitStringTest, CountsAColumnBeforeEachWordIncludingTheFirst) {
  // Without the column before the first word, ten bytes would fit in a line of ten.
  EXPECT_EQ(Fit({0, 10, "aaaa bbbbb cc"}), " aaaa \n bbbbb cc");
  EXPECT_EQ(Fit({0, 10, "aaaa bbbb ccc"}), " aaaa bbbb \n ccc");
}

TEST(UtilFitStringTest, BreaksOffAFirstWordThatIsTooLong) {
  EXPECT_EQ(Fit({2, 8, "aaaaaa bb"}), "   \n  aaaaaa \n  bb");
  EXPECT_EQ(Fit({2, 8, "aaaaaaaaaa"}), "   \n  aaaaaaaaaa");
  EXPECT_EQ(Fit({2, 8, "aaaaaaaaaa", true, false, '+'}), "+\n  aaaaaaaaaa");
  EXPECT_EQ(Fit({2, 8, "aaaaa bb"}), "  aaaaa \n  bb");
}

TEST(UtilFitStringTest, NeverBreaksAWord) {
  EXPECT_EQ(Fit({2, 8, "a bbbbbbbbbbbb c"}), "  a \n  bbbbbbbbbbbb \n  c");
}

TEST(UtilFitStringTest, KeepsTheSpacesBetweenWords) {
  EXPECT_EQ(Fit({1, 9, "a  b   c"}), " a  b   c");
  EXPECT_EQ(Fit({1, 9, "a  b    c"}), " a  b    \n c");
  EXPECT_EQ(Fit({1, 9, " a bbbbbbb"}), "  a \n bbbbbbb");
}

TEST(UtilFitStringTest, DropsTheLastSpaceOfABrokenString) {
  EXPECT_EQ(Fit({1, 9, "aaaa bbbb "}), " aaaa \n bbbb");
  EXPECT_EQ(Fit({1, 9, "aaaa bb  "}), " aaaa bb \n ");
  EXPECT_EQ(Fit({1, 9, "aaaa bb "}), " aaaa bb ");
}

TEST(UtilFitStringTest, BreaksNothingWithoutColumns) {
  const std::string text = "aaaa bbbb cccc\ndddd ";
  EXPECT_EQ(Fit({4, 4, text}), "    " + text);
  EXPECT_EQ(Fit({9, 4, text}), "         " + text);
  EXPECT_EQ(Fit({4, 0, text, false, true}), "    " + text + "\n");
  EXPECT_EQ(Fit({4, -1, text, true}), text);
  EXPECT_EQ(Fit({0, 0, text}), " " + text);
  EXPECT_EQ(Fit({4, 4, "aaaa bbbb\ncccc ", false, true, 0, true}), "    aaaa bbbb\n    cccc \n");
}

TEST(UtilFitStringTest, TreatsALineBreakLikeAnyOtherByteIfLinesAreNotSplit) {
  EXPECT_EQ(Fit({2, 9, "aa\nbb cc dd"}), "  aa\nbb \n  cc dd");
}

TEST(UtilFitStringTest, FitsEachLineSeparately) {
  EXPECT_EQ(Fit({2, 10, "one\ntwo three four\n\nfive", false, true, 0, true}),
            "  one\n  two \n  three \n  four\n  \n  five\n");
}

TEST(UtilFitStringTest, OmitsTheMarginOfTheFirstLineOnly) {
  EXPECT_EQ(Fit({2, 10, "one\ntwo", true, true, 0, true}), "one\n  two\n");
}

TEST(UtilFitStringTest, JoinsLinesBySingleBreaksWhenTheLastIsNotEnded) {
  EXPECT_EQ(Fit({2, 10, "one\ntwo\nthree", false, false, 0, true}), "  one\n  two\n  three");
}

TEST(UtilFitStringTest, WritesNothingForAnEmptyStringSplitIntoLines) {
  EXPECT_EQ(Fit({4, 20, "", false, true, 0, true}), "");
  EXPECT_EQ(Fit({4, 20, "", true, false, 0, true}), "");
}

TEST(UtilFitStringTest, AFinalLineBreakMakesNoFurtherLine) {
  EXPECT_EQ(Fit({2, 20, "one\n", false, true, 0, true}), "  one\n");
  EXPECT_EQ(Fit({2, 20, "one\n", false, false, 0, true}), "  one");
  EXPECT_EQ(Fit({2, 20, "\n", false, true, 0, true}), "  \n");
  EXPECT_EQ(Fit({2, 20, "\n\n", false, true, 0, true}), "  \n  \n");
}

TEST(UtilFitStringTest, CountsBytes) {
  EXPECT_EQ(Fit({0, 6, "\xc3\xa9\xc3\xa9 \xc3\xa9"}), " \xc3\xa9\xc3\xa9 \n \xc3\xa9");
  EXPECT_EQ(Fit({0, 80, std::string("a\0b", 3)}), std::string(" a\0b", 4));
}

TEST(UtilFitStringTest, AcceptsTheGreatestWidths) {
  EXPECT_EQ(Fit({-2147483647, 2147483647, "aa bb"}), " aa bb");
  EXPECT_EQ(Fit({2147483647, -2147483647, "aa bb", true}), "aa bb");
}

TEST(UtilFitStringTest, IgnoresTheStateOfTheStream) {
  std::ostringstream out;
  out << std::hex << std::showbase << std::setw(20) << std::setfill('*') << std::right;
  AutoCli_FitString(4, 20, "aaaa bbbb cccc dddd", false, out, true, 0, false);
  EXPECT_EQ(out.str(), "    aaaa bbbb cccc \n    dddd\n");
  EXPECT_EQ(out.width(), 0);
  EXPECT_EQ(out.fill(), '*');
  EXPECT_EQ(out.flags() & std::ios_base::basefield, std::ios_base::hex);
  EXPECT_EQ(out.flags() & std::ios_base::adjustfield, std::ios_base::right);
}

TEST(UtilFitStringTest, StopsAtAStreamThatFails) {
  std::string text;
  for (int i = 0; i < 1000000; ++i) {
    text += i % 10 == 0 ? "line\n" : "words ";
  }
  for (const bool splitLines : {false, true}) {
    // Writing so wide a margin for every line would take minutes.
    LimitedBuffer buffer(1000000);
    std::ostream out(&buffer);
    AutoCli_FitString(1000000, 1000020, text, true, out, true, 0, splitLines);
    EXPECT_TRUE(out.bad());
    EXPECT_EQ(buffer.GetText().size(), 1000000u);
    EXPECT_EQ(buffer.GetRefusals(), 1);
  }
}

TEST(UtilFitStringTest, EqualsTheSlowModelOnRandomStrings) {
  Testing::Random random;
  SCOPED_TRACE(random.HowToRepeat());
  const auto pick = [&random](int from, int to) { return random.Between(from, to); };
  const std::string alphabet = "abcd    \n";
  for (int round = 0; round < 100000; ++round) {
    FitArguments a;
    a.indent = pick(-2, 12);
    a.width = pick(0, 3) == 0 ? pick(-1, 4) : pick(0, 40);
    const int length = pick(0, 7) == 0 ? pick(0, 3) : pick(0, 60);
    const int letters = pick(0, 1) == 0 ? 5 : static_cast<int>(alphabet.size());
    for (int i = 0; i < length; ++i) {
      a.text += alphabet[static_cast<std::size_t>(pick(0, letters - 1))];
    }
    a.skipFirstIndent = pick(0, 1) == 1;
    a.endLine = pick(0, 1) == 1;
    a.wrapChar = pick(0, 1) == 1 ? '\\' : '\0';
    a.splitLines = pick(0, 1) == 1;
    ASSERT_EQ(Fit(a), FitSlowly(a))
        << "round " << round << " indent " << a.indent << " width " << a.width << " text '"
        << a.text << "' flags " << a.skipFirstIndent << a.endLine << a.splitLines;
  }
}

TEST(UtilFitStringTest, FitsTenMegabytes) {
  std::string words;
  for (int i = 0; i < 1000000; ++i) {
    words += "nine bytes";
    words.back() = ' ';
  }
  const std::string fitted = Fit({8, 80, words, false, true, 0, true});
  EXPECT_GT(fitted.size(), words.size());
  const std::string oneWord(10 * 1024 * 1024, 'x');
  EXPECT_EQ(Fit({8, 80, oneWord, true, false, '+'}), "+\n        " + oneWord);
  EXPECT_EQ(Fit({8, 2000000000, words}).size(), words.size() + 8);
  // 200,000 lines of five empty words, with four spaces each; a break is a space, '\n' and a
  // margin.
  EXPECT_EQ(Fit({0, 5, std::string(1000000, ' ')}).size(), 1u + 200000 * 4 + 199999 * 3);
}

}  // namespace
}  // namespace Kestrel::AutoCli
