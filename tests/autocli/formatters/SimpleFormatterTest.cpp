// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/SimpleFormatter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iomanip>
#include <ios>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "autocli/formatters/DocumentedParam.h"
#include "kestrel/autocli/Util.h"
#include "support/CountingBuffer.h"
#include "support/FormatterFixture.h"
#include "support/Golden.h"
#include "support/LimitedBuffer.h"
#include "support/Random.h"

namespace Kestrel::AutoCli {
namespace {

using namespace ::Kestrel::Testing;  // NOLINT: helpers of these tests
using ::testing::ElementsAre;
using ::testing::ThrowsMessage;

class SimpleFormatterTest : public FormatterFixture<SimpleFormatter> {
 protected:
  static std::string PrintAt(int level, const std::shared_ptr<MetaObject>& value) {
    SimpleFormatter formatter;
    FormatParameters params;
    std::ostringstream out;
    formatter.Format(value, params, out, level);
    return out.str();
  }

  static std::string PrintHeader(const char* header) {
    const auto structure = MakeRecord({{"Name", "disk1"}, {"Note", "%Name%"}, {"Size", "5"}});
    const std::string text = Print(structure, {{"header:Row", header}, {"fields", ""}});
    return text.substr(0, text.size() - 2);
  }
};

TEST_F(SimpleFormatterTest, TheExceptionOfAStreamReachesTheCaller) {
  EXPECT_TRUE(ThrowsOnAFullDisk());
}

TEST_F(SimpleFormatterTest, DocumentsItself) {
  const SimpleFormatter formatter;
  EXPECT_EQ(formatter.GetName(), "simple");
  EXPECT_EQ(formatter.GetDescription(),
            "Print a representation of any item to the screen. This can be any type, but this "
            "formatter excels at printing structs and lists of structs.");
}

TEST_F(SimpleFormatterTest, DocumentsFiveParametersInOrder) {
  EXPECT_THAT(
      SimpleFormatter().GetParams(),
      ElementsAre(
          Documents(
              "header:<TypeName>",
              "When printing a struct type, prefix the output of the struct with the given text "
              "string and then indent all the struct fields below this text.  The TypeName value "
              "can be determined from the raw or xml output for a command.  For this field a "
              "special variable substitution is available in the value of this format paramter.  "
              "If the value contains a string %<Field>% then this formatter will do token "
              "substitution and replace the value of %<Field>% with the given value of the field "
              "in <TypeName>.  Note this can only be a scalar type (int, bool, string) and must "
              "exactly match one of the fields in the struct <TypeName>.  Example: "
              "'header:ScsiDeviceList' = 'SCSI Device %Device Name%' will result in a header of "
              "'SCSI Device naa.XXXX'.  Note only one %<Field>% tag is supported.  To disable the "
              "display of the header the special value <NONE> can be used"),
          Documents("fields:<TypeName>",
                    "When printing a struct use the set of fields given in this parameter.  This "
                    "allows the ordering and filtering of the fields printed for a given struct. "
                    "If no ':<TypeName>' is given then then all structs encounted in the output "
                    "will attempt to use these fields.  This provides a reasonable default and "
                    "compatible output with other formatters"),
          Documents("units:<TypeName>.<FieldName>",
                    "When printing a struct use the given 'units' value as a suffix for a given "
                    "field.  " +
                        UnitsExample(':')),
          Documents("printf:<TypeName>.<FieldName>",
                    "When printing a struct use the given 'printf' formatting string for printing "
                    "the value.  This uses standard printf syntax to print a given field.  " +
                        UnitsExample('.')),
          Documents("align-fields",
                    "When printing a struct left align all of the fields values so they all start "
                    "at the same column")));
}

TEST_F(SimpleFormatterTest, IndentsByThreeSpacesPerLevel) {
  EXPECT_EQ(GetIndent(-1), "");
  EXPECT_EQ(GetIndent(0), "");
  EXPECT_EQ(GetIndent(1), "   ");
  EXPECT_EQ(GetIndent(4), "            ");
}

TEST_F(SimpleFormatterTest, PrintsAScalarOnALine) {
  EXPECT_EQ(Print(MetaBool::New(true)), "true\n");
  EXPECT_EQ(Print(MetaBool::New(false)), "false\n");
  EXPECT_EQ(Print(MetaInt::New(-512)), "-512\n");
  EXPECT_EQ(Print(MetaString::New("two words")), "two words\n");
  EXPECT_EQ(Print(MetaString::New("")), "\n");
}

TEST_F(SimpleFormatterTest, DoesNotIndentAScalar) { EXPECT_EQ(PrintAt(3, MetaInt::New(7)), "7\n"); }

TEST_F(SimpleFormatterTest, PrintsNothingForNull) {
  EXPECT_EQ(Print(nullptr), "");
  EXPECT_EQ(PrintAt(0, nullptr), "");
}

TEST_F(SimpleFormatterTest, ReportsAValueWhoseClassDoesNotMatchItsKind) {
  const auto print = [](MetaType type) { return Print(std::make_shared<LyingValue>(type)); };
  EXPECT_EQ(print(MetaType::Bool), "Error reading a bool\n");
  EXPECT_EQ(print(MetaType::Int), "Error reading a int\n");
  EXPECT_EQ(print(MetaType::String), "Error reading a string\n");
  EXPECT_EQ(print(MetaType::Struct), "Error reading a struct from output.\n");
  EXPECT_EQ(print(MetaType::List), "Error reading a List\n");
  EXPECT_EQ(print(static_cast<MetaType>(5)), "");
}

TEST_F(SimpleFormatterTest, ReportsAFieldWhoseClassDoesNotMatchItsKind) {
  const auto structure = MetaStruct::New("Row");
  structure->SetField("a", std::make_shared<LyingValue>(MetaType::Struct));
  structure->SetField("b", std::make_shared<LyingValue>(MetaType::List));
  structure->SetField("c", std::make_shared<LyingValue>(MetaType::Int));
  structure->SetField("d", std::make_shared<LyingValue>(static_cast<MetaType>(5)));
  EXPECT_EQ(Print(structure),
            "Row:\n"
            "   a: \nError reading a struct from output.\n"
            "   b: Error reading a List\n"
            "   c: a lie\n"
            "   d: a lie\n");
}

TEST_F(SimpleFormatterTest, ReportsANullStructureOrList) {
  SimpleFormatter formatter;
  FormatParameters params;
  std::ostringstream out;
  formatter.FormatStruct(nullptr, params, out, 2);
  formatter.FormatList(nullptr, params, out, 2);
  EXPECT_EQ(out.str(), "Error reading a struct from output.\nError reading a List\n");
}

TEST_F(SimpleFormatterTest, PrintsAStructureAtLevelZeroWithoutEmptyLine) {
  EXPECT_EQ(Print(MakeDisk("a", 10)), "Disk:\n   Name: a\n   Size: 10\n");
}

TEST_F(SimpleFormatterTest, PrintsAnEmptyStructureAsItsHeader) {
  EXPECT_EQ(Print(MetaStruct::New("Empty")), "Empty:\n");
}

TEST_F(SimpleFormatterTest, PrintsAListOfStructuresBetweenEmptyLines) {
  EXPECT_EQ(Print(MakeDisks({{"a", 10}, {"b", 20}})),
            "\n"
            "Disk:\n"
            "   Name: a\n"
            "   Size: 10\n"
            "\n"
            "Disk:\n"
            "   Name: b\n"
            "   Size: 20\n"
            "\n");
}

TEST_F(SimpleFormatterTest, PrintsAnEmptyListOfStructuresAsALineEnd) {
  EXPECT_EQ(Print(MakeDisks({})), "\n");
}

TEST_F(SimpleFormatterTest, PrintsAListOfScalarsOnALine) {
  const auto texts = MetaList::New(MetaType::String);
  EXPECT_EQ(Print(texts), "\n");
  texts->AddAll(std::vector<std::string>{"one", "", "two words"});
  EXPECT_EQ(Print(texts), "one, , two words\n");
  const auto numbers = MetaList::New(MetaType::Int);
  numbers->AddAll(std::vector<long>{-1, 2, 30});
  numbers->Add(std::shared_ptr<MetaObject>(std::make_shared<LyingValue>(MetaType::Int)));
  EXPECT_EQ(Print(numbers), numbers->ToString() + "\n");
  const auto flags = MetaList::New(MetaType::Bool);
  flags->AddAll(std::vector<bool>{true, false});
  EXPECT_EQ(PrintAt(5, flags), "true, false\n");
}

TEST_F(SimpleFormatterTest, IndentsNestedValues) {
  const auto inner = MakeRecord({{"x", "deep"}});
  const auto texts = MetaList::New(MetaType::String);
  texts->AddAll(std::vector<std::string>{"one", "two"});
  const auto structure = MetaStruct::New("Outer");
  structure->SetField("list", MakeDisks({{"a", 1}}));
  structure->SetField("record", inner);
  structure->SetField("texts", texts);
  structure->SetField("value", true);
  EXPECT_EQ(Print(structure),
            "Outer:\n"
            "   list: \n"
            "         Disk:\n"
            "            Name: a\n"
            "            Size: 1\n"
            "\n"
            "   record: \n"
            "      Row:\n"
            "         x: deep\n"
            "   texts: one, two\n"
            "   value: true\n");
}

TEST_F(SimpleFormatterTest, PrintsAtTheGivenLevel) {
  const std::string atTwo = "      Disk:\n         Name: a\n         Size: 1\n";
  EXPECT_EQ(PrintAt(2, MakeDisk("a", 1)), atTwo);
  EXPECT_EQ(PrintAt(1, MakeDisks({{"a", 1}})), "\n" + atTwo + "\n");
  EXPECT_EQ(PrintAt(-4, MakeDisk("a", 1)), "Disk:\n   Name: a\n   Size: 1\n");
  SimpleFormatter formatter;
  FormatParameters params;
  std::ostringstream out;
  formatter.FormatStruct(MakeDisk("a", 1), params, out, 2);
  EXPECT_EQ(out.str(), atTwo);
  out.str("");
  formatter.FormatList(MakeDisks({{"a", 1}}), params, out, 1);
  EXPECT_EQ(out.str(), "\n" + atTwo + "\n");
}

TEST_F(SimpleFormatterTest, ChoosesAndOrdersFields) {
  const auto structure = MakeRecord({{"a", "1"}, {"b", "2"}, {"c", "3"}});
  EXPECT_EQ(Print(structure, {{"fields:Row", "c,a"}, {"fields", "b"}}), "Row:\n   c: 3\n   a: 1\n");
  EXPECT_EQ(Print(structure, {{"fields", "b"}, {"fields:Other", "a"}}), "Row:\n   b: 2\n");
  EXPECT_EQ(Print(structure, {{"fields:Row", ""}, {"fields", "b"}}), "Row:\n");
  EXPECT_EQ(Print(structure, {{"fields", "a,a,"}}), "Row:\n   a: 1\n   a: 1\n");
}

TEST_F(SimpleFormatterTest, FieldsWithoutATypeNameApplyToNestedStructuresToo) {
  const auto structure = MetaStruct::New("Outer");
  structure->SetField("inner", MakeRecord({{"inner", "x"}, {"other", "y"}}));
  structure->SetField("other", "z");
  EXPECT_EQ(Print(structure, {{"fields", "inner"}}),
            "Outer:\n   inner: \n      Row:\n         inner: x\n");
}

TEST_F(SimpleFormatterTest, AnUnknownFieldEndsItsStructure) {
  EXPECT_EQ(Print(MakeDisk("a", 10), {{"fields:Disk", "Size,Nope,Name"}}),
            "Disk:\n   Size: 10\nError getting field Nope\n");
}

TEST_F(SimpleFormatterTest, AnUnknownFieldEndsItsOwnStructureOnly) {
  const auto structure = MetaStruct::New("Outer");
  structure->SetField("disk", MakeDisk("a", 1));
  structure->SetField("last", "z");
  EXPECT_EQ(Print(structure, {{"fields:Disk", "Nope,Name"}}),
            "Outer:\n   disk: \n      Disk:\nError getting field Nope\n   last: z\n");
  EXPECT_EQ(Print(MakeDisks({{"a", 1}, {"b", 2}}), {{"fields", "Nope"}}),
            "\nDisk:\nError getting field Nope\n\nDisk:\nError getting field Nope\n\n");
}

TEST_F(SimpleFormatterTest, DoesNotTrimFieldNames) {
  EXPECT_EQ(Print(MakeDisk("a", 1), {{"fields", "Name, Size"}}),
            "Disk:\n   Name: a\nError getting field  Size\n");
  EXPECT_EQ(Print(MakeDisk("a", 1), {{"fields", "Name,,Size"}}),
            "Disk:\n   Name: a\nError getting field \n");
}

TEST_F(SimpleFormatterTest, AlignsFieldsOnRequest) {
  const auto structure = MakeRecord({{"a", "1"}, {"long-name", "2"}});
  EXPECT_EQ(Print(structure, {{"align-fields", "true"}}),
            "Row:\n   a        : 1\n   long-name: 2\n");
  EXPECT_EQ(Print(structure, {{"align-fields", "True"}}), "Row:\n   a: 1\n   long-name: 2\n");
  EXPECT_EQ(Print(structure, {{"align-fields", ""}}), "Row:\n   a: 1\n   long-name: 2\n");
}

TEST_F(SimpleFormatterTest, AlignsToTheLongestNameOfTheListEvenIfUnknown) {
  EXPECT_EQ(Print(MakeDisk("a", 1), {{"align-fields", "true"}, {"fields", "Name,no-such-field"}}),
            "Disk:\n   Name         : a\nError getting field no-such-field\n");
}

TEST_F(SimpleFormatterTest, AlignsAFieldWithoutANameToo) {
  EXPECT_EQ(Print(MakeRecord({{"", "1"}}), {{"align-fields", "true"}}), "Row:\n   : 1\n");
  EXPECT_EQ(Print(MakeRecord({{"", "1"}})), "Row:\n   : 1\n");
}

TEST_F(SimpleFormatterTest, AlignsTheNamesOfNestedValuesToo) {
  const auto structure = MetaStruct::New("Outer");
  structure->SetField("a", MakeRecord({{"x", "1"}}));
  structure->SetField("list", std::vector<long>{1, 2});
  EXPECT_EQ(Print(structure, {{"align-fields", "true"}}),
            "Outer:\n   a   : \n      Row:\n         x: 1\n   list: 1, 2\n");
}

TEST_F(SimpleFormatterTest, TakesTheHeaderFromTheParameters) {
  EXPECT_EQ(Print(MakeDisk("a", 1), {{"header:Disk", "A disk"}, {"fields", "Name"}}),
            "A disk:\n   Name: a\n");
  EXPECT_EQ(Print(MakeDisk("a", 1), {{"header:Row", "A row"}, {"header", "x"}, {"fields", "Name"}}),
            "Disk:\n   Name: a\n");
  EXPECT_EQ(Print(MakeDisk("a", 1), {{"header:Disk", ""}, {"fields", "Name"}}), ":\n   Name: a\n");
}

TEST_F(SimpleFormatterTest, OmitsTheHeaderOnRequest) {
  EXPECT_EQ(Print(MakeDisk("a", 1), {{"header:Disk", "<NONE>"}}), "   Name: a\n   Size: 1\n");
  EXPECT_EQ(Print(MakeDisk("a", 1), {{"header:Disk", "<none>"}, {"fields", "Name"}}),
            "<none>:\n   Name: a\n");
  EXPECT_EQ(Print(MakeDisk("<NONE>", 1), {{"header:Disk", "%Name%"}, {"fields", "Size"}}),
            "   Size: 1\n");
}

TEST_F(SimpleFormatterTest, InsertsAFieldIntoTheHeader) {
  EXPECT_EQ(PrintHeader("Disk %Name% here"), "Disk disk1 here");
  EXPECT_EQ(PrintHeader("%Name%"), "disk1");
}

TEST_F(SimpleFormatterTest, ReplacesOnlyTheLastOfSeveralMarkers) {
  EXPECT_EQ(PrintHeader("%Name% of %Size%"), "%Name% of 5");
}

TEST_F(SimpleFormatterTest, ReplacesEveryOccurrenceOfTheMarker) {
  EXPECT_EQ(PrintHeader("%Size% %Name% %Size%"), "5 %Name% 5");
}

TEST_F(SimpleFormatterTest, DoesNotReplaceMarkersInTheInsertedField) {
  EXPECT_EQ(PrintHeader("%Note%%Note%"), "%Name%%Name%");
}

TEST_F(SimpleFormatterTest, DoesNotChangeAHeaderWithAMarkerForAnUnknownField) {
  EXPECT_EQ(PrintHeader("%Nope%"), "%Nope%");
  EXPECT_EQ(PrintHeader("%Name% 100%"), "%Name% 100%");
  EXPECT_EQ(PrintHeader("100% sure"), "100% sure");
  EXPECT_EQ(PrintHeader("%%"), "%%");
  EXPECT_EQ(PrintHeader("%name%"), "%name%");
}

TEST_F(SimpleFormatterTest, InsertsEveryKindOfFieldIntoTheHeader) {
  const auto structure = MetaStruct::New("Row");
  structure->SetField("flag", true);
  structure->SetField("list", std::vector<long>{1, 2});
  structure->SetField("record", MakeDisk("a", 1));
  const auto print = [&structure](const char* header) {
    return Print(structure, {{"header:Row", header}, {"fields", ""}});
  };
  EXPECT_EQ(print("%flag%"), "true:\n");
  EXPECT_EQ(print("%list%"), "1, 2:\n");
  EXPECT_EQ(print("%record%"), "{'Name' => 'a', 'Size' => '1', }:\n");
}

TEST_F(SimpleFormatterTest, MakesTheHeaderForEachElement) {
  EXPECT_EQ(
      Print(MakeDisks({{"a", 1}, {"b", 2}}), {{"header:Disk", "Disk %Name%"}, {"fields", "Size"}}),
      "\nDisk a:\n   Size: 1\n\nDisk b:\n   Size: 2\n\n");
}

TEST_F(SimpleFormatterTest, AppliesUnitsAndFormatsToScalarFields) {
  EXPECT_EQ(Print(MakeDisk("a", 512), {{"units:Disk.Size", "Mb"}, {"printf:Disk.Name", "<%s>"}}),
            "Disk:\n   Name: <a>\n   Size: 512 Mb\n");
  EXPECT_EQ(
      Print(MakeDisk("a", 512), {{"printf:Disk.Size", "%s"}, {"fields", "Size"}}),
      "Disk:\n   Size: Error while handling formatting parameter printf:Disk.Size.  Unable to "
      "format field: Invalid argument\n");
}

TEST_F(SimpleFormatterTest, AppliesNoUnitsToStructuresAndLists) {
  const auto structure = MetaStruct::New("Outer");
  structure->SetField("list", std::vector<long>{1, 2});
  structure->SetField("record", MakeRecord({{"x", "1"}}));
  EXPECT_EQ(Print(structure, {{"units:Outer.list", "Mb"}, {"printf:Outer.record", "%s"}}),
            "Outer:\n   list: 1, 2\n   record: \n      Row:\n         x: 1\n");
}

TEST_F(SimpleFormatterTest, LooksUnitsUpByTheTypeOfEachElement) {
  EXPECT_EQ(Print(MakeDisksAndAFloppy(), {{"units:Disk.Size", "MB"}, {"header:Floppy", "<NONE>"}}),
            "\nDisk:\n   Name: a\n   Size: 1 MB\n"
            "\n   Name: b\n   Size: 2\n"
            "\nDisk:\n   Name: c\n   Size: 3 MB\n\n");
}

// There are more shapes than the formatter remembers.
TEST_F(SimpleFormatterTest, PrintsStructuresOfManyShapesInTurn) {
  const auto outer = MetaStruct::New("Outer");
  std::string expected = "Outer:\n";
  for (int i = 0; i < 300; ++i) {
    const std::string number = std::to_string(100 + i % 150);
    const auto inner = MetaStruct::New("Shape" + number);
    inner->SetField("f" + number, i);
    outer->SetField("field" + std::to_string(100 + i), inner);
    expected += "   field" + std::to_string(100 + i) + ": \n      Shape" + number +
                ":\n         f" + number + ": " + std::to_string(i) + "\n";
  }
  EXPECT_EQ(Print(outer), expected);
}

TEST_F(SimpleFormatterTest, IgnoresTheStateOfTheStream) {
  std::ostringstream out;
  out << std::hex << std::showpos << std::setw(20) << std::setfill('*') << std::right;
  Format(MakeOutput(MakeDisk("a", 255)), out, {{"align-fields", "true"}});
  EXPECT_EQ(out.str(), "Disk:\n   Name: a\n   Size: 255\n");
  EXPECT_EQ(out.flags() & std::ios_base::adjustfield, std::ios_base::right);
}

TEST_F(SimpleFormatterTest, FlushesOnceAtTheEnd) {
  LimitedBuffer buffer(1000000);
  std::ostream out(&buffer);
  Format(MakeOutput(MakeMounts()), out);
  EXPECT_EQ(buffer.GetFlushes(), 1);
}

TEST_F(SimpleFormatterTest, AFieldThatIsRemovedDuringPrintingIsUnknown) {
  const auto row = MetaStruct::New("Row");
  const std::weak_ptr<MetaStruct> weak = row;
  row->SetField("a", std::make_shared<ActingValue>([weak] {
                  weak.lock()->RemoveField("b");
                  return std::string("text");
                }));
  row->SetField("b", "gone");
  row->SetField("c", "left");
  EXPECT_EQ(Print(row), "Row:\n   a: text\nError getting field b\n");
}

TEST_F(SimpleFormatterTest, AnExceptionDoesNotLoseWhatWasPrinted) {
  const auto structure = MetaStruct::New("Row");
  structure->SetField("a", "fine");
  structure->SetField("b", std::make_shared<ActingValue>(
                               []() -> std::string { throw std::runtime_error("broken"); }));
  SimpleFormatter formatter;
  FormatParameters params;
  std::ostringstream out;
  EXPECT_THAT([&] { formatter.Format(structure, params, out, 0); },
              ThrowsMessage<std::runtime_error>("broken"));
  EXPECT_EQ(out.str(), "Row:\n   a: fine\n   b: ");
}

TEST_F(SimpleFormatterTest, EndsSoonWhenTheStreamFails) {
  EXPECT_LT(PrintToAFullDisk(100000), 1000);
}

TEST_F(SimpleFormatterTest, WritesNothingMoreAfterTheStreamHasFailed) {
  const auto structure = MetaStruct::New("Row");
  const auto list = MetaList::New(MetaType::String);
  for (int i = 100; i < 200; ++i) {
    structure->SetField("f" + std::to_string(i), std::string(10000, 'x'));
    list->Add(std::string(10000, 'x'));
  }
  for (const std::shared_ptr<MetaObject>& value :
       {std::shared_ptr<MetaObject>(structure), std::shared_ptr<MetaObject>(list)}) {
    LimitedBuffer buffer(1000);
    std::ostream out(&buffer);
    Format(MakeOutput(value), out);
    EXPECT_TRUE(out.bad());
    EXPECT_EQ(buffer.GetText().size(), 1000u);
    EXPECT_EQ(buffer.GetRefusals(), 1);
  }
}

TEST_F(SimpleFormatterTest, PrintsAnEmptyStructureOfALargeDefinition) {
  const auto definition = MetaStruct::New("Row");
  for (int i = 0; i < 10; ++i) {
    definition->SetField("f" + std::to_string(i), i);
  }
  EXPECT_EQ(Print(MetaStruct::New(definition)), "Row:\n");
}

TEST_F(SimpleFormatterTest, PrintsAMillionElements) {
  const auto disk = MakeDisk("a", 5);
  const auto list = MakeList({disk});
  list->Reserve(1000000);
  for (int i = 1; i < 1000000; ++i) {
    list->Add(disk);
  }
  const std::string row = "\nDisk:\n   Name: a\n   Size: 5\n";
  const std::string text = Print(list);
  ASSERT_EQ(text.size(), 1000000 * row.size() + 1);
  EXPECT_EQ(text.substr(text.size() - row.size() - 1), row + "\n");
}

TEST_F(SimpleFormatterTest, PrintsAMillionScalars) {
  const auto list = MetaList::New(MetaType::Int);
  for (int i = 0; i < 1000000; ++i) {
    list->Add(7);
  }
  EXPECT_EQ(Print(list).size(), 3u * 1000000 - 2 + 1);
}

TEST_F(SimpleFormatterTest, PrintsAStructureOfAHundredThousandFields) {
  const auto structure = MetaStruct::New("Row");
  for (int i = 0; i < 100000; ++i) {
    structure->SetField("f" + std::to_string(i), i);
  }
  const std::string text = Print(structure, {{"align-fields", "true"}});
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 100001);
  EXPECT_EQ(text.substr(0, 41), "Row:\n   f0    : 0\n   f1    : 1\n   f10   :");
}

TEST_F(SimpleFormatterTest, FindsTheFirstFieldOfALargeStructureAgainAfterTheLast) {
  const auto structure = MetaStruct::New("Row");
  std::string names;
  std::string expected = "Row:\n";
  for (int i = 100; i < 200; ++i) {
    const std::string name = "f" + std::to_string(i);
    structure->SetField(name, i);
    names += name + ",";
    expected += "   " + name + ": " + std::to_string(i) + "\n";
  }
  const std::string choice = names + "f100";
  EXPECT_EQ(Print(structure, {{"fields:Row", choice.c_str()}}), expected + "   f100: 100\n");
}

TEST_F(SimpleFormatterTest, FindsTheFieldsOfALargeStructureInAnyOrder) {
  const auto structure = MetaStruct::New("Row");
  for (int i = 100; i < 300; ++i) {
    structure->SetField("f" + std::to_string(i), i);
  }
  structure->SetField("f101", MakeDisk("a", 1));
  EXPECT_EQ(Print(structure, {{"fields:Row", "f100,f101,f102,f250,f120,nope"}}),
            "Row:\n"
            "   f100: 100\n"
            "   f101: \n"
            "      Disk:\n"
            "         Name: a\n"
            "         Size: 1\n"
            "   f102: 102\n"
            "   f250: 250\n"
            "   f120: 120\n"
            "Error getting field nope\n");
}

TEST_F(SimpleFormatterTest, PrintsNamesAndValuesOfAHundredThousandBytes) {
  const std::string name(100000, 'n');
  const std::string value(100000, 'v');
  const auto structure = MetaStruct::New("Row");
  structure->SetField(name, value);
  EXPECT_EQ(Print(structure), "Row:\n   " + name + ": " + value + "\n");
}

TEST_F(SimpleFormatterTest, PrintsStructuresNestedTenThousandDeep) {
  CountingBuffer buffer;
  std::ostream out(&buffer);
  Format(MakeOutput(MakeNested(10000)), out);
  EXPECT_EQ(buffer.lines, 3u * 10000 - 1);
  // Each structure is indented by six spaces more than the one around it.
  EXPECT_GT(buffer.bytes, 6u * 10000 * 9999 / 2 * 3);
}

TEST_F(SimpleFormatterTest, PrintsMounts) {
  EXPECT_THAT(Print(MakeMounts()), MatchesGolden("simple/mounts"));
  EXPECT_THAT(Print(MakeMounts(), {{"align-fields", "true"},
                                   {"header:Mount", "%Device%"},
                                   {"header:Usage", "<NONE>"},
                                   {"fields:Mount", "Path,Usage,Options,Note,Read Only"},
                                   {"units:Usage.Free", "KB"},
                                   {"printf:Usage.Used", "%08ld"}}),
              MatchesGolden("simple/styled"));
}

TEST_F(SimpleFormatterTest, LooksTheSameAtEveryWidth) {
  SimpleFormatter formatter;
  const std::string plain = Print(MakeMounts());
  for (const int width : {40, 80, 200}) {
    EXPECT_EQ(FormatToText(formatter, MakeMounts(), {}, width), plain) << width;
  }
}

/// A slow model of the formatter: prints a value by plain recursion.
class SlowModel {
 public:
  explicit SlowModel(FormatParameters& params) : params_(params) {}

