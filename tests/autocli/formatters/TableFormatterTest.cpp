// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/TableFormatter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iomanip>
#include <ios>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "autocli/formatters/DocumentedParam.h"
#include "kestrel/KestrelException.h"
#include "kestrel/autocli/Util.h"
#include "support/FormatterFixture.h"
#include "support/Golden.h"
#include "support/LimitedBuffer.h"
#include "support/Random.h"

namespace Kestrel::AutoCli {
namespace {

using namespace ::Kestrel::Testing;  // NOLINT: helpers of these tests
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using ::testing::ThrowsMessage;

class TableFormatterTest : public FormatterFixture<TableFormatter> {};

/// Returns a list of one structure of type "Row" with these fields.
std::shared_ptr<MetaList> MakeRow(Parameters fields) { return MakeList({MakeRecord(fields)}); }

const char kTwoDisks[] =
    "Name   Size\n"
    "-----  ----\n"
    "disk1   512  \n"
    "d2     4096  \n";

std::shared_ptr<MetaList> TwoDisks() { return MakeDisks({{"disk1", 512}, {"d2", 4096}}); }

TEST_F(TableFormatterTest, TheExceptionOfAStreamReachesTheCaller) {
  EXPECT_TRUE(ThrowsOnAFullDisk());
}

TEST_F(TableFormatterTest, DocumentsItself) {
  const TableFormatter formatter;
  EXPECT_EQ(formatter.GetName(), "table");
  EXPECT_EQ(formatter.GetDescription(),
            "Print a list of structs as a table, with each row being one entry in the list and "
            "each column being a field of the structure.");
}

TEST_F(TableFormatterTest, DocumentsSixParametersInOrder) {
  EXPECT_THAT(
      TableFormatter().GetParams(),
      ElementsAre(
          Documents("fields:<TypeName>",
                    "The list of fields and the order in which to print them for the type named in "
                    "<TypeName>",
                    true),
          Documents("show-header",
                    "Optionally disable showing column headers by passing the 'false' value"),
          Documents("wrap-last", "If 'true' wrap the last column to the width of the terminal."),
          Documents(
              "units:<TypeName>.<FieldName>",
              "Use the given 'units' value as a suffix for a given field.  " + UnitsExample('.')),
          Documents("printf:<TypeName>.<FieldName>",
                    "Use the given 'printf' formatting string for printing a value.  This uses "
                    "standard printf syntax to format and print a Value.  " +
                        UnitsExample('.')),
          Documents("header-line",
                    "Optionally remove the line of '-' characters after the header.  By default "
                    "this paramter is assumed to be true.  Setting it to 'false' will remove the "
                    "line.  This parameter only has meaning if 'show-header' is also true")));
}

TEST_F(TableFormatterTest, PrintsARowPerElementAndAColumnPerField) {
  EXPECT_EQ(Print(TwoDisks()), kTwoDisks);
}

TEST_F(TableFormatterTest, RefusesARootThatIsNotAListOfStructures) {
  const auto scalars = MetaList::New(MetaType::Int);
  scalars->Add(1);
  const std::shared_ptr<MetaObject> roots[] = {nullptr,
                                               MetaInt::New(1),
                                               MakeDisk("a", 1),
                                               scalars,
                                               MetaList::New(MetaType::String),
                                               std::make_shared<LyingValue>(MetaType::List)};
  for (const auto& root : roots) {
    std::ostringstream out;
    EXPECT_THAT(
        [&] { Format(MakeOutput(root), out); },
        ThrowsMessage<KestrelException>(
            "Error: Unexpected type for output, formatter, table, expected a List of structs"));
    EXPECT_EQ(out.str(), "");
    EXPECT_NE(out.flags() & std::ios_base::adjustfield, std::ios_base::left);
  }
}

TEST_F(TableFormatterTest, PrintsNothingForAnEmptyListWithoutStructure) {
  EXPECT_EQ(Print(MetaList::New(MetaType::Struct, nullptr)), "");
}

TEST_F(TableFormatterTest, PrintsHeaderAndLineForAnEmptyListWithStructure) {
  EXPECT_EQ(Print(MakeDisks({})), "Name  Size\n----  ----\n");
}

TEST_F(TableFormatterTest, TakesTheFirstColumnListThatIsPresent) {
  const auto row = MakeRow({{"a", "1"}, {"b", "2"}, {"c", "3"}, {"d", "4"}});
  const Parameters all = {{"fields:Row", "a"}, {"fields", "b"}, {"table-columns", "c"}};
  EXPECT_EQ(Print(row, all), "a\n-\n1\n");
  EXPECT_EQ(Print(row, {{"fields", "b"}, {"table-columns", "c"}, {"fields:Other", "d"}}),
            "b\n-\n2\n");
  EXPECT_EQ(Print(row, {{"table-columns", "c"}}), "c\n-\n3\n");
  EXPECT_EQ(Print(row), "a  b  c  d\n-  -  -  -\n1  2  3  4\n");
}

TEST_F(TableFormatterTest, AnEmptyColumnListCountsAsPresent) {
  EXPECT_EQ(Print(TwoDisks(), {{"fields:Disk", ""}, {"fields", "Name"}}), "\n\n");
}

TEST_F(TableFormatterTest, PrintsColumnsInTheOrderOfTheirListAndTrimsTheNames) {
  EXPECT_EQ(Print(TwoDisks(), {{"fields:Disk", " Size , Name "}}),
            "Size  Name\n"
            "----  ----\n"
            " 512  disk1\n"
            "4096  d2\n");
  EXPECT_EQ(Print(TwoDisks(), {{"fields", "\t\f\v\n\rName \t\f\v\n\r"}}),
            "Name\n----\ndisk1\nd2\n");
}

TEST_F(TableFormatterTest, TrimsTheNamesOfTheFieldsOfTheStructure) {
  EXPECT_EQ(Print(MakeRow({{" padded ", "x"}})), "Error: Unknown field in field list: padded\n");
}

TEST_F(TableFormatterTest, DropsTheEmptyNameAfterATrailingCommaOnly) {
  EXPECT_EQ(Print(TwoDisks(), {{"fields", "Name,"}}), "Name\n----\ndisk1\nd2\n");
  EXPECT_EQ(Print(TwoDisks(), {{"fields", "Name,,Size"}}),
            "Error: Unknown field in field list: \n");
  EXPECT_EQ(Print(TwoDisks(), {{"fields", "Name, "}}), "Error: Unknown field in field list: \n");
}

TEST_F(TableFormatterTest, AFieldWithoutANameIsAColumn) {
  EXPECT_EQ(Print(MakeRow({{"", "v"}, {"b", "w"}})), "   b\n-  -\nv  w\n");
}

TEST_F(TableFormatterTest, NothingFollowsTheNameOfTheLastColumnEvenIfThatIsEmpty) {
  EXPECT_EQ(Print(MakeRow({{"", "v"}})), "\n\nv\n");
}

TEST_F(TableFormatterTest, ShowsTheHeaderUnlessTheChoiceIsExactlyFalse) {
  const std::string body = "disk1   512  \nd2     4096  \n";
  EXPECT_EQ(Print(TwoDisks(), {{"show-header", "false"}}), body);
  EXPECT_EQ(Print(TwoDisks(), {{"table-header", "false"}}), body);
  EXPECT_EQ(Print(TwoDisks(), {{"show-header", ""}, {"table-header", "false"}}), body);
  EXPECT_EQ(Print(TwoDisks(), {{"show-header", "false"}, {"table-header", "true"}}), body);
  EXPECT_EQ(Print(TwoDisks(), {{"show-header", "true"}, {"table-header", "false"}}), kTwoDisks);
  EXPECT_EQ(Print(TwoDisks(), {{"show-header", "no"}, {"table-header", "false"}}), kTwoDisks);
  EXPECT_EQ(Print(TwoDisks(), {{"show-header", "False"}}), kTwoDisks);
}

TEST_F(TableFormatterTest, OmitsTheLineIfTheChoiceIsExactlyFalse) {
  EXPECT_EQ(Print(TwoDisks(), {{"header-line", "false"}}),
            "Name   Size\ndisk1   512  \nd2     4096  \n");
  EXPECT_EQ(Print(TwoDisks(), {{"header-line", "FALSE"}}), kTwoDisks);
  EXPECT_EQ(Print(TwoDisks(), {{"header-line", ""}}), kTwoDisks);
  EXPECT_EQ(Print(TwoDisks(), {{"header-line", "true"}, {"show-header", "false"}}),
            "disk1   512  \nd2     4096  \n");
}

TEST_F(TableFormatterTest, AlignsIntegersToTheRightAndTheRestToTheLeft) {
  const auto row = MetaStruct::New("Row");
  row->SetField("Flag", true);
  row->SetField("Integer", -42);
  row->SetField("List", std::vector<long>{1, 2});
  row->SetField("Record", MakeDisk("a", 1));
  row->SetField("Text", "text");
  EXPECT_EQ(Print(MakeList({row})),
            "Flag  Integer  List  Record                            Text\n"
            "----  -------  ----  --------------------------------  ----\n"
            "true      -42  1, 2  {'Name' => 'a', 'Size' => '1', }  text\n");
}

TEST_F(TableFormatterTest, PrintsTwoSpacesAfterAnIntegerEvenInTheLastColumn) {
  EXPECT_EQ(Print(TwoDisks(), {{"fields", "Size"}}), "Size\n----\n 512  \n4096  \n");
}

TEST_F(TableFormatterTest, AValueWhoseClassDoesNotMatchItsKindIsAlignedByItsKind) {
  const auto row = MetaStruct::New("Row");
  row->SetField("wide column", std::make_shared<LyingValue>(MetaType::Int));
  EXPECT_EQ(Print(MakeList({row})), "wide column\n-----------\n      a lie  \n");
}

TEST_F(TableFormatterTest, FormatsAndUnitsWidenAColumn) {
  EXPECT_EQ(Print(TwoDisks(), {{"units:Disk.Size", "MB"}, {"printf:Disk.Size", "%06ld"}}),
            "Name   Size\n"
            "-----  ----\n"
            "disk1  000512 MB  \n"
            "d2     004096 MB  \n");
  EXPECT_EQ(Print(TwoDisks(), {{"units:Disk.Name", "unit"}}),
            "Name        Size\n"
            "----------  ----\n"
            "disk1 unit   512  \n"
            "d2 unit     4096  \n");
}

TEST_F(TableFormatterTest, PrintsTheErrorOfAFormatInItsCell) {
  EXPECT_EQ(Print(MakeDisks({{"a", 1}}), {{"printf:Disk.Size", "%s"}, {"show-header", "false"}}),
            "a     Error while handling formatting parameter printf:Disk.Size.  Unable to format "
            "field: Invalid argument  \n");
}

TEST_F(TableFormatterTest, PrintsAStructureWithAFormatAsEmpty) {
  const auto row = MetaStruct::New("Row");
  row->SetField("a", MakeDisk("x", 1));
  row->SetField("b", "y");
  EXPECT_EQ(Print(MakeList({row}), {{"printf:Row.a", "%d"}}), "a  b\n-  -\n   y\n");
}

TEST_F(TableFormatterTest, LooksFormatsUpByTheTypeOfEachElement) {
  EXPECT_EQ(
      Print(MakeDisksAndAFloppy(),
            {{"units:Disk.Size", "MB"}, {"printf:Floppy.Size", "<%ld>"}, {"show-header", "false"}}),
      "a     1 MB  \n"
      "b      <2>  \n"
      "c     3 MB  \n");
}

TEST_F(TableFormatterTest, LooksUnitsOfAPathUpByTheWholePath) {
  const auto row = MetaStruct::New("Row");
  row->SetField("in", MakeDisk("x", 7));
  EXPECT_EQ(Print(MakeList({row}),
                  {{"fields", "in.Size"}, {"units:Row.in.Size", "MB"}, {"units:Disk.Size", "no"}}),
            "in.Size\n-------\n   7 MB  \n");
}

TEST_F(TableFormatterTest, PrintsElementsOfSeveralLayouts) {
  const auto list = MetaList::New(MetaType::Struct, MakeDisk("", 0));
  for (int i = 0; i < 6; ++i) {
    const auto disk = MakeDisk("disk" + std::to_string(i), i);
    if (i % 2 == 1) {
      disk->SetField("Name", MetaString::New("documented"), "Another text, another layout");
    }
    list->Add(disk);
  }
  EXPECT_EQ(Print(list, {{"show-header", "false"}}),
            "disk0          0  \n"
            "documented     1  \n"
            "disk2          2  \n"
            "documented     3  \n"
            "disk4          4  \n"
            "documented     5  \n");
}

TEST_F(TableFormatterTest, AnErrorLineReplacesATableWithAnUnknownColumn) {
  EXPECT_EQ(Print(TwoDisks(), {{"fields", "Name,Nope,Neither"}}),
            "Error: Unknown field in field list: Nope\n");
  EXPECT_EQ(Print(MakeDisks({}), {{"fields", "Nope"}}), "Nope\n----\n");
}

TEST_F(TableFormatterTest, AnUnknownColumnDoesNotChangeTheAlignmentOfTheStream) {
  std::ostringstream out;
  out << std::right;
  Format(MakeOutput(TwoDisks()), out, {{"fields", "Nope"}});
  EXPECT_EQ(out.flags() & std::ios_base::adjustfield, std::ios_base::right);
}

TEST_F(TableFormatterTest, AColumnThatIsRemovedDuringPrintingEndsTheTable) {
  const auto row = MetaStruct::New("Row");
  int asked = 0;
  const std::weak_ptr<MetaStruct> weak = row;
  row->SetField("a", std::make_shared<ActingValue>([&asked, weak] {
                  if (++asked == 5) {  // calls 1 to 3 measure, call 5 writes line 2
                    weak.lock()->RemoveField("b");
                  }
                  return std::string("text");
                }));
  row->SetField("b", "gone");
  const auto shape = MetaStruct::New("Row");
  shape->SetField("a", "");
  shape->SetField("b", "");
  const auto list = MetaList::New(MetaType::Struct, shape);
  for (int line = 0; line < 3; ++line) {
    list->Add(row);
  }
  EXPECT_EQ(Print(list, {{"show-header", "false"}}), "text  gone\ntext  Unknown column b");
}

TEST_F(TableFormatterTest, ResolvesAPathThroughNestedStructures) {
  const auto inner = MetaStruct::New("Inner");
  inner->SetField("b", "deep");
  const auto row = MetaStruct::New("Row");
  row->SetField("a", inner);
  EXPECT_EQ(Print(MakeList({row}), {{"fields", "a.b"}}), "a.b\n---\ndeep\n");
}

TEST_F(TableFormatterTest, AFieldNameWithADotIsReadAsAPath) {
  EXPECT_EQ(Print(MakeRow({{"a.b", "x"}})), "Error: Unknown field in field list: a.b\n");
}

TEST_F(TableFormatterTest, ColumnsOfOneNameShareTheirWidth) {
  EXPECT_EQ(Print(TwoDisks(), {{"fields", "Name,Size,Name"}}),
            "Name   Size  Name\n"
            "-----  ----  ----\n"
            "disk1   512  disk1\n"
            "d2     4096  d2\n");
}

TEST_F(TableFormatterTest, WrapsTheLastColumnUnderItself) {
  const auto rows = MakeRow({{"a", "first"}, {"b", "some words that do not fit"}});
  EXPECT_EQ(Print(rows, {{"wrap-last", "true"}}, 20),
            "a      b\n"
            "-----  -\n"
            "first  some words \n"
            "       that do not \n"
            "       fit\n");
}

TEST_F(TableFormatterTest, WrapsOnlyIfTheChoiceIsExactlyTrueAndThereIsATerminal) {
  const auto rows = MakeRow({{"a", "first"}, {"b", "some words that do not fit"}});
  const std::string plain = "a      b\n-----  -\nfirst  some words that do not fit\n";
  EXPECT_EQ(Print(rows, {{"wrap-last", "true"}}, 0), plain);
  EXPECT_EQ(Print(rows, {{"wrap-last", "True"}}, 20), plain);
  EXPECT_EQ(Print(rows, {{"wrap-last", ""}}, 20), plain);
  EXPECT_EQ(Print(rows, {}, 20), plain);
}

TEST_F(TableFormatterTest, DoesNotWrapWithoutRoomForTheLastName) {
  const auto rows = MakeRow({{"a", "first"}, {"bcd", "some words"}});
  EXPECT_EQ(Print(rows, {{"wrap-last", "true"}, {"show-header", "false"}}, 9),
            "first  some words\n");
  EXPECT_EQ(Print(rows, {{"wrap-last", "true"}, {"show-header", "false"}}, 10),
            "first   \n       some \n       words\n");
}

TEST_F(TableFormatterTest, DoesNotWrapASingleColumn) {
  EXPECT_EQ(Print(MakeRow({{"a", "some words"}}), {{"wrap-last", "true"}}, 5),
            "a\n-\nsome words\n");
}

TEST_F(TableFormatterTest, WrapsTheRawValueWithoutUnitsAndFormat) {
  const auto rows = MakeRow({{"a", "x"}, {"b", "some words"}});
  EXPECT_EQ(Print(rows,
                  {{"wrap-last", "true"},
                   {"units:Row.b", "MB"},
                   {"printf:Row.b", "<%s>"},
                   {"show-header", "false"}},
                  40),
            "x  some words\n");
  EXPECT_EQ(Print(MakeDisks({{"a", 1}}), {{"wrap-last", "true"}, {"show-header", "false"}}, 40),
            "a     1\n");
}

TEST_F(TableFormatterTest, WrapsEachLineOfAValueSeparately) {
  EXPECT_EQ(Print(MakeRow({{"a", "x"}, {"b", "one\ntwo three\n"}}),
                  {{"wrap-last", "true"}, {"show-header", "false"}}, 10),
            "x  one\n   two \n   three\n");
}

TEST_F(TableFormatterTest, PrintsNothingForAnEmptyWrappedValue) {
  EXPECT_EQ(Print(MakeRow({{"a", "x"}, {"b", ""}}),
                  {{"wrap-last", "true"}, {"show-header", "false"}}, 10),
            "x  \n");
}

TEST_F(TableFormatterTest, WrapsEveryColumnWithTheNameOfTheLastOne) {
  const auto rows = MakeRow({{"a", "x"}, {"b", "one two"}});
  EXPECT_EQ(Print(rows, {{"fields", "b,a,b"}, {"wrap-last", "true"}, {"show-header", "false"}}, 8),
            "one \n   twox  one \n   two\n");
  EXPECT_EQ(Print(rows, {{"fields", "b,b"}, {"wrap-last", "true"}, {"show-header", "false"}}, 8),
            "one two  one two\n");
}

TEST_F(TableFormatterTest, GetSubFieldFindsAField) {
  const auto disk = MakeDisk("disk1", 512);
  EXPECT_EQ(GetSubField(disk, "Name"), disk->GetField("Name"));
  EXPECT_EQ(GetSubField(disk, "Nope"), nullptr);
  EXPECT_EQ(GetSubField(disk, ""), nullptr);
  EXPECT_EQ(GetSubField(nullptr, "Name"), nullptr);
}

TEST_F(TableFormatterTest, GetSubFieldFollowsAPath) {
  const auto inner = MetaStruct::New("Inner");
  inner->SetField("b", "deep");
  inner->SetField("", "nameless");
  const auto structure = MetaStruct::New("Outer");
  structure->SetField("a", inner);
  structure->SetField("b", "shallow");
  const auto text = [&structure](const char* path) {
    const auto value = GetSubField(structure, path);
    return value == nullptr ? "nothing" : value->ToString();
  };
  EXPECT_EQ(text("a.b"), "deep");
  EXPECT_EQ(text("nope.b"), "shallow");
  EXPECT_EQ(text("nope.a.nope.b"), "deep");
  EXPECT_EQ(text("a.nope"), "nothing");
  EXPECT_EQ(text("a."), "nameless");
  EXPECT_EQ(text(".b"), "shallow");
  EXPECT_EQ(text("a..b"), "nothing");
  EXPECT_EQ(text("."), "nothing");
}

TEST_F(TableFormatterTest, GetSubFieldFindsNothingInAScalar) {
  EXPECT_EQ(GetSubField(MakeDisk("a", 1), "Name.Size"), nullptr);
  EXPECT_EQ(GetSubField(MakeDisk("a", 1), "Name.Size.Name"), nullptr);
}

TEST_F(TableFormatterTest, IgnoresTheStateOfTheStreamAndLeavesItLeftAligned) {
  std::ostringstream out;
  out << std::hex << std::showpos << std::setw(20) << std::setfill('*') << std::right;
  Format(MakeOutput(TwoDisks()), out);
  EXPECT_EQ(out.str(), kTwoDisks);
  EXPECT_EQ(out.flags() & std::ios_base::adjustfield, std::ios_base::left);
  EXPECT_EQ(out.flags() & std::ios_base::basefield, std::ios_base::hex);
  EXPECT_EQ(out.fill(), '*');
}

TEST_F(TableFormatterTest, FlushesOnceAtTheEnd) {
  LimitedBuffer buffer(1000000);
  std::ostream out(&buffer);
  Format(MakeOutput(TwoDisks()), out);
  EXPECT_EQ(buffer.GetText(), kTwoDisks);
  EXPECT_EQ(buffer.GetFlushes(), 1);
}

TEST_F(TableFormatterTest, OneFormatterServesManyCalls) {
  TableFormatter formatter;
  EXPECT_EQ(FormatToText(formatter, TwoDisks(), {{"fields", "Name"}}), "Name\n----\ndisk1\nd2\n");
  EXPECT_EQ(FormatToText(formatter, TwoDisks()), kTwoDisks);
}

TEST_F(TableFormatterTest, PrintsNothingIfMeasuringThrows) {
  const auto row = MetaStruct::New("Row");
  row->SetField("a", "fine");
  row->SetField("b", std::make_shared<ActingValue>(
                         []() -> std::string { throw std::runtime_error("broken"); }));
  std::ostringstream out;
  EXPECT_THAT([&] { Format(MakeOutput(MakeList({row})), out); },
              ThrowsMessage<std::runtime_error>("broken"));
  EXPECT_EQ(out.str(), "");
}

TEST_F(TableFormatterTest, AnExceptionDoesNotLoseWhatWasPrinted) {
  int asked = 0;
  const auto row = MetaStruct::New("Row");
  row->SetField("a", "fine");
  row->SetField("b", std::make_shared<ActingValue>([&asked]() -> std::string {
                  if (++asked == 4) {
                    throw std::runtime_error("broken");
                  }
                  return "text";
                }));
  std::ostringstream out;
  EXPECT_THAT(
      [&] {
        Format(MakeOutput(MakeList({row, row})), out);
      },
      ThrowsMessage<std::runtime_error>("broken"));
  EXPECT_EQ(out.str(), "a     b\n----  -\nfine  text\nfine  ");
  EXPECT_EQ(out.flags() & std::ios_base::adjustfield, std::ios_base::left);
}

TEST_F(TableFormatterTest, EndsSoonWhenTheStreamFails) {
  const int rows = 100000;  // each is measured once before any is written
  EXPECT_LT(PrintToAFullDisk(rows), rows + 1000);
}

TEST_F(TableFormatterTest, PrintsAMillionRows) {
  const auto list = MakeDisks({});
  const auto disk = MakeDisk("disk", 512);
  list->Reserve(1000000);
  for (int i = 0; i < 1000000; ++i) {
    list->Add(disk);
  }
  const std::string text = Print(list, {{"show-header", "false"}});
  ASSERT_EQ(text.size(), 1000000 * std::string("disk   512  \n").size());
  EXPECT_EQ(text.substr(text.size() - 26), "disk   512  \ndisk   512  \n");
}

TEST_F(TableFormatterTest, PrintsAHundredThousandColumns) {
  std::string columns;
  for (int i = 0; i < 100000; ++i) {
    columns += i % 2 == 0 ? "Name," : "Size,";
  }
  FormatParameters params;
  params.SetParameter("fields", columns);
  params.SetParameter("units:Disk.Size", "MB");
  params.SetParameter("show-header", "false");
  TableFormatter formatter;
  DisplayContext display;
  std::ostringstream out;
  formatter.Format(MakeOutput(MakeDisks({{"disk", 5}})), params, display, out);
  EXPECT_EQ(out.str().size(), 50000 * std::string("disk  5 MB  ").size() + 1);
  EXPECT_THAT(out.str(), StartsWith("disk  5 MB  disk  5 MB  "));
}

TEST_F(TableFormatterTest, PrintsAStructureOfAHundredThousandFields) {
  const auto row = MetaStruct::New("Row");
  for (int i = 0; i < 100000; ++i) {
    row->SetField("f" + std::to_string(i), i);
  }
  const std::string text = Print(MakeList({row, row}), {{"header-line", "false"}});
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 3);
  EXPECT_THAT(text, StartsWith("f0  f1  f10  f100  f1000  f10000  f10001  "));
}

TEST_F(TableFormatterTest, FindsTheFieldsOfALargeStructureInAnyOrder) {
  const auto row = MetaStruct::New("Row");
  for (int i = 100; i < 300; ++i) {
    row->SetField("f" + std::to_string(i), i);
  }
  const auto outer = MetaStruct::New("Outer");
  outer->SetField("in", row);
  EXPECT_EQ(Print(MakeList({row}), {{"fields", "f100,f101,f250,f120,f102"}, {"show-header", "no"}}),
            "f100  f101  f250  f120  f102\n"
            "----  ----  ----  ----  ----\n"
            " 100   101   250   120   102  \n");
  EXPECT_EQ(Print(MakeList({outer}), {{"fields", "in.f299,in.f100"}, {"show-header", "false"}}),
            "    299      100  \n");
  EXPECT_EQ(Print(MakeList({row}), {{"fields", "f100,nope,f101"}}),
            "Error: Unknown field in field list: nope\n");
}

TEST_F(TableFormatterTest, PrintsNamesAndValuesOfAHundredThousandBytes) {
  const std::string name(100000, 'n');
  const std::string value(100001, 'v');
  const auto row = MetaStruct::New("Row");
  row->SetField(name, value);
  row->SetField("z", 1);
  EXPECT_EQ(Print(MakeList({row})),
            name + "   z\n" + std::string(100001, '-') + "  -\n" + value + "  1  \n");
}

TEST_F(TableFormatterTest, LooksTheSameAtEveryWidthUnlessItWraps) {
  const std::string plain = Print(MakeMounts());
  EXPECT_THAT(plain, MatchesGolden("table/mounts"));
  for (const int width : {1, 40, 80, 200, 65535}) {
    EXPECT_EQ(Print(MakeMounts(), {}, width), plain) << width;
  }
}

TEST_F(TableFormatterTest, WrapsMountsByTheWidth) {
  const Parameters parameters = {
      {"fields", "Path,Usage.Used,Note"}, {"wrap-last", "true"}, {"units:Mount.Usage.Used", "MB"}};
  for (const int width : {0, 40, 80, 200}) {
    EXPECT_THAT(Print(MakeMounts(), parameters, width),
                MatchesGolden("table/wrap-last-" + std::to_string(width)));
  }
}

TEST_F(TableFormatterTest, PrintsMountsWithFormatsAndWithoutHeader) {
  EXPECT_THAT(Print(MakeMounts(), {{"fields:Mount", "Device,Read Only,Usage.Free,Options"},
                                   {"printf:Mount.Device", "%-.9s|"},
                                   {"printf:Mount.Read Only", "%d"},
                                   {"printf:Mount.Usage.Free", "%+ld"},
                                   {"units:Mount.Usage.Free", "KB"},
                                   {"table-header", "false"}}),
              MatchesGolden("table/formats"));
}

/// A slow model of the formatter: prints a table cell by cell with the formatting of the stream.
class SlowTable {
 public:
  static std::string Print(const MetaList& list, FormatParameters& params, int displayWidth) {
    std::ostringstream out;
    SlowTable(list, params, displayWidth).Write(out);
    return out.str();
  }

