// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/XmlUtil.h"
#include "support/DescribeValue.h"
#include "vexil/formats/FormatsFixture.h"

namespace Kestrel::Formats {
namespace {

std::string ValueXml(const std::shared_ptr<MetaObject>& root, Parameters parameters = {}) {
  return Print(kValueXmlFormat, root, parameters);
}

/// Expects that the tool reads back what it prints.
void ExpectReadBack(const std::shared_ptr<MetaObject>& root) {
  const auto found = AutoCli::XmlUtil_ParseXmlOutput(ValueXml(root));
  EXPECT_EQ(Testing::DescribeValue(found), Testing::DescribeValue(root));
}

TEST(ValueXmlFormatTest, PrintsTheDocumentOfACommand) {
  EXPECT_EQ(ValueXml(MakeList({MakeVolume()})),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<output>\n"
            "   <list type=\"structure\">\n"
            "      <structure typeName=\"Volume\">\n"
            "         <field name=\"Disk\"><structure typeName=\"Disk\">\n"
            "            <field name=\"Name\"><string>sda</string></field>\n"
            "            <field name=\"Size\"><int>7</int></field>\n"
            "         </structure></field>\n"
            "         <field name=\"Labels\"><list type=\"string\">\n"
            "            <string>a</string>\n"
            "            <string>b</string>\n"
            "         </list></field>\n"
            "         <field name=\"On\"><bool>true</bool></field>\n"
            "      </structure>\n"
            "   </list>\n"
            "</output>\n");
}

TEST(ValueXmlFormatTest, PrintsScalarsAndEmptyValues) {
  const std::string begin = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<output>\n   ";
  EXPECT_EQ(ValueXml(MetaInt::New(-5)), begin + "<int>-5</int>\n</output>\n");
  EXPECT_EQ(ValueXml(MetaString::New("")), begin + "<string></string>\n</output>\n");
  EXPECT_EQ(ValueXml(MetaStruct::New("Empty")),
            begin + "<structure typeName=\"Empty\"></structure>\n</output>\n");
  EXPECT_EQ(ValueXml(MetaList::New(MetaType::Bool)),
            begin + "<list type=\"bool\"></list>\n</output>\n");
}

TEST(ValueXmlFormatTest, IsReadBackByTheTool) {
  ExpectReadBack(MakeList({MakeVolume(), MakeVolume()}));
  ExpectReadBack(MetaBool::New(false));
  ExpectReadBack(MetaInt::New(-9223372036854775807L - 1));
  ExpectReadBack(MetaString::New(" a\tb\r\nc\n]]> <!-- &amp; \"'%\x7f "));
  ExpectReadBack(MetaString::New("\u0085\u2028\ufeff\U0010ffff"));
  ExpectReadBack(MakeRow(" a\tb\r\nc\n]]> <!-- &amp; \"'%\x7f ", "x"));
  ExpectReadBack(MetaList::New(MetaType::String));
  ExpectReadBack(MetaStruct::New("Empty"));
  ExpectReadBack(Testing::MakeNested(100));
}

TEST(ValueXmlFormatTest, RejectsDeeperNestingThanTheReaderAccepts) {
  int deepest = 0;
  for (int depth = 100; depth < 140; ++depth) {
    const auto root = Testing::MakeNested(depth);
    if (PrintWithErrors(kValueXmlFormat, root).errors.empty()) {
      ExpectReadBack(root);
      deepest = depth;
    }
  }
  EXPECT_EQ(deepest, 127);
  const auto errors = ErrorsOf(kValueXmlFormat, Testing::MakeNested(128));
  ASSERT_EQ(errors.size(), 1u);
  EXPECT_THAT(errors[0],
              ::testing::EndsWith("child is nested more deeply than a value document allows"));
}

TEST(ValueXmlFormatTest, RejectsLongerStringsThanTheReaderAccepts) {
  ExpectReadBack(MetaString::New(std::string(10000000, '<')));
  EXPECT_THAT(ErrorsOf(kValueXmlFormat, MakeRow("A", std::string(10000001, 'x'))),
              ElementsAre("The field A is longer than a value document allows"));
  EXPECT_THAT(ErrorsOf(kValueXmlFormat, MakeRow(std::string(10000001, 'x'), "")),
              ElementsAre(::testing::EndsWith("x is longer than a value document allows")));
}

TEST(ValueXmlFormatTest, NamesTheFieldWithACharacterThatXmlForbids) {
  EXPECT_THAT(ErrorsOf(kValueXmlFormat, MakeList({MakeDisk("a", 1), MakeDisk("b\x01", 1)})),
              ElementsAre("The field Name contains U+0001, which XML does not allow (element 2)"));
  EXPECT_THAT(ErrorsOf(kValueXmlFormat, MetaString::New("\uffff")),
              ElementsAre("The result contains U+FFFF, which XML does not allow"));
  EXPECT_THAT(
      ErrorsOf(kValueXmlFormat, MakeRow("a\x1b", "x")),
      ElementsAre("The name of the field a\\u{1b} contains U+001B, which XML does not allow"));
  EXPECT_THAT(ErrorsOf(kValueXmlFormat, MakeTexts({std::string(1, '\0')})),
              ElementsAre("The value contains U+0000, which XML does not allow (element 1)"));
}

TEST(ValueXmlFormatTest, RejectsANameThatTheReaderRejects) {
  EXPECT_THAT(ErrorsOf(kValueXmlFormat, MakeRow("", "x")),
              ElementsAre("The name of a field is empty, which a value document does not allow"));
}

/// Makes a row with a list in the field "Items".
std::shared_ptr<MetaStruct> MakeItems(const std::shared_ptr<MetaList>& items) {
  auto row = MetaStruct::New("Row");
  row->SetField("Items", items);
  return row;
}

TEST(ValueXmlFormatTest, RejectsListsOfDifferentShapesThatTheReaderRejects) {
  const auto none = MetaList::New(MetaType::Struct, nullptr);
  const auto disks = MakeItems(MakeDisks({{"sda", 1}}));
  const auto volumes = MakeItems(MakeList({MakeVolume()}));
  const auto rows = MetaList::New(MetaType::Struct, MakeItems(none));
  rows->Add(disks);
  rows->Add(volumes);
  EXPECT_THAT(
      ErrorsOf(kValueXmlFormat, rows),
      ElementsAre("The result has lists of different structures in one field, which a value "
                  "document does not allow"));
  // The reader accepts all shapes after an empty list.
  const auto later = MetaList::New(MetaType::Struct, MakeItems(none));
  later->Add(MakeItems(none));
  later->Add(disks);
  later->Add(volumes);
  const auto found = AutoCli::XmlUtil_ParseXmlOutput(ValueXml(later));
  EXPECT_EQ(std::static_pointer_cast<MetaList>(found)->GetCount(), 3u);
}

TEST(ValueXmlFormatTest, NamesTheFieldThatIsNotUtf8) {
  EXPECT_THAT(ErrorsOf(kValueXmlFormat, MakeRow("Note", "a\xff")),
              ElementsAre("The field Note is not valid UTF-8"));
}

TEST(ValueXmlFormatTest, LeavesOutWhatIsNotChosen) {
  auto row = MakeRow("", "x");
  row->SetField("A", "ok");
  row->SetField("B", "\x01");
  EXPECT_EQ(
      ValueXml(row, {{"fields", "A"}}),
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<output>\n   <structure typeName=\"Row\">\n"
      "      <field name=\"A\"><string>ok</string></field>\n   </structure>\n</output>\n");
}

}  // namespace
}  // namespace Kestrel::Formats
