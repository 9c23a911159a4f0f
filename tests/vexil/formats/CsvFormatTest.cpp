// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/formats/FormatsFixture.h"

namespace Kestrel::Formats {
namespace {

std::string Csv(const std::shared_ptr<MetaObject>& root, Parameters parameters = {}) {
  return Print(kCsvFormat, root, parameters);
}

TEST(CsvFormatTest, PrintsAHeaderAndALinePerElement) {
  EXPECT_EQ(Csv(MakeDisks({{"sda", 1}, {"sdb", -2}})), "Name,Size\r\nsda,1\r\nsdb,-2\r\n");
}

TEST(CsvFormatTest, OmitsTheHeaderOnRequest) {
  EXPECT_EQ(Csv(MakeDisks({{"sda", 1}}), {{"header", "false"}}), "sda,1\r\n");
  EXPECT_EQ(Csv(MakeDisks({{"sda", 1}}), {{"header", "true"}}), "Name,Size\r\nsda,1\r\n");
  EXPECT_THAT(ErrorsOf(kCsvFormat, MakeDisks({}), {{"header", "no"}}),
              ElementsAre("The value of header is neither true nor false: no"));
}

TEST(CsvFormatTest, QuotesCellsWithACommaAQuoteOrALineBreak) {
  EXPECT_EQ(
      Csv(MakeTexts({"a,b", "say \"hi\"", "a\nb", "a\rb", " a ", "a\tb;c"}), {{"header", "false"}}),
      "\"a,b\"\r\n\"say \"\"hi\"\"\"\r\n\"a\nb\"\r\n\"a\rb\"\r\n a \r\na\tb;c\r\n");
  EXPECT_EQ(Csv(MakeRow("a,b\"", "x")), "\"a,b\"\"\"\r\nx\r\n");
  EXPECT_EQ(Csv(MakeTexts({"ë", "ë,", "ë\""}), {{"header", "false"}}),
            "ë\r\n\"ë,\"\r\n\"ë\"\"\"\r\n");
}

TEST(CsvFormatTest, DoesNotQuoteOtherControlCharacters) {
  for (const std::string text : {"\x01", "a\tb\x1f", "a long cell\twith tabs\tand Zoë in it\x7f"}) {
    EXPECT_EQ(Csv(MetaString::New(text), {{"header", "false"}}), text + "\r\n");
  }
}

TEST(CsvFormatTest, QuotesACellWithAQuoteAtAnyPosition) {
  for (std::size_t size = 1; size < 70; ++size) {
    for (std::size_t at = 0; at < size; ++at) {
      std::string text(size, 'x');
      text[at] = '"';
      EXPECT_EQ(Csv(MetaString::New(text), {{"header", "false"}}),
                '"' + text.substr(0, at) + "\"\"" + text.substr(at + 1) + "\"\r\n");
    }
  }
}

TEST(CsvFormatTest, PrintsCellsOfManyLengthsBesideOthers) {
  for (std::size_t size = 1; size < 150; ++size) {
    const std::string text(size, 'x');
    for (const std::string_view other : {"y", "\"", ""}) {
      const std::string row = text + ',' + (other == "\"" ? "\"\"\"\"" : std::string(other)) + ',';
      EXPECT_EQ(Csv(MakeRecord({{"A", text.c_str()}, {"B", other.data()}, {"C", text.c_str()}}),
                    {{"header", "false"}}),
                row + text + "\r\n");
    }
  }
}

TEST(CsvFormatTest, PrintsCellsOfManyLengthsThroughoutALongOutput) {
  std::vector<std::string> texts;
  std::string expected;
  for (std::size_t i = 0; i < 5000; ++i) {
    texts.emplace_back(1 + i * 31 % 130, static_cast<char>('a' + i % 26));
    expected += texts.back() + "\r\n";
  }
  EXPECT_EQ(Csv(MakeTexts(texts), {{"header", "false"}}), expected);
}

TEST(CsvFormatTest, PrintsALoneEmptyCellAsQuotes) {
  EXPECT_EQ(Csv(MakeTexts({"", "a"})), "value\r\n\"\"\r\na\r\n");
  EXPECT_EQ(Csv(MakeRow("", "")), "\"\"\r\n\"\"\r\n");
  EXPECT_EQ(Csv(MakeRecord({{"A", ""}, {"B", ""}})), "A,B\r\n,\r\n");
}

TEST(CsvFormatTest, PrintsScalarsInAColumnNamedValue) {
  EXPECT_EQ(Csv(MetaBool::New(true)), "value\r\ntrue\r\n");
  EXPECT_EQ(Csv(MetaInt::New(7)), "value\r\n7\r\n");
  EXPECT_EQ(Csv(MetaList::New(MetaType::Int)), "value\r\n");
}

TEST(CsvFormatTest, PrintsTheFieldsOfNestedStructuresAsColumns) {
  EXPECT_EQ(Csv(MakeVolume()),
            "Disk.Name,Disk.Size,Labels,On\r\nsda,7,\"[\"\"a\"\",\"\"b\"\"]\",true\r\n");
  EXPECT_EQ(Csv(MakeList({MakeVolume()})), Csv(MakeVolume()));
}

TEST(CsvFormatTest, PrintsListsInCellsAsJson) {
  auto row = MetaStruct::New("Row");
  row->SetField("Disks", MakeDisks({{"sda", 1}, {"sdb", 2}}));
  row->SetField("None", MetaList::New(MetaType::Int));
  row->SetField("Numbers", std::vector<long>{1, -2});
  EXPECT_EQ(
      Csv(row),
      "Disks,None,Numbers\r\n"
      "\"[{\"\"Name\"\":\"\"sda\"\",\"\"Size\"\":1},{\"\"Name\"\":\"\"sdb\"\",\"\"Size\"\":2}]\","
      "[],\"[1,-2]\"\r\n");
}

TEST(CsvFormatTest, PrintsTheDeclaredHeaderOfAnEmptyList) {
  EXPECT_EQ(Csv(MakeDisks({})), "Name,Size\r\n");
  EXPECT_EQ(Csv(MakeDisks({}), {{"header", "false"}}), "");
  EXPECT_EQ(Csv(MetaList::New(MetaType::Struct, MakeVolume())),
            "Disk.Name,Disk.Size,Labels,On\r\n");
}

TEST(CsvFormatTest, PrintsNothingWithoutColumns) {
  EXPECT_EQ(Csv(MetaStruct::New("Empty")), "");
  EXPECT_EQ(Csv(MakeList({MetaStruct::New("Empty")})), "");
  EXPECT_EQ(Csv(MetaList::New(MetaType::Struct, nullptr)), "");
  auto outer = MetaStruct::New("Outer");
  outer->SetField("Empty", MetaStruct::New("Empty"));
  outer->SetField("Name", "x");
  EXPECT_EQ(Csv(outer), "Name\r\nx\r\n");
}

TEST(CsvFormatTest, TakesTheHeaderOfAnUnknownShapeFromTheDeclaration) {
  const auto printWith = [](const std::shared_ptr<MetaObject>& declared, Parameters parameters) {
    const auto output = Testing::MakeOutput(MetaList::New(MetaType::Struct, nullptr));
    AutoCli::FormatParameters params = Testing::MakeParameters(parameters);
    AutoCli::DisplayContext display;
    std::ostringstream out;
    const CallFacts facts = {[&declared] { return declared; }, nullptr, nullptr};
    ExactFormatter(kCsvFormat, facts).Format(output, params, display, out);
    return out.str() + (output->HasError() ? output->GetErrors()[0] : "");
  };
  const auto declared = MetaList::New(MetaType::Struct, MakeVolume());
  EXPECT_EQ(printWith(declared, {}), "Disk.Name,Disk.Size,Labels,On\r\n");
  EXPECT_EQ(printWith(declared, {{"fields", "On"}}), "On\r\n");
  EXPECT_EQ(printWith(declared, {{"fields", "Nope"}}), "Unknown field: Nope");
  EXPECT_EQ(printWith(nullptr, {}), "");
  EXPECT_EQ(printWith(MetaInt::New(1), {}), "");
}

TEST(CsvFormatTest, TakesTheColumnsOfAnUnknownShapeFromTheParameter) {
  EXPECT_EQ(Csv(MetaList::New(MetaType::Struct, nullptr), {{"fields", "A,B.C"}}), "A,B.C\r\n");
}

TEST(CsvFormatTest, ChoosesColumnsInAnyOrder) {
  EXPECT_EQ(Csv(MakeVolume(), {{"fields", "Disk.Size,On,Disk.Name"}}),
            "Disk.Size,On,Disk.Name\r\n7,true,sda\r\n");
  EXPECT_EQ(Csv(MakeVolume(), {{"fields", "Disk.Size,On,Disk,On"}}),
            "Disk.Size,On,Disk.Name\r\n7,true,sda\r\n");
}

TEST(CsvFormatTest, NamesTheCellThatIsNotUtf8) {
  EXPECT_THAT(ErrorsOf(kCsvFormat, MakeList({MakeDisk("a", 1), MakeDisk("\xff", 2)})),
              ElementsAre("The field Name is not valid UTF-8 (element 2)"));
  EXPECT_THAT(ErrorsOf(kCsvFormat, MakeTexts({"\xff"})),
              ElementsAre("The value is not valid UTF-8 (element 1)"));
  EXPECT_THAT(ErrorsOf(kCsvFormat, MetaString::New("\xff")),
              ElementsAre("The result is not valid UTF-8"));
  EXPECT_THAT(ErrorsOf(kCsvFormat, MakeRow("a\xff", "x")),
              ElementsAre("The name of the field a\\xff is not valid UTF-8"));
}

TEST(CsvFormatTest, RejectsARowOfAnotherShape) {
  const auto lost = MakeDisk("sdb", 2);
  const auto disks = MakeList({MakeDisk("sda", 1), lost});
  lost->RemoveField("Name");
  EXPECT_THAT(ErrorsOf(kCsvFormat, disks), ElementsAre("The field Name is missing (element 2)"));
}

}  // namespace
}  // namespace Kestrel::Formats