 private:
  SlowTable(const MetaList& list, FormatParameters& params, int displayWidth)
      : list_(list), params_(params), displayWidth_(displayWidth) {}

  void Write(std::ostream& out) {
    ChooseColumns();
    for (const std::string& column : columns_) {
      widths_[column] = column.size() + 2;
    }
    for (const auto& element : list_.GetObjects()) {
      const auto structure = std::dynamic_pointer_cast<MetaStruct>(element);
      for (const std::string& column : columns_) {
        const auto value = GetSubField(structure, column);
        if (value == nullptr) {
          out << "Error: Unknown field in field list: " << column << "\n";
          return;
        }
        const std::string text =
            AutoCli_FormatField(structure->GetTypeName(), column, value, params_);
        widths_[column] = std::max(widths_[column], text.size() + 2);
      }
    }
    out << std::left;
    WriteHeader(out);
    SetUpWrapping();
    for (const auto& element : list_.GetObjects()) {
      WriteRow(std::dynamic_pointer_cast<MetaStruct>(element), out);
    }
  }

  void ChooseColumns() {
    const std::string typed = "fields:" + list_.GetListStructure()->GetTypeName();
    columns_ = params_.HasParameter(typed)      ? params_.GetParameterAsList(typed)
               : params_.HasParameter("fields") ? params_.GetParameterAsList("fields")
                                                : list_.GetListStructure()->GetFieldNames();
    for (std::string& column : columns_) {
      column.erase(0, std::min(column.find_first_not_of(' '), column.size()));
      column.erase(column.find_last_not_of(' ') + 1);
    }
    last_ = columns_.empty() ? "" : columns_.back();
  }

