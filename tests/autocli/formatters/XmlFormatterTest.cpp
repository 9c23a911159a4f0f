// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/XmlFormatter.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "support/FormatterFixture.h"

namespace Kestrel::AutoCli {
namespace {

using namespace ::Kestrel::Testing;  // NOLINT: helpers of these tests

class XmlFormatterTest : public FormatterFixture<XmlFormatter> {
 protected:
  /// Returns what is between the tags of the element `root`.
  static std::string PrintRoot(const std::shared_ptr<MetaObject>& root) {
    const std::string before =
        "<?xml version=\"1.0\"?>\n"
        "<output xmlns:vexil=\"urn:norvane:vexil:output:1.0\">\n"
        "   <meta-data>\n"
        "   </meta-data>\n"
        "   <root>\n";
    const std::string after = "   </root>\n</output>\n";
    const std::string text = Print(root);
    EXPECT_EQ(text.substr(0, before.size()), before);
    EXPECT_EQ(text.substr(text.size() - after.size()), after);
    return text.substr(before.size(), text.size() - before.size() - after.size());
  }
};

TEST_F(XmlFormatterTest, TheExceptionOfAStreamReachesTheCaller) {
  EXPECT_TRUE(ThrowsOnAFullDisk());
}

TEST_F(XmlFormatterTest, DocumentsItself) {
  const XmlFormatter formatter;
  EXPECT_EQ(formatter.GetName(), "xml");
  EXPECT_EQ(formatter.GetDescription(),
            "Print an XML document to the screen representing the output for a given command");
  ASSERT_EQ(formatter.GetParams().size(), 1u);
  EXPECT_EQ(formatter.GetParams()[0].name, "stylesheet");
  EXPECT_EQ(formatter.GetParams()[0].description,
            "The file name or URL to a stylesheet for this document.  ");
  EXPECT_FALSE(formatter.GetParams()[0].flag);
}

TEST_F(XmlFormatterTest, WritesADocumentAroundTheValue) {
  EXPECT_EQ(Print(MetaInt::New(7)),
            "<?xml version=\"1.0\"?>\n"
            "<output xmlns:vexil=\"urn:norvane:vexil:output:1.0\">\n"
            "   <meta-data>\n"
            "   </meta-data>\n"
            "   <root>\n"
            "      <integer>7</integer>\n"
            "   </root>\n"
            "</output>\n");
}

TEST_F(XmlFormatterTest, NamesTheStylesheetInTheSecondLine) {
  EXPECT_EQ(Print(MetaInt::New(7), {{"stylesheet", "a.xsl"}}),
            "<?xml version=\"1.0\"?>\n"
            "<?xml-stylesheet type=\"text/xsl\" href=\"a.xsl\"?>\n"
            "<output xmlns:vexil=\"urn:norvane:vexil:output:1.0\">\n"
            "   <meta-data>\n"
            "      <meta-data-field name=\"stylesheet\" value=\"a.xsl\"/>\n"
            "   </meta-data>\n"
            "   <root>\n"
            "      <integer>7</integer>\n"
            "   </root>\n"
            "</output>\n");
}

TEST_F(XmlFormatterTest, EscapesTheStylesheetOnlyInTheMetaData) {
  const std::string text = Print(MetaInt::New(7), {{"stylesheet", "x\"y&z%"}});
  EXPECT_NE(text.find("\n<?xml-stylesheet type=\"text/xsl\" href=\"x\"y&z%\"?>\n<output "),
            std::string::npos);
  EXPECT_NE(text.find("name=\"stylesheet\" value=\"x&quot;y&amp;z&#37;\"/>\n"), std::string::npos);
}

TEST_F(XmlFormatterTest, AnEmptyStylesheetIsWritten) {
  EXPECT_NE(Print(MetaInt::New(7), {{"stylesheet", ""}})
                .find("\n<?xml-stylesheet type=\"text/xsl\" href=\"\"?>\n<output "),
            std::string::npos);
}

TEST_F(XmlFormatterTest, ListsAllParametersInTheOrderOfTheirKeys) {
  const std::string text = Print(
      MetaInt::New(7), {{"units:A.b", "5 < 6"}, {"printf:A.b", "%5ld"}, {"Z", ""}, {"a'b", "\"&"}});
  EXPECT_NE(text.find("   <meta-data>\n"
                      "      <meta-data-field name=\"Z\" value=\"\"/>\n"
                      "      <meta-data-field name=\"a&apos;b\" value=\"&quot;&amp;\"/>\n"
                      "      <meta-data-field name=\"printf:A.b\" value=\"&#37;5ld\"/>\n"
                      "      <meta-data-field name=\"units:A.b\" value=\"5 &lt; 6\"/>\n"
                      "   </meta-data>\n"),
            std::string::npos);
}

TEST_F(XmlFormatterTest, TheNameOfTheFormatterIsNotMetaData) {
  FormatParameters params;
  params.SetFormatter("xml");
  params.SetParameter("key", "value");
  XmlFormatter formatter;
  DisplayContext display;
  std::ostringstream out;
  formatter.Format(MakeOutput(MetaInt::New(7)), params, display, out);
  EXPECT_NE(out.str().find("   <meta-data>\n"
                           "      <meta-data-field name=\"key\" value=\"value\"/>\n"
                           "   </meta-data>\n"),
            std::string::npos);
}

TEST_F(XmlFormatterTest, AppliesNoParametersToFields) {
  EXPECT_NE(
      Print(MakeDisk("a", 1),
            {{"printf:Disk.Size", "%5ld"}, {"units:Disk.Size", "MB"}, {"fields:Disk", "Name"}})
          .find("<integer>1</integer>"),
      std::string::npos);
}

TEST_F(XmlFormatterTest, PrintsScalars) {
  EXPECT_EQ(PrintRoot(MetaBool::New(true)), "      <boolean>true</boolean>\n");
  EXPECT_EQ(PrintRoot(MetaBool::New(false)), "      <boolean>false</boolean>\n");
  EXPECT_EQ(PrintRoot(MetaInt::New(-5)), "      <integer>-5</integer>\n");
  EXPECT_EQ(PrintRoot(MetaString::New("two words")), "      <string>two words</string>\n");
  EXPECT_EQ(PrintRoot(MetaString::New("")), "      <string></string>\n");
}

TEST_F(XmlFormatterTest, PrintsTheLimitsOfIntegers) {
  EXPECT_EQ(PrintAt(0, MetaInt::New(std::numeric_limits<long>::max())),
            "<integer>9223372036854775807</integer>\n");
  EXPECT_EQ(PrintAt(0, MetaInt::New(std::numeric_limits<long>::min())),
            "<integer>-9223372036854775808</integer>\n");
}

TEST_F(XmlFormatterTest, EscapesExactlySixCharactersInAString) {
  EXPECT_EQ(PrintAt(0, MetaString::New("100%")), "<string>100&#37;</string>\n");
  EXPECT_EQ(PrintAt(0, MetaString::New("<a href=\"x\">&'%</a>")),
            "<string>&lt;a href=&quot;x&quot;&gt;&amp;&apos;&#37;&lt;/a&gt;</string>\n");
  EXPECT_EQ(PrintAt(0, MetaString::New("a\nb\t\r\x01\x7f/\\ \xc3\xa4\xff")),
            "<string>a\nb\t\r\x01\x7f/\\ \xc3\xa4\xff</string>\n");
  EXPECT_EQ(PrintAt(0, MetaString::New(std::string("a\0b", 3))),
            std::string("<string>a\0b</string>\n", 21));
}

TEST_F(XmlFormatterTest, PrintsAStructureWithItsFieldsInOrder) {
  const auto disk = MetaStruct::New("Disk");
  disk->SetField("Size", 512);
  disk->SetField("Name", "a<b");
  EXPECT_EQ(PrintRoot(disk),
            "      <structure typeName=\"Disk\">\n"
            "         <field name=\"Name\">\n"
            "            <string>a&lt;b</string>\n"
            "         </field>\n"
            "         <field name=\"Size\">\n"
            "            <integer>512</integer>\n"
            "         </field>\n"
            "      </structure>\n");
}

TEST_F(XmlFormatterTest, EscapesFieldNames) {
  const auto structure = MetaStruct::New("Row");
  structure->SetField("100% <of> \"a\" & 'b'", true);
  EXPECT_EQ(PrintAt(0, structure),
            "<structure typeName=\"Row\">\n"
            "   <field name=\"100&#37; &lt;of&gt; &quot;a&quot; &amp; &apos;b&apos;\">\n"
            "      <boolean>true</boolean>\n"
            "   </field>\n"
            "</structure>\n");
}

TEST_F(XmlFormatterTest, PrintsAnEmptyStructure) {
  EXPECT_EQ(PrintRoot(MetaStruct::New("Empty")),
            "      <structure typeName=\"Empty\">\n      </structure>\n");
}

TEST_F(XmlFormatterTest, PrintsListsWithTheWordOfTheirKind) {
  EXPECT_EQ(PrintRoot(MetaList::New(MetaType::Int)),
            "      <list type=\"integer\">\n      </list>\n");
  EXPECT_EQ(PrintAt(0, MetaList::New(MetaType::Bool)), "<list type=\"boolean\">\n</list>\n");
  EXPECT_EQ(PrintAt(0, MetaList::New(MetaType::String)), "<list type=\"string\">\n</list>\n");
  EXPECT_EQ(PrintAt(0, MakeDisks({})), "<list type=\"structure\">\n</list>\n");
}

TEST_F(XmlFormatterTest, PrintsTheElementsOfAListTwoLevelsDeeper) {
  const auto numbers = MetaList::New(MetaType::Int);
  numbers->AddAll(std::vector<long>{1, -2});
  EXPECT_EQ(PrintRoot(numbers),
            "      <list type=\"integer\">\n"
            "            <integer>1</integer>\n"
            "            <integer>-2</integer>\n"
            "      </list>\n");
  const auto texts = MetaList::New(MetaType::String);
  texts->AddAll(std::vector<std::string>{"", "x"});
  EXPECT_EQ(PrintAt(1, texts),
            "   <list type=\"string\">\n"
            "         <string></string>\n"
            "         <string>x</string>\n"
            "   </list>\n");
  const auto flags = MetaList::New(MetaType::Bool);
  flags->Add(true);
  EXPECT_EQ(PrintAt(0, flags),
            "<list type=\"boolean\">\n"
            "      <boolean>true</boolean>\n"
            "</list>\n");
}

TEST_F(XmlFormatterTest, PrintsStructuresInListsInStructures) {
  const auto structure = MetaStruct::New("Outer");
  structure->SetField("disks", MakeDisks({{"a", 1}, {"b", 2}}));
  structure->SetField("inner", MetaStruct::New("Inner"));
  EXPECT_EQ(PrintAt(0, structure),
            "<structure typeName=\"Outer\">\n"
            "   <field name=\"disks\">\n"
            "      <list type=\"structure\">\n"
            "            <structure typeName=\"Disk\">\n"
            "               <field name=\"Name\">\n"
            "                  <string>a</string>\n"
            "               </field>\n"
            "               <field name=\"Size\">\n"
            "                  <integer>1</integer>\n"
            "               </field>\n"
            "            </structure>\n"
            "            <structure typeName=\"Disk\">\n"
            "               <field name=\"Name\">\n"
            "                  <string>b</string>\n"
            "               </field>\n"
            "               <field name=\"Size\">\n"
            "                  <integer>2</integer>\n"
            "               </field>\n"
            "            </structure>\n"
            "      </list>\n"
            "   </field>\n"
            "   <field name=\"inner\">\n"
            "      <structure typeName=\"Inner\">\n"
            "      </structure>\n"
            "   </field>\n"
            "</structure>\n");
}

TEST_F(XmlFormatterTest, IndentsByThreeSpacesPerLevelFromLevelOne) {
  EXPECT_EQ(PrintAt(3, MetaInt::New(1)), "         <integer>1</integer>\n");
  EXPECT_EQ(PrintAt(0, MetaInt::New(1)), "<integer>1</integer>\n");
  EXPECT_EQ(PrintAt(-7, MetaInt::New(1)), "<integer>1</integer>\n");
  const auto structure = MetaStruct::New("Row");
  structure->SetField("a", 1);
  EXPECT_EQ(PrintAt(-1, structure),
            "<structure typeName=\"Row\">\n"
            "   <field name=\"a\">\n"
            "   <integer>1</integer>\n"
            "   </field>\n"
            "</structure>\n");
}

TEST_F(XmlFormatterTest, ReportsAValueWhoseClassDoesNotMatchItsKind) {
  const auto print = [](MetaType type) { return PrintAt(2, std::make_shared<LyingValue>(type)); };
  EXPECT_EQ(print(MetaType::Bool), "<!-- Error reading a bool -->\n");
  EXPECT_EQ(print(MetaType::Int), "Error reading a int\n");
  EXPECT_EQ(print(MetaType::String), "Error reading a string\n");
  EXPECT_EQ(print(MetaType::Struct), "Error reading a struct from output.\n");
  EXPECT_EQ(print(MetaType::List), "Error reading a List\n");
}

TEST_F(XmlFormatterTest, ReportsAnUnknownKindAndNull) {
  const char* const text = "Error Only simple int, bool, string and struct output supported\n";
  EXPECT_EQ(PrintAt(2, std::make_shared<LyingValue>(static_cast<MetaType>(5))), text);
  EXPECT_EQ(PrintAt(2, nullptr), text);
}

TEST_F(XmlFormatterTest, WritesTheDocumentAroundABadRoot) {
  EXPECT_EQ(PrintRoot(std::make_shared<LyingValue>(MetaType::Int)), "Error reading a int\n");
  std::ostringstream out;
  const auto output = CallSpec::Output::New();
  Format(output, out);
  EXPECT_NE(out.str().find("   <root>\n"
                           "Error Only simple int, bool, string and struct output supported\n"
                           "   </root>\n"
                           "</output>\n"),
            std::string::npos);
  EXPECT_FALSE(output->HasError());
}

TEST_F(XmlFormatterTest, ContinuesAfterABadField) {
  const auto structure = MetaStruct::New("Row");
  structure->SetField("a", std::make_shared<LyingValue>(MetaType::Bool));
  structure->SetField("b", 1);
  EXPECT_EQ(PrintAt(0, structure),
            "<structure typeName=\"Row\">\n"
            "   <field name=\"a\">\n"
            "<!-- Error reading a bool -->\n"
            "   </field>\n"
            "   <field name=\"b\">\n"
            "      <integer>1</integer>\n"
            "   </field>\n"
            "</structure>\n");
}

TEST_F(XmlFormatterTest, SantizeStringReplacesEachCharacterOnce) {
  EXPECT_EQ(SantizeString(""), "");
  EXPECT_EQ(SantizeString("plain"), "plain");
  EXPECT_EQ(SantizeString("&<>%\"'"), "&amp;&lt;&gt;&#37;&quot;&apos;");
  EXPECT_EQ(SantizeString("&amp;"), "&amp;amp;");
  EXPECT_EQ(SantizeString("&&&"), "&amp;&amp;&amp;");
}

TEST_F(XmlFormatterTest, SantizeStringLeavesAllOtherBytesUnchanged) {
  for (int byte = 0; byte < 256; ++byte) {
    const std::string text(1, static_cast<char>(byte));
    const bool isSpecial = byte != 0 && std::string("&<>%\"'").find(text) != std::string::npos;
    EXPECT_EQ(SantizeString(text) == text, !isSpecial) << byte;
  }
}

TEST_F(XmlFormatterTest, SantizeStringReplacesACharacterAtEachPlace) {
  for (std::size_t size = 1; size < 40; ++size) {
    for (std::size_t at = 0; at < size; ++at) {
      const std::string before(at, 'a');
      const std::string after(size - at - 1, 'b');
      EXPECT_EQ(SantizeString(before + "%" + after), before + "&#37;" + after);
    }
  }
  EXPECT_EQ(SantizeString(std::string(100000, 'a') + "'"), std::string(100000, 'a') + "&apos;");
}

/// Makes the six replacements one after the other, each in the whole string.
std::string ReplaceOneByOne(std::string text) {
  const std::pair<const char*, const char*> steps[] = {{"&", "&amp;"},   {"<", "&lt;"},
                                                       {">", "&gt;"},    {"%", "&#37;"},
                                                       {"\"", "&quot;"}, {"'", "&apos;"}};
  for (const auto& [from, to] : steps) {
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos;
         at += std::string(to).size()) {
      text.replace(at, 1, to);
    }
  }
  return text;
}

TEST_F(XmlFormatterTest, SantizeStringEqualsSixReplacementsInOrderOnAllShortStrings) {
  const std::string alphabet = "&<>%\"'a;#";
  std::vector<std::string> texts = {""};
  for (std::size_t i = 0; i < texts.size(); ++i) {
    ASSERT_EQ(SantizeString(texts[i]), ReplaceOneByOne(texts[i]));
    ASSERT_EQ(PrintAt(0, MetaString::New(texts[i])),
              "<string>" + ReplaceOneByOne(texts[i]) + "</string>\n");
    for (std::size_t next = 0; texts[i].size() < 4 && next < alphabet.size(); ++next) {
      texts.push_back(texts[i] + alphabet[next]);
    }
  }
  EXPECT_EQ(texts.size(), 1u + 9 + 81 + 729 + 6561);
}

}  // namespace
}  // namespace Kestrel::AutoCli
