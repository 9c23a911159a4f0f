// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "support/ScopedEnvironment.h"
#include "vexil/formats/FormatsFixture.h"

namespace Kestrel::Formats {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using Testing::ScopedEnvironment;

std::string Pretty(const std::shared_ptr<MetaObject>& root, std::uint16_t width = 0,
                   Parameters parameters = {}) {
  return Print(kPrettyFormat, root, parameters, width);
}

std::string Colored(const std::shared_ptr<MetaObject>& root) {
  return Pretty(root, 0, {{"color", "always"}});
}

std::shared_ptr<MetaList> MakeVolumes() {
  const auto first = MakeVolume();
  const auto second = MakeVolume();
  second->SetField("Disk", MakeDisk("sdb", 12));
  second->SetField("Labels", std::vector<std::string>{});
  return MakeList({first, second});
}

TEST(PrettyFormatTest, PrintsAListAsATable) {
  EXPECT_EQ(Pretty(MakeDisks({{"sda", 7}, {"Zo\u00eb", 12345}})),
            "Name   Size\n"
            "sda       7\n"
            "Zo\u00eb   12345\n");
}

TEST(PrettyFormatTest, AlignsByTheColumnsOfATerminal) {
  EXPECT_EQ(Pretty(MakeDisks({{"\u6f22\u5b57", 1}, {"e\u0301", 2}, {"\U0001f600", 3}})),
            "Name  Size\n"
            "\u6f22\u5b57     1\n"
            "e\u0301        2\n"
            "\U0001f600       3\n");
}

TEST(PrettyFormatTest, PrintsAStructureAsATree) {
  EXPECT_EQ(Pretty(MakeVolume()),
            "Disk:\n"
            "  Name: sda\n"
            "  Size: 7\n"
            "Labels: a, b\n"
            "On:     true\n");
}

TEST(PrettyFormatTest, PrintsScalars) {
  EXPECT_EQ(Pretty(MetaInt::New(-5)), "-5\n");
  EXPECT_EQ(Pretty(MetaString::New("")), "\n");
  EXPECT_EQ(Pretty(MakeTexts({"a", "", "bc"})), "a\n\nbc\n");
  const auto numbers = MetaList::New(MetaType::Int);
  numbers->Add(5);
  numbers->Add(-10);
  EXPECT_EQ(Pretty(numbers), "  5\n-10\n");
}

TEST(PrettyFormatTest, PrintsStructuresInACellAsTrees) {
  EXPECT_EQ(Pretty(MakeVolumes()),
            "Disk       Labels  On\n"
            "Name: sda  a, b    true\n"
            "Size: 7\n"
            "Name: sdb          true\n"
            "Size: 12\n");
}

TEST(PrettyFormatTest, PrintsListsInATreeAsTables) {
  auto rack = MetaStruct::New("Rack");
  rack->SetField("Disks", MakeDisks({{"sda", 7}, {"sdb", 12}}));
  rack->SetField("Id", 3);
  rack->SetField("Spares", MakeDisks({}));
  EXPECT_EQ(Pretty(rack),
            "Disks:\n"
            "  Name  Size\n"
            "  sda      7\n"
            "  sdb     12\n"
            "Id: 3\n"
            "Spares:\n"
            "  no rows\n");
}

TEST(PrettyFormatTest, PrintsListsInACellAsTrees) {
  auto rack = MetaStruct::New("Rack");
  rack->SetField("Disks", MakeDisks({{"sda", 7}, {"sdb", 12}}));
  rack->SetField("Id", 3);
  EXPECT_EQ(Pretty(MakeList({rack})),
            "Disks        Id\n"
            "- Name: sda   3\n"
            "  Size: 7\n"
            "- Name: sdb\n"
            "  Size: 12\n");
}

TEST(PrettyFormatTest, BreaksLongCells) {
  EXPECT_EQ(Pretty(MakeDisks({{"one two three four", 7}, {"x", 8}}), 20),
            "Name            Size\n"
            "one two three      7\n"
            "four\n"
            "x                  8\n");
  EXPECT_EQ(Pretty(MakeRow("Note", "one two three four"), 20),
            "Note: one two three\n"
            "      four\n");
}

TEST(PrettyFormatTest, NeverBreaksNumbersInTables) {
  EXPECT_EQ(Pretty(MakeDisks({{"one two three four", 123456789}}), 22),
            "Name              Size\n"
            "one two      123456789\n"
            "three four\n");
}

TEST(PrettyFormatTest, PrintsATreePerRowIfTheColumnsDoNotFit) {
  EXPECT_EQ(Pretty(MakeDisks({{"one two three", 123456789}, {"x", 2}}), 18),
            "Name: one two\n"
            "      three\n"
            "Size: 123456789\n"
            "\n"
            "Name: x\n"
            "Size: 2\n");
}

TEST(PrettyFormatTest, PutsLongValuesBelowTheirNames) {
  auto row = MakeRow("A", "1");
  row->SetField("A name that is long", "one two three four");
  EXPECT_EQ(Pretty(row, 20),
            "A: 1\n"
            "A name that is long:\n"
            "  one two three four\n");
}

TEST(PrettyFormatTest, SaysNoRowsForAnEmptyList) {
  EXPECT_EQ(Pretty(MakeDisks({})), "no rows\n");
  EXPECT_EQ(Pretty(MakeTexts({})), "no rows\n");
  EXPECT_EQ(Pretty(MetaList::New(MetaType::Struct, nullptr)), "no rows\n");
  EXPECT_EQ(Pretty(MakeDisks({{"a", 1}}), 0, {{"limit", "0"}}), "no rows\n");
}

TEST(PrettyFormatTest, PrintsStructuresWithoutFields) {
  EXPECT_EQ(Pretty(MetaStruct::New("Empty")), "no fields\n");
  EXPECT_EQ(Pretty(MakeList({MetaStruct::New("Empty"), MetaStruct::New("Empty")})),
            "no fields\n\nno fields\n");
}

TEST(PrettyFormatTest, SelectsFieldsAndSortsAndLimitsRows) {
  const auto disks = MakeDisks({{"a", 1}, {"b", 20}, {"c", 3}});
  EXPECT_EQ(Pretty(disks, 0, {{"fields", "Size,Name"}, {"sort", "-Size"}, {"limit", "2"}}),
            "Size  Name\n"
            "  20  b\n"
            "   3  c\n");
  EXPECT_EQ(Pretty(MakeVolumes(), 0, {{"fields", "Disk.Name,On,Disk.Name"}}),
            "Disk.Name  On\n"
            "sda        true\n"
            "sdb        true\n");
  EXPECT_EQ(Pretty(MakeVolume(), 0, {{"fields", "On,Disk.Size"}}),
            "On: true\n"
            "Disk:\n"
            "  Size: 7\n");
}

TEST(PrettyFormatTest, IgnoresTheKeysOfTheLibrarysFormatters) {
  EXPECT_EQ(Pretty(MakeDisk("a", 1), 0,
                   {{"fields:Disk", "Name"}, {"units:Disk.Size", "GB"}, {"wrap-last", "true"}}),
            "Name: a\nSize: 1\n");
}

TEST(PrettyFormatTest, ReportsWrongParameters) {
  EXPECT_THAT(ErrorsOf(kPrettyFormat, MakeDisk("a", 1),
                       {{"color", "auto"}, {"human", "yes"}, {"header", "false"}, {"fields", "X"}}),
              ElementsAre("Unknown format parameter: header",
                          "The value of color is neither always nor never: auto",
                          "The value of human is neither true nor false: yes", "Unknown field: X"));
}

TEST(PrettyFormatTest, PrintsSizesWithUnits) {
  auto row = MetaStruct::New("Row");
  row->SetField("Free Bytes", 1536);
  row->SetField("Inodes", 5000);
  row->SetField("Size", -2048);
  EXPECT_EQ(Pretty(row, 0, {{"human", "true"}}),
            "Free Bytes: 1.5 KiB\nInodes:     5000\nSize:       -2.0 KiB\n");
  EXPECT_EQ(Pretty(row, 0, {{"human", "false"}}),
            "Free Bytes: 1536\nInodes:     5000\nSize:       -2048\n");
  EXPECT_EQ(Pretty(MakeDisk("a", 1048575), 0, {{"human", "true"}}), "Name: a\nSize: 1.0 MiB\n");
  EXPECT_EQ(Pretty(MakeDisk("a", std::numeric_limits<long>::min()), 0, {{"human", "true"}}),
            "Name: a\nSize: -8.0 EiB\n");
}

TEST(PrettyFormatTest, EscapesCharactersThatWouldControlATerminal) {
  EXPECT_EQ(Pretty(MakeRow("a\x1b[2J", "\u202e\xff\nx")), "a\\x1b[2J: \\u{202e}\\xff\\nx\n");
}

TEST(PrettyFormatTest, ColorsByKindAndSeverity) {
  auto row = MetaStruct::New("Row");
  row->SetField("Id", 1);
  row->SetField("Name", "failed");
  row->SetField("On", true);
  row->SetField("State", "Failed");
  EXPECT_EQ(Colored(row),
            "\x1b[1mId:\x1b[0m    \x1b[36m1\x1b[0m\n"
            "\x1b[1mName:\x1b[0m  failed\n"
            "\x1b[1mOn:\x1b[0m    \x1b[35mtrue\x1b[0m\n"
            "\x1b[1mState:\x1b[0m \x1b[31mFailed\x1b[0m\n");
  EXPECT_THAT(Colored(MakeRow("Level Name", "warning")), HasSubstr("\x1b[33mwarning\x1b[0m"));
  EXPECT_THAT(Colored(MakeRow("Boot State", "enabled")), HasSubstr("\x1b[32menabled\x1b[0m"));
  EXPECT_THAT(Colored(MakeRow("State", "x")), Not(HasSubstr("m"
                                                            "x")));
}

TEST(PrettyFormatTest, PrintsABoldHeader) {
  EXPECT_EQ(Colored(MakeList({MakeRow("A", "x\n")})), "\x1b[1mA\x1b[0m\nx\x1b[7m\\n\x1b[27m\n");
}

TEST(PrettyFormatTest, WithoutATerminalColorsOnlyOnRequest) {
  const ScopedEnvironment noColor("NO_COLOR", "1");
  const ScopedEnvironment terminal("TERM", "dumb");
  EXPECT_THAT(Colored(MetaInt::New(1)), HasSubstr("\x1b[36m"));
  EXPECT_EQ(Pretty(MetaInt::New(1)), "1\n");
  EXPECT_EQ(Pretty(MetaInt::New(1), 0, {{"color", "never"}}), "1\n");
}

TEST(PrettyFormatTest, PrintsDeepNestingOnOneLine) {
  auto structure = MakeRow("Name", "x");
  for (int depth = 0; depth < 20000; ++depth) {
    auto list = MetaList::New(MetaType::Struct, structure);
    list->Add(structure);
    auto outer = MetaStruct::New("Outer");
    depth % 2 == 0 ? outer->SetField("L", list) : outer->SetField("S", structure);
    structure = outer;
  }
  const std::string text = Pretty(structure);
  EXPECT_THAT(text, HasSubstr("{S: {L: [{S: "));
  EXPECT_THAT(text, HasSubstr("{Name: x}"));
}

}  // namespace
}  // namespace Kestrel::Formats