  void WriteHeader(std::ostream& out) {
    if (params_.GetParameter("show-header") == "false" || columns_.empty()) {
      return;
    }
    std::size_t length = last_.size();
    for (std::size_t i = 0; i + 1 < columns_.size(); ++i) {
      out << std::setw(static_cast<int>(widths_[columns_[i]])) << columns_[i];
      length += widths_[columns_[i]];
    }
    out << last_ << "\n";
    std::string line(length, '-');
    std::size_t end = 0;
    for (std::size_t i = 0; i + 1 < columns_.size(); ++i) {
      end += widths_[columns_[i]];
      line.replace(end - 2, 2, "  ");
    }
    out << line << "\n";
  }

  void SetUpWrapping() {
    wraps_ = params_.GetParameter("wrap-last") == "true" && displayWidth_ != 0;
    if (!wraps_) {
      return;
    }
    for (const std::string& column : columns_) {
      indent_ += column != last_ ? widths_[column] : 0;
    }
    if (indent_ + last_.size() > static_cast<std::size_t>(displayWidth_)) {
      wraps_ = false;
      indent_ = 0;
    }
  }

  void WriteRow(const std::shared_ptr<MetaStruct>& structure, std::ostream& out) {
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      const std::string& column = columns_[i];
      const auto value = GetSubField(structure, column);
      if (wraps_ && indent_ != 0 && column == last_) {
        AutoCli_FitString(static_cast<int>(indent_), displayWidth_, value->ToString(), true, out,
                          false, 0, true);
        continue;
      }
      const std::string text =
          AutoCli_FormatField(structure->GetTypeName(), column, value, params_);
      const int width = static_cast<int>(widths_[column]);
      if (value->GetType() == MetaType::Int) {
        out << std::right << std::setw(width - 2) << text << "  " << std::left;
      } else if (i + 1 < columns_.size()) {
        out << std::setw(width) << text;
      } else {
        out << text;
      }
    }
    out << "\n";
  }

