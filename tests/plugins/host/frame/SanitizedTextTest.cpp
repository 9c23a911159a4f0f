// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/SanitizedText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "support/Golden.h"
#include "support/NamesWithEveryByte.h"

namespace Kestrel::Host {
namespace {

using ::testing::IsEmpty;

struct SanitizeCase {
  const char* name;
  std::string text;
  std::string sanitized;
};

SanitizeCase Same(const char* name, const char* text) { return {name, text, text}; }

const SanitizeCase kSanitizeCases[] = {
    Same("Empty", ""),
    Same("Ascii", " !\"#~\\x"),
    // Control characters.
    {"Nul", std::string("a\0b", 3), "a\\x00b"},
    {"LineFeed", "a\nb", "a\\x0ab"},
    {"Tab", "a\tb", "a\\x09b"},
    {"CarriageReturn", "a\rb", "a\\x0db"},
    {"Delete", "\x7f", "\\x7f"},
    {"EscapeSequence", "\x1b[2J", "\\x1b[2J"},
    {"TitleOfATerminal", "\x1b]0;x\x07", "\\x1b]0;x\\x07"},
    // U+0080 to U+009F and their neighbours.
    {"FirstControlPair", "\xc2\x80", "\\xc2\\x80"},
    {"CommandOfATerminalInUtf8", "\xc2\x9b\x32J", "\\xc2\\x9b2J"},
    {"LastControlPair", "\xc2\x9f", "\\xc2\\x9f"},
    Same("NoBreakSpace", "\xc2\xa0"),
    Same("TwoByteCharacterWithAControlsLastByte", "\xc3\x9f"),
    // UTF-8.
    Same("TwoBytes", "caf\xc3\xa9"),
    Same("ThreeBytes", "\xe2\x82\xac"),
    Same("FourBytes", "\xf0\x9f\x98\x80"),
    // Bytes that are not UTF-8.
    {"Latin1", "caf\xe9", "caf\\xe9"},
    {"StrayContinuation", "a\x80z", "a\\x80z"},
    {"CutShort", "\xe2\x82", "\\xe2\\x82"},
    {"CutBeforeAControlPair", "\xc2\xc2\x9b", "\\xc2\\xc2\\x9b"},
    {"Overlong", "\xc0\xaf", "\\xc0\\xaf"},
    {"Surrogate", "\xed\xa0\x80", "\\xed\\xa0\\x80"},
    {"BeyondUnicode", "\xf4\x90\x80\x80", "\\xf4\\x90\\x80\\x80"},
    {"ByteOfNoCharacter", "bad \xff", "bad \\xff"},
};

class SanitizedTextCaseTest : public ::testing::TestWithParam<SanitizeCase> {};

TEST_P(SanitizedTextCaseTest, IsSafeToPrint) {
  EXPECT_EQ(SanitizedText(GetParam().text)->GetValue(), GetParam().sanitized);
}

INSTANTIATE_TEST_SUITE_P(Texts, SanitizedTextCaseTest, ::testing::ValuesIn(kSanitizeCases),
                         [](const auto& test) { return test.param.name; });

TEST(SanitizedTextTest, EscapesEveryControlCharacterAndNoOtherAsciiByte) {
  for (int byte = 0; byte < 0x80; ++byte) {
    const std::string text(1, static_cast<char>(byte));
    const bool isControl = byte < 0x20 || byte == 0x7f;
    EXPECT_EQ(SanitizedText(text)->GetValue() == text, !isControl) << byte;
    EXPECT_EQ(SanitizedText(text)->GetValue().size(), isControl ? 4u : 1u) << byte;
  }
}

// ValueDocumentTest checks the scripts of descriptors against the same golden file.
TEST(SanitizedTextTest, EscapesNamesThatContainEveryByte) {
  std::string shown;
  for (const std::string& name : Testing::NamesWithEveryByte()) {
    shown += SanitizedText(name)->GetValue() + "\n";
  }
  EXPECT_THAT(shown, Testing::MatchesGolden("escapes/names"));
}

TEST(SanitizedTextTest, KeepsLineFeedsAndTabs) {
  EXPECT_EQ(SanitizedLines("a\tb\nc\r\x1b")->GetValue(), "a\tb\nc\\x0d\\x1b");
}

TEST(SanitizedTextTest, SanitizesAListOfStrings) {
  const auto list = SanitizedList({"a", "", "b\n"});
  EXPECT_EQ(list->GetListType(), MetaObj::MetaType::String);
  ASSERT_EQ(list->GetCount(), 3u);
  EXPECT_EQ(list->GetItem(0)->ToString(), "a");
  EXPECT_EQ(list->GetItem(1)->ToString(), "");
  EXPECT_EQ(list->GetItem(2)->ToString(), "b\\x0a");
  EXPECT_THAT(SanitizedList({})->GetObjects(), IsEmpty());
}

TEST(SanitizedTextTest, EscapesControlCharactersAtEachPlaceOfAString) {
  for (std::size_t length = 1; length <= 20; ++length) {
    for (std::size_t place = 0; place < length; ++place) {
      for (const int byte : {0x00, 0x01, 0x1f, 0x20, 0x7e, 0x7f}) {
        std::string text(length, 'x');
        text[place] = static_cast<char>(byte);
        const std::string value = SanitizedText(text)->GetValue();
        const bool isControl = byte < 0x20 || byte == 0x7f;
        EXPECT_EQ(value.size(), length + (isControl ? 3 : 0)) << length << " " << place;
        EXPECT_EQ(value[place], isControl ? '\\' : text[place]) << length << " " << place;
      }
    }
  }
}

TEST(SanitizedTextTest, EscapesAControlPairAtEachPlaceOfAString) {
  for (std::size_t place = 0; place < 20; ++place) {
    const std::string before(place, 'x');
    EXPECT_EQ(SanitizedText(before + "\xc2\x9b" + "after")->GetValue(),
              before + "\\xc2\\x9b" + "after");
  }
}

TEST(RepeatedTextTest, SharesTheValueOfEqualStringsInARow) {
  RepeatedText texts;
  EXPECT_EQ(texts.Get("")->GetValue(), "");
  const auto first = texts.Get("a\n");
  EXPECT_EQ(first->GetValue(), "a\\x0a");
  EXPECT_EQ(texts.Get("a\n"), first);
  EXPECT_EQ(texts.Get("b")->GetValue(), "b");
  EXPECT_EQ(texts.Get("a\n")->GetValue(), "a\\x0a");
  EXPECT_EQ(texts.Get("")->GetValue(), "");
}

}  // namespace
}  // namespace Kestrel::Host
