// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kestrel/autocli/XmlUtil.h"
#include "plugins/shell-common/Descriptors.h"
#include "plugins/support/CommandCall.h"
#include "support/Golden.h"
#include "support/NamesWithEveryByte.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

// The program that converts data to value documents. The library must read the same data back,
// except that bytes which a document cannot contain are escaped.
namespace Kestrel::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// Returns the value that the library reads from the document made from `data`.
std::shared_ptr<MetaObj::MetaObject> ReadBack(const std::string& form, const std::string& data) {
  const ScopedTempDir folder;
  const std::string path = folder.Write("data", data);
  return AutoCli::XmlUtil_ParseXmlOutput(
      Witness("perl '" + ScriptPath("value-document") + "' " + form + " <'" + path + "'"));
}

std::string ReadBackText(const std::string& form, const std::string& data) {
  const auto value = ReadBack(form, data);
  EXPECT_NE(value, nullptr);
  return value == nullptr ? std::string() : value->ToString();
}

struct TextCase {
  const char* name;
  std::string data;
  std::string text;
};

TextCase Same(const char* name, const std::string& text) { return {name, text, text}; }

std::string AllBytes(int first, int last) {
  std::string text;
  for (int byte = first; byte <= last; ++byte) {
    text += static_cast<char>(byte);
  }
  return text;
}

class ValueDocumentTextTest : public ::testing::TestWithParam<TextCase> {};