  const MetaList& list_;
  FormatParameters& params_;
  int displayWidth_;
  std::vector<std::string> columns_;
  std::map<std::string, std::size_t> widths_;
  std::string last_;
  bool wraps_ = false;
  std::size_t indent_ = 0;
};

class RandomTables {
 public:
  int Pick(int from, int to) { return random_.Between(from, to); }

  std::string HowToRepeat() const { return random_.HowToRepeat(); }

  std::shared_ptr<MetaList> MakeRows() {
    const int rows = Pick(0, 5);
    const auto list = MetaList::New(MetaType::Struct, MakeRecord("Row"));
    for (int i = 0; i < rows; ++i) {
      list->Add(MakeRecord(Pick(0, 3) == 0 ? "Other" : "Row"));
    }
    return list;
  }

  FormatParameters MakeParams() {
    FormatParameters params;
    if (Pick(0, 1) == 0) {
      params.SetParameter(Pick(0, 1) == 0 ? "fields" : "fields:Row", MakeColumns());
    }
    const char* const optional[][2] = {{"show-header", "false"}, {"wrap-last", "true"},
                                       {"units:Row.n", "MB"},    {"printf:Row.n", "%05ld"},
                                       {"units:Other.t", "x"},   {"printf:Row.t", "<%.3s>"},
                                       {"printf:Row.t", "%d"},   {"units:Row.s.t", "deep"}};
    for (const auto& [key, value] : optional) {
      if (Pick(0, 2) == 0) {
        params.SetParameter(key, value);
      }
    }
    return params;
  }