  std::string Print(const std::shared_ptr<MetaObject>& root) {
    Value(root, std::dynamic_pointer_cast<MetaList>(root) != nullptr ? -1 : 0);
    return out_;
  }

 private:
  void Value(const std::shared_ptr<MetaObject>& value, int level) {
    if (const auto structure = std::dynamic_pointer_cast<MetaStruct>(value)) {
      Struct(*structure, level);
    } else if (const auto list = std::dynamic_pointer_cast<MetaList>(value)) {
      List(*list, level);
    } else {
      out_ += value->ToString() + "\n";
    }
  }

  void List(const MetaList& list, int level) {
    if (list.GetListType() != MetaType::Struct) {
      out_ += list.ToString() + "\n";
      return;
    }
    for (const auto& element : list.GetObjects()) {
      out_ += "\n";
      Value(element, level + 1);
    }
    out_ += "\n";
  }

  void Struct(const MetaStruct& structure, int level) {
    const std::string& type = structure.GetTypeName();
    const std::vector<std::string> names =
        params_.HasParameter("fields:" + type) ? params_.GetParameterAsList("fields:" + type)
        : params_.HasParameter("fields")       ? params_.GetParameterAsList("fields")
                                               : structure.GetFieldNames();
    std::size_t aligned = 0;
    for (const std::string& name : names) {
      aligned = std::max(aligned, name.size());
    }
    if (params_.GetParameter("align-fields") != "true") {
      aligned = 0;
    }
    const std::string header =
        params_.HasParameter("header:" + type) ? params_.GetParameter("header:" + type) : type;
    if (header != "<NONE>") {
      out_ += GetIndent(level) + header + ":\n";
    }
    for (const std::string& name : names) {
      const auto value = structure.GetField(name);
      if (value == nullptr) {
        out_ += "Error getting field " + name + "\n";
        return;
      }
      std::ostringstream padded;
      padded << std::left << std::setw(static_cast<int>(aligned)) << name;
      out_ += GetIndent(level) + "   " + padded.str() + ": ";
      Field(type, name, value, level + 2);
    }
  }