TEST_P(ValueDocumentTextTest, IsReadBack) {
  EXPECT_EQ(ReadBackText("string", GetParam().data), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, ValueDocumentTextTest,
    ::testing::Values(
        // Edges.
        Same("Empty", ""), TextCase{"OneLineEnd", "\n", ""}, Same("Blanks", "  \t "),
        TextCase{"TwoLineEnds", "a\n\n", "a\n"}, Same("LineEndInFront", "\na"),
        // Markup.
        Same("Ampersand", "a & b &amp; &#65; &nosuch;"), Same("Tags", "</string></output><int>1"),
        Same("Quotes", "\"'`"), Same("SectionEnd", "<![CDATA[ x ]]> ]]>"),
        Same("Comment", "<!-- x -->"), Same("Instruction", "<?xml version=\"1.0\"?>"),
        TextCase{"CarriageReturns", "a\rb\r\nc", "a\\x0db\\x0d\nc"}, Same("Tabs", "a\tb"),
        Same("PrintableAscii", AllBytes(0x20, 0x7e)),
        // UTF-8: first and last characters of each length.
        Same("TwoBytes", "\xC2\xA0\xDF\xBF"), Same("ThreeBytes", "\xE0\xA0\x80\xEF\xBF\xBD"),
        Same("BesideSurrogates", "\xED\x9F\xBF\xEE\x80\x80"),
        Same("FourBytes", "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"),
        // Bytes that are not allowed in a document.
        TextCase{"Nul", std::string("a\0b", 3), "a\\x00b"},
        TextCase{"ControlCharacters", "\x01\x08\x0B\x0C\x0E\x1F", "\\x01\\x08\\x0b\\x0c\\x0e\\x1f"},
        TextCase{"NoCharacter", "\xEF\xBF\xBE\xEF\xBF\xBF", "\\xef\\xbf\\xbe\\xef\\xbf\\xbf"},
        TextCase{"Surrogate", "\xED\xA0\x80", "\\xed\\xa0\\x80"},
        TextCase{"Overlong", "\xC0\xAF\xE0\x80\xAF", "\\xc0\\xaf\\xe0\\x80\\xaf"},
        TextCase{"BeyondUnicode", "\xF4\x90\x80\x80", "\\xf4\\x90\\x80\\x80"},
        TextCase{"StrayContinuation", "a\x80z", "a\\x80z"},
        TextCase{"CutShort", "\xE2\x82", "\\xe2\\x82"},
        TextCase{"Latin1", "caf\xE9 & <\xFF>", "caf\\xe9 & <\\xff>"}),
    [](const auto& each) { return std::string(each.param.name); });

// SanitizedTextTest checks the native plug-in against the same golden file.
TEST(ValueDocumentTest, EscapesExactlyWhatTheNativePluginEscapes) {
  std::string shown;
  for (const std::string& name : NamesWithEveryByte()) {
    std::string data = name;
    data += '\0';
    shown += ToRows(ReadBack("-z list R A:string", data)).at(0).at("A") + "\n";
  }
  EXPECT_THAT(shown, MatchesGolden("escapes/names"));
}

TEST(ValueDocumentTest, ReadsBackALongText) {
  std::string text;
  while (text.size() < 1000000) {
    text += "a<&>\"\xC3\xA4\t\n";
  }
  EXPECT_EQ(ReadBackText("string", text + "."), text + ".");
}

TEST(ValueDocumentTest, RefusesAStringThatIsTooLongForReaders) {
  EXPECT_EQ(Witness("head -c 10000001 /dev/zero | tr '\\0' a | perl '" +
                    ScriptPath("value-document") + "' string 2>&1 >/dev/null || :"),
            "A string is longer than 10000000 bytes\n");
}

TEST(ValueDocumentTest, ReadsBackTheLongestText) {
  const std::string text(10000000, 'a');
  EXPECT_TRUE(ReadBackText("string", text) == text);
}

TEST(ValueDocumentTest, KeepsIntegersInTheirRange) {
  for (const auto& [data, number] : std::map<std::string, std::string>{
           {"0", "0"},
           {"-7", "-7"},
           {"-0", "0"},
           {"000000000000000000000012", "12"},
           {" +12 apples\n13", "12"},
           {"", "0"},
           {"none", "0"},
           {"9223372036854775807", "9223372036854775807"},
           {"9223372036854775808", "9223372036854775807"},
           {"-9223372036854775808", "-9223372036854775808"},
           {"-9223372036854775809", "-9223372036854775808"},
           {"123456789012345678901234567890", "9223372036854775807"}}) {
    EXPECT_EQ(ReadBackText("int", data), number) << data;
  }
}

TEST(ValueDocumentTest, TakesTheUsualWordsForTrue) {
  for (const char* const word : {"1", "y", "yes", "true", "True", "on\n"}) {
    EXPECT_EQ(ReadBackText("bool", word), "true") << word;
  }
  for (const char* const word : {"0", "n", "no", "false", "", "off", "truely"}) {
    EXPECT_EQ(ReadBackText("bool", word), "false") << word;
  }
}

TEST(ValueDocumentTest, TheLastFieldOfALineIsTheRest) {
  EXPECT_THAT(ToRows(ReadBack("list R A:string B:int C:string", "a\t1\tx\ty\t\n\n&\n")),
              ElementsAre(Row({{"A", "a"}, {"B", "1"}, {"C", "x\\x09y\\x09"}}),
                          Row({{"A", ""}, {"B", "0"}, {"C", ""}}),
                          Row({{"A", "&"}, {"B", "0"}, {"C", ""}})));
}

TEST(ValueDocumentTest, TakesAnythingBetweenNuls) {
  const std::string data(
      "a\tb\nc\0"
      "2\0"
      "<d>\0"
      "3\0",
      14);
  EXPECT_THAT(
      ToRows(ReadBack("-z list R A:string B:int", data)),
      ElementsAre(Row({{"A", "a\\x09b\\x0ac"}, {"B", "2"}}), Row({{"A", "<d>"}, {"B", "3"}})));
}

TEST(ValueDocumentTest, MakesAnEmptyListFromNothing) {
  EXPECT_THAT(ToRows(ReadBack("list R A:string", "")), IsEmpty());
  EXPECT_THAT(ToRows(ReadBack("-z list R A:string", "")), IsEmpty());
}

TEST(ValueDocumentTest, PutsOuterFieldsAroundInnerOnes) {
  const auto value = ReadBack("structure R A:string O/X:int O/Y:strings", "a\t1\tp, q\n");
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(value->ToString(),
            AutoCli::XmlUtil_ParseXmlOutput(
                "<o><structure typeName='R'><field name='A'><string>a</string></field>"
                "<field name='O'><structure typeName='RO'><field name='X'><int>1</int></field>"
                "<field name='Y'><list type='string'><string>p</string><string>q</string></list>"
                "</field></structure></field></structure></o>")
                ->ToString());
}

TEST(ValueDocumentTest, AStructureWithoutARowIsAnError) {
  EXPECT_EQ(Witness("perl '" + ScriptPath("value-document") +
                    "' structure R A:string </dev/null 2>&1 >/dev/null || :"),
            "There is no row to show\n");
}

TEST(ValueDocumentTest, PrintsItsUsageIfTheArgumentsAreInvalid) {
  for (const char* const arguments :
       {"", "nosuch", "list", "list R", "list 'R<' A:int", "list R A", "list R A:float"}) {
    EXPECT_EQ(Witness("perl '" + ScriptPath("value-document") + "' " + arguments +
                      " </dev/null 2>&1 >/dev/null; [ $? -eq 2 ]"),
              "Usage: value-document [-z] FORM [TYPE FIELD:KIND...]\n")
        << arguments;
  }
}

}  // namespace
}  // namespace Kestrel::Testing
