// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/formats/FormatsFixture.h"

namespace Kestrel::Formats {
namespace {

std::string Yaml(const std::shared_ptr<MetaObject>& root, Parameters parameters = {}) {
  return Print(kYamlFormat, root, parameters);
}

std::string YamlString(const std::string& text) { return Yaml(MetaString::New(text)); }

TEST(YamlFormatTest, PrintsBlocks) {
  auto host = MetaStruct::New("Host");
  host->SetField("Disks", MakeDisks({{"sda", 1}, {"sdb", 2}}));
  host->SetField("Volume", MakeVolume());
  EXPECT_EQ(Yaml(host),
            "Disks:\n"
            "  - Name: sda\n"
            "    Size: 1\n"
            "  - Name: sdb\n"
            "    Size: 2\n"
            "Volume:\n"
            "  Disk:\n"
            "    Name: sda\n"
            "    Size: 7\n"
            "  Labels:\n"
            "    - a\n"
            "    - b\n"
            "  \"On\": true\n");
}

TEST(YamlFormatTest, PrintsListsAtTheRoot) {
  EXPECT_EQ(Yaml(MakeDisks({{"sda", 1}, {"sdb", 2}})),
            "- Name: sda\n  Size: 1\n- Name: sdb\n  Size: 2\n");
  EXPECT_EQ(Yaml(MakeTexts({"a", "b"})), "- a\n- b\n");
  EXPECT_EQ(Yaml(MakeList({MakeVolume()}), {{"fields", "Labels,Disk"}}),
            "- Labels:\n    - a\n    - b\n  Disk:\n    Name: sda\n    Size: 7\n");
}

TEST(YamlFormatTest, PrintsEmptyValuesWithoutABlock) {
  EXPECT_EQ(Yaml(MetaList::New(MetaType::Struct, nullptr)), "[]\n");
  EXPECT_EQ(Yaml(MetaStruct::New("Empty")), "{}\n");
  auto outer = MetaStruct::New("Outer");
  outer->SetField("A", MetaList::New(MetaType::Int));
  outer->SetField("B", MetaStruct::New("Empty"));
  EXPECT_EQ(Yaml(outer), "A: []\nB: {}\n");
  EXPECT_EQ(Yaml(MakeList({MetaStruct::New("Empty")})), "- {}\n");
}

TEST(YamlFormatTest, PrintsScalars) {
  EXPECT_EQ(Yaml(MetaBool::New(true)), "true\n");
  EXPECT_EQ(Yaml(MetaInt::New(-5)), "-5\n");
  EXPECT_EQ(YamlString(""), "\"\"\n");
}

TEST(YamlFormatTest, QuotesAPlainStringOnlyIfItBeginsWithADigit) {
  for (const char* text : {"a", "archive", "/dev/sda1", "Kept for ten years", "x86_64", "a-b.c+d",
                           "Zoë", "日本", "ext4", "yesterday", "e3", "50%", "a(b)+c@d%e",
                           "a longer string (of 40 bytes) with a + b"}) {
    const bool isNumber = text[0] == '5';
    EXPECT_EQ(YamlString(text), isNumber ? "\"50%\"\n" : std::string(text) + "\n");
  }
}

TEST(YamlFormatTest, DecidesWhetherToQuoteForEachPrintableCharacterAtSeveralPositions) {
  const std::string plain =
      " %()+-./0123456789@ABCDEFGHIJKLMNOPQRSTUVWXYZ_abcdefghijklmnopqrstuvwxyz";
  for (char character = ' '; character < '\x7f'; ++character) {
    for (const std::size_t at : {1, 6, 14, 16, 33}) {
      std::string text(at + 7, 'x');
      text[at] = character;
      const bool isPlain = plain.find(character) != std::string::npos;
      EXPECT_EQ(YamlString(text)[0], isPlain ? 'x' : '"') << text;
    }
  }
}

TEST(YamlFormatTest, QuotesStringsThatCouldBeSomethingElse) {
  for (const char* text : {"true",       "False", "NULL", "yes",  "No",   "on",  "OFF",   "y",
                           "N",          "~",     "null", "1",    "-1",   "1.5", ".5",    ".inf",
                           "-.inf",      ".nan",  "1e3",  "0x1f", "0o17", "017", "1_000", "1:20",
                           "2001-01-01", "<<",    "=",    "-",    "- a",  "---", "...",   "?",
                           "? a",        ": a",   "a: b", "a:",   "a #b", "#a",  "&a",    "*a",
                           "!a",         "|",     ">",    "'a'",  "%a",   "@a",  "`a`",   "{a}",
                           "[a]",        "a, b",  "+1",   " a",   "a ",   "(a)"}) {
    EXPECT_EQ(YamlString(text), '"' + std::string(text) + "\"\n");
    EXPECT_EQ(Yaml(MakeRow(text, "x")), '"' + std::string(text) + "\": x\n");
  }
}

TEST(YamlFormatTest, EscapesWhatReadersRejectOrChange) {
  EXPECT_EQ(YamlString("a\"b\\c"), "\"a\\\"b\\\\c\"\n");
  EXPECT_EQ(YamlString("a\nb\tc\rd"), "\"a\\nb\\tc\\rd\"\n");
  EXPECT_EQ(YamlString(std::string("\0\x1f\x7f", 3)), "\"\\x00\\x1f\\x7f\"\n");
  EXPECT_EQ(YamlString("a\u0080\u0085\u009f"), "\"a\\x80\\x85\\x9f\"\n");
  EXPECT_EQ(YamlString("a\u2028\u2029\ufeff\ufffe\uffff"),
            "\"a\\u2028\\u2029\\ufeff\\ufffe\\uffff\"\n");
}

TEST(YamlFormatTest, QuotesSpacesThatAreNotAsciiWithoutEscapingThem) {
  EXPECT_EQ(YamlString("a\u00a0b"), "\"a\u00a0b\"\n");
  EXPECT_EQ(YamlString("\u3000"), "\"\u3000\"\n");
}

TEST(YamlFormatTest, PrintsLongNamesOnALineOfTheirOwn) {
  const std::string name(1001, 'n');
  EXPECT_EQ(Yaml(MakeRow(name, "x")), "? " + name + "\n: x\n");
  auto outer = MetaStruct::New("Outer");
  outer->SetField("A", MakeList({MakeRow(name, "x")}));
  EXPECT_EQ(Yaml(outer), "A:\n  - ? " + name + "\n    : x\n");
  EXPECT_EQ(Yaml(MakeRow(name.substr(1), "x")), name.substr(1) + ": x\n");
}

TEST(YamlFormatTest, NamesTheFieldThatIsNotUtf8) {
  EXPECT_THAT(ErrorsOf(kYamlFormat, MakeRow("Note", "a\xff")),
              ElementsAre("The field Note is not valid UTF-8"));
}

}  // namespace
}  // namespace Kestrel::Formats