 private:
  std::string MakeWord() {
    std::string text;
    for (int i = Pick(0, 12); i > 0; --i) {
      text += "ab  \n"[Pick(0, 4)];
    }
    return text;
  }

  std::shared_ptr<MetaStruct> MakeRecord(const char* type) {
    const auto inner = MetaStruct::New("Inner");
    inner->SetField("t", MakeWord());
    inner->SetField("n", Pick(-9, 9));
    const auto structure = MetaStruct::New(type);
    structure->SetField("t", MakeWord());
    structure->SetField("n", static_cast<long>(Pick(-30000, 30000)) * 1000003);
    structure->SetField("s", inner);
    structure->SetField("flag", Pick(0, 1) == 0);
    return structure;
  }

  std::string MakeColumns() {
    static const char* const kColumns[] = {"t",   "n",    "flag", "s.t", "s.n",
                                           " n ", "no.t", "s",    "nope"};
    std::string columns;
    for (int i = Pick(0, 4); i > 0; --i) {
      columns += kColumns[Pick(0, 30) == 0 ? 8 : Pick(0, 7)] + std::string(",");
    }
    return columns;
  }

  Testing::Random random_;
};

TEST_F(TableFormatterTest, EqualsTheSlowTableOnRandomStructures) {
  RandomTables tables;
  SCOPED_TRACE(tables.HowToRepeat());
  for (int round = 0; round < 10000; ++round) {
    const auto rows = tables.MakeRows();
    FormatParameters params = tables.MakeParams();
    DisplayContext display;
    display.width = static_cast<std::uint16_t>(tables.Pick(0, 60));
    TableFormatter formatter;
    std::ostringstream out;
    formatter.Format(MakeOutput(rows), params, display, out);
    ASSERT_EQ(out.str(), SlowTable::Print(*rows, params, display.width))
        << "round " << round << " fields " << params.GetParameter("fields");
  }
}

}  // namespace
}  // namespace Kestrel::AutoCli