  void Field(const std::string& type, const std::string& name,
             const std::shared_ptr<MetaObject>& value, int level) {
    if (value->GetType() == MetaType::Struct) {
      out_ += "\n";
      Value(value, level);
    } else if (value->GetType() == MetaType::List) {
      Value(value, level);
    } else {
      out_ += AutoCli_FormatField(type, name, value, params_) + "\n";
    }
  }

  FormatParameters& params_;
  std::string out_;
};

class RandomValues {
 public:
  int Pick(int from, int to) { return random_.Between(from, to); }

  std::string HowToRepeat() const { return random_.HowToRepeat(); }

  std::shared_ptr<MetaObject> Make(int depth) {
    switch (Pick(depth > 3 ? 2 : 0, 5)) {
      case 0:
        return MakeStruct(depth);
      case 1: {
        const auto shape = MakeStruct(depth + 1);
        const auto list = MetaList::New(MetaType::Struct, shape);
        for (int i = Pick(0, 3); i > 0; --i) {
          list->Add(shape);
        }
        return list;
      }
      case 2: {
        const auto list = MetaList::New(MetaType::Int);
        list->AddAll(std::vector<long>(static_cast<std::size_t>(Pick(0, 3)), Pick(-5, 50)));
        return list;
      }
      case 3:
        return MetaInt::New(Pick(-1000, 1000));
      case 4:
        return MetaBool::New(Pick(0, 1) == 1);
      default:
        return MetaString::New(std::string(static_cast<std::size_t>(Pick(0, 5)), 'x'));
    }
  }

