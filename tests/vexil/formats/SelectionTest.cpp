// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/formats/FormatsFixture.h"

namespace Kestrel::Formats {
namespace {

std::string Ndjson(const std::shared_ptr<MetaObject>& root, Parameters parameters) {
  return Print(kNdjsonFormat, root, parameters);
}

std::vector<std::string> Errors(const std::shared_ptr<MetaObject>& root, Parameters parameters) {
  return ErrorsOf(kNdjsonFormat, root, parameters);
}

const auto kDisks = {std::pair<const char*, long>{"b", 10}, {"a", 9}, {"c", 9}, {"B", -1}};

TEST(SelectionTest, ChoosesAndOrdersFields) {
  EXPECT_EQ(Ndjson(MakeDisk("a", 1), {{"fields", "Size,Name"}}), "{\"Size\":1,\"Name\":\"a\"}\n");
  EXPECT_EQ(Ndjson(MakeDisks({{"a", 1}, {"b", 2}}), {{"fields", "Size"}}),
            "{\"Size\":1}\n{\"Size\":2}\n");
}

TEST(SelectionTest, KeepsChosenFieldsNested) {
  EXPECT_EQ(Ndjson(MakeVolume(), {{"fields", "On,Disk.Size"}}),
            "{\"On\":true,\"Disk\":{\"Size\":7}}\n");
  EXPECT_EQ(Ndjson(MakeVolume(), {{"fields", "Disk.Size,On,Disk.Name"}}),
            "{\"Disk\":{\"Size\":7,\"Name\":\"sda\"},\"On\":true}\n");
}

TEST(SelectionTest, ChoosesAFieldOnce) {
  EXPECT_EQ(Ndjson(MakeDisk("a", 1), {{"fields", "Size,Name,Size"}}),
            "{\"Size\":1,\"Name\":\"a\"}\n");
  EXPECT_EQ(Ndjson(MakeVolume(), {{"fields", "Disk.Size,Disk"}}),
            "{\"Disk\":{\"Size\":7,\"Name\":\"sda\"}}\n");
  EXPECT_EQ(Ndjson(MakeVolume(), {{"fields", "Disk,Disk.Size"}}),
            "{\"Disk\":{\"Name\":\"sda\",\"Size\":7}}\n");
}

TEST(SelectionTest, IgnoresSpacesAroundNames) {
  EXPECT_EQ(Ndjson(MakeDisk("a", 1), {{"fields", " Size , Name"}}),
            "{\"Size\":1,\"Name\":\"a\"}\n");
  auto row = MakeRow(" Size", "x");
  row->SetField("Size", "y");
  EXPECT_EQ(Ndjson(row, {{"fields", " Size"}}), "{\" Size\":\"x\"}\n");
}

TEST(SelectionTest, PrefersAWholeNameToANestedField) {
  auto row = MetaStruct::New("Row");
  row->SetField("a", MakeRow("b.c", "deep"));
  row->SetField("a.b", MakeRow("c", "flat"));
  EXPECT_EQ(Ndjson(row, {{"fields", "a.b.c"}}), "{\"a\":{\"b.c\":\"deep\"}}\n");
  EXPECT_EQ(Ndjson(row, {{"fields", "a.b"}}), "{\"a.b\":{\"c\":\"flat\"}}\n");
}

TEST(SelectionTest, ChoosesAFieldWithoutAName) {
  auto row = MakeRow("", "x");
  row->SetField("A", MakeRow("", "y"));
  EXPECT_EQ(Ndjson(row, {{"fields", ""}}), "{\"\":\"x\"}\n");
  EXPECT_EQ(Ndjson(row, {{"fields", ",A"}}), "{\"\":\"x\",\"A\":{\"\":\"y\"}}\n");
  EXPECT_EQ(Ndjson(row, {{"fields", "A."}}), "{\"A\":{\"\":\"y\"}}\n");
}

TEST(SelectionTest, IgnoresWhatACommandChoosesForOtherFormatters) {
  EXPECT_EQ(Ndjson(MakeDisk("a", 1), {{"fields:Disk", "Name"},
                                      {"header:Disk", "<NONE>"},
                                      {"printf:Disk.Size", "%x"},
                                      {"units:Disk.Size", "MB"},
                                      {"align-fields", "true"},
                                      {"header-line", "false"},
                                      {"show-header", "false"},
                                      {"stylesheet", "a.xsl"},
                                      {"table-columns", "Name"},
                                      {"table-header", "false"},
                                      {"wrap-last", "true"}}),
            "{\"Name\":\"a\",\"Size\":1}\n");
}

TEST(SelectionTest, ReportsUnknownKeys) {
  EXPECT_THAT(
      Errors(MakeDisk("a", 1), {{"colour", "x"},
                                {"fields", "Name"},
                                {"header", "false"},
                                {"Sort", "Name"},
                                {"wrap-last:Disk", "true"}}),
      ElementsAre("Unknown format parameter: Sort", "Unknown format parameter: colour",
                  "Unknown format parameter: header", "Unknown format parameter: wrap-last:Disk"));
}

TEST(SelectionTest, ReportsUnknownFields) {
  EXPECT_THAT(
      Errors(MakeVolume(), {{"fields", "Nope,On,Disk.Nope,Labels.a, ,Disk."}, {"sort", "X"}}),
      ElementsAre("Unknown field: Nope", "Unknown field: Disk.Nope", "Unknown field: Labels.a",
                  "Unknown field: ", "Unknown field: Disk.", "Unknown field: X"));
  EXPECT_THAT(Errors(MakeDisks({}), {{"fields", "Nope"}}), ElementsAre("Unknown field: Nope"));
  EXPECT_THAT(Errors(MetaInt::New(1), {{"fields", "Nope"}}), ElementsAre("Unknown field: Nope"));
}

TEST(SelectionTest, AcceptsAnyFieldIfNothingIsKnownAboutAnEmptyList) {
  const auto list = MetaList::New(MetaType::Struct, nullptr);
  EXPECT_EQ(Ndjson(list, {{"fields", "A,B.C"}, {"sort", "A"}}), "");
}

TEST(SelectionTest, FindsAScalarByTheNameValue) {
  const auto list = MakeTexts({"b", "a"});
  EXPECT_EQ(Ndjson(list, {{"fields", "value"}, {"sort", "value"}}), "\"a\"\n\"b\"\n");
  EXPECT_EQ(Ndjson(MetaBool::New(true), {{"fields", "value"}}), "true\n");
}

TEST(SelectionTest, SortsIntegersByValueAndKeepsTheOrderOfEqualOnes) {
  EXPECT_EQ(Ndjson(MakeDisks(kDisks), {{"sort", "Size"}, {"fields", "Name"}}),
            "{\"Name\":\"B\"}\n{\"Name\":\"a\"}\n{\"Name\":\"c\"}\n{\"Name\":\"b\"}\n");
  EXPECT_EQ(Ndjson(MakeDisks(kDisks), {{"sort", "-Size"}, {"fields", "Name"}}),
            "{\"Name\":\"b\"}\n{\"Name\":\"a\"}\n{\"Name\":\"c\"}\n{\"Name\":\"B\"}\n");
}

TEST(SelectionTest, SortsStringsByBytes) {
  EXPECT_EQ(Ndjson(MakeTexts({"é", "z", "", "Z", "za"}), {{"sort", "value"}}),
            "\"\"\n\"Z\"\n\"z\"\n\"za\"\n\"é\"\n");
}

TEST(SelectionTest, SortsByBooleansAndNestedFields) {
  const auto off = MakeVolume();
  off->SetField("On", false);
  off->SetField("Disk", MakeDisk("sdb", 8));
  const auto volumes = MakeList({MakeVolume(), off});
  EXPECT_EQ(Ndjson(volumes, {{"sort", "On"}, {"fields", "On"}}), "{\"On\":false}\n{\"On\":true}\n");
  EXPECT_EQ(Ndjson(volumes, {{"sort", "-Disk.Size"}, {"fields", "On"}}),
            "{\"On\":false}\n{\"On\":true}\n");
}

TEST(SelectionTest, DoesNotSortByStructuresAndLists) {
  EXPECT_THAT(Errors(MakeList({MakeVolume()}), {{"sort", "Labels"}}),
              ElementsAre("Unable to sort by Labels: its values are structures or lists"));
  EXPECT_THAT(Errors(MetaList::New(MetaType::Struct, MakeVolume()), {{"sort", "-Disk"}}),
              ElementsAre("Unable to sort by Disk: its values are structures or lists"));
}

TEST(SelectionTest, LimitsRowsAfterSorting) {
  EXPECT_EQ(Ndjson(MakeDisks(kDisks), {{"sort", "Size"}, {"limit", "2"}, {"fields", "Name"}}),
            "{\"Name\":\"B\"}\n{\"Name\":\"a\"}\n");
  EXPECT_EQ(Ndjson(MakeDisks(kDisks), {{"limit", "0"}}), "");
  EXPECT_EQ(Ndjson(MakeTexts({"a", "b"}), {{"limit", "001"}}), "\"a\"\n");
  EXPECT_EQ(Ndjson(MakeTexts({"a"}), {{"limit", "99999999999999999999999"}}), "\"a\"\n");
}

TEST(SelectionTest, DoesNotLimitWhatIsNotAList) {
  EXPECT_EQ(Ndjson(MetaInt::New(5), {{"limit", "0"}}), "5\n");
  EXPECT_EQ(Ndjson(MakeRow("A", "x"), {{"limit", "0"}, {"sort", "A"}}), "{\"A\":\"x\"}\n");
}

TEST(SelectionTest, ReportsALimitThatIsNotAWholeNumber) {
  for (const char* text : {"", "x", "-1", "+1", "1.5", "1 ", " 1", "0x1", "1e3"}) {
    EXPECT_THAT(Errors(MakeDisks({}), {{"limit", text}}),
                ElementsAre("The value of limit is not a whole number: " + std::string(text)));
  }
}

TEST(SelectionTest, ReportsAllMistakesTogether) {
  EXPECT_THAT(
      Errors(MakeDisks({}), {{"a", "b"}, {"fields", "X"}, {"limit", "y"}, {"sort", "-Z"}}),
      ElementsAre("Unknown format parameter: a", "The value of limit is not a whole number: y",
                  "Unknown field: X", "Unknown field: Z"));
}

}  // namespace
}  // namespace Kestrel::Formats