  FormatParameters MakeParams() {
    FormatParameters params;
    const char* const optional[][2] = {
        {"align-fields", "true"}, {"fields:A", "f0,f1"},  {"fields", "f2,f0,f1"},
        {"header:A", "<NONE>"},   {"header:B", "Header"}, {"units:A.f0", "MB"},
        {"printf:B.f0", "%5ld"},  {"printf:C.f1", "%s"},  {"units:C.f1", "KB"}};
    for (const auto& [key, value] : optional) {
      if (Pick(0, 4) == 0) {
        params.SetParameter(key, value);
      }
    }
    return params;
  }

 private:
  std::shared_ptr<MetaObject> MakeStruct(int depth) {
    const auto structure = MetaStruct::New(std::string(1, static_cast<char>('A' + Pick(0, 2))));
    for (int i = 0, end = Pick(0, 5); i < end; ++i) {
      structure->SetField(
          "f" + std::string(static_cast<std::size_t>(i / 3), 'o') + std::to_string(i % 3),
          Make(depth + 1));
    }
    return structure;
  }

  Testing::Random random_;
};

TEST_F(SimpleFormatterTest, EqualsTheSlowModelOnRandomValues) {
  RandomValues values;
  SCOPED_TRACE(values.HowToRepeat());
  for (int round = 0; round < 10000; ++round) {
    const auto root = values.Make(0);
    FormatParameters params = values.MakeParams();
    SimpleFormatter formatter;
    DisplayContext display;
    std::ostringstream out;
    formatter.Format(MakeOutput(root), params, display, out);
    ASSERT_EQ(out.str(), SlowModel(params).Print(root)) << "round " << round;
  }
}

}  // namespace
}  // namespace Kestrel::AutoCli
