// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/XmlUtil.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <unistd.h>

#include <climits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kestrel/KestrelException.h"
#include "kestrel/metaobj/MetaInt.h"
#include "support/DescribeValue.h"
#include "support/Random.h"
#include "support/ScopedTempDir.h"
#include "support/StreamCapture.h"

namespace Kestrel::AutoCli {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::ThrowsMessage;

using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaStruct;
using Testing::DescribeValue;
using Testing::StreamCapture;

/// A parsed document, for tests of the functions on nodes.
class Tree {
 public:
  explicit Tree(std::string_view text)
      : document_(xmlReadMemory(text.data(), static_cast<int>(text.size()), "test", nullptr, 0),
                  &xmlFreeDoc) {}

  xmlNode* GetRoot() const { return xmlDocGetRootElement(document_.get()); }
  /// Returns the child of the root at `position`. Text nodes and comments are counted too.
  xmlNode* GetChild(int position) const {
    xmlNode* child = GetRoot()->children;
    for (; position > 0; --position) {
      child = child->next;
    }
    return child;
  }

 private:
  std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document_;
};

/// Reads the value document `text`. Returns a description of the value, or the message thrown.
std::string ResultOf(const std::string& text) {
  try {
    return DescribeValue(XmlUtil_ParseXmlOutput(text));
  } catch (const KestrelException& error) {
    return std::string("throws ") + error.what();
  }
}

/// Reads the value element `text` with the functions on nodes. Returns a description of the value,
/// or the message thrown.
std::string BuildOf(const std::string& text) {
  const Tree tree(text);
  try {
    return DescribeValue(XmlUtil_BuildMetaObject(tree.GetRoot()));
  } catch (const KestrelException& error) {
    return std::string("throws ") + error.what();
  }
}

constexpr const char* kUnbuildable =
    "throws Error parsing command output.  Unable to build a proper metaobject from output tag.  "
    "output must contain properly formatted tags of type bool, int, string, structure and list. "
    "Error was : ";

std::string Unbuildable(const std::string& cause) { return kUnbuildable + cause; }

std::string Repeat(std::string_view text, int count) {
  std::string repeated;
  for (int i = 0; i < count; ++i) {
    repeated += text;
  }
  return repeated;
}

TEST(XmlUtilTest, ExtractAttributeReturnsTheValueOrAnEmptyString) {
  const Tree tree("<a one='1' none='' text='&lt;&#65;&quot; &amp;' xmlns:p='urn:p' p:other='o'/>");
  EXPECT_EQ(XmlUtil_ExtractAttribute(tree.GetRoot(), "one"), "1");
  EXPECT_EQ(XmlUtil_ExtractAttribute(tree.GetRoot(), "none"), "");
  EXPECT_EQ(XmlUtil_ExtractAttribute(tree.GetRoot(), "missing"), "");
  EXPECT_EQ(XmlUtil_ExtractAttribute(tree.GetRoot(), "One"), "");
  EXPECT_EQ(XmlUtil_ExtractAttribute(tree.GetRoot(), "text"), "<A\" &");
  EXPECT_EQ(XmlUtil_ExtractAttribute(tree.GetRoot(), "other"), "o");
}

TEST(XmlUtilTest, ExtractAttributeUsesTheDocumentType) {
  const Tree tree(
      "<!DOCTYPE a [<!ENTITY e 'x'><!ATTLIST a default CDATA 'a default'>]>"
      "<a entity='1&e;2' only='&e;' character='a&#38;b'/>");
  EXPECT_EQ(XmlUtil_ExtractAttribute(tree.GetRoot(), "entity"), "1x2");
  EXPECT_EQ(XmlUtil_ExtractAttribute(tree.GetRoot(), "only"), "x");
  EXPECT_EQ(XmlUtil_ExtractAttribute(tree.GetRoot(), "character"), "a&b");
  EXPECT_EQ(XmlUtil_ExtractAttribute(tree.GetRoot(), "default"), "a default");
}

TEST(XmlUtilTest, ExtractAttributeExpandsAnEntityWithinAnEntity) {
  const Tree tree("<!DOCTYPE a [<!ENTITY e 'x'><!ENTITY f '1&e;2'>]><a only='&f;'/>");
  EXPECT_EQ(XmlUtil_ExtractAttribute(tree.GetRoot(), "only"), "1x2");
}

void Append(xmlAttr& attribute, xmlNode* node) {
  node->parent = reinterpret_cast<xmlNode*>(&attribute);
  node->prev = attribute.last;
  attribute.last->next = node;
  attribute.last = node;
}

const xmlChar* AsXmlChars(const char* text) { return reinterpret_cast<const xmlChar*>(text); }

// The parser never puts a comment, a CDATA section or the text of an undeclared entity into an
// attribute, but a caller can.
TEST(XmlUtilTest, ExtractAttributeJoinsTheNodesOfACallersAttribute) {
  const Tree tree("<a one='1'/>");
  xmlAttr& attribute = *tree.GetRoot()->properties;
  Append(attribute, xmlNewDocComment(attribute.doc, AsXmlChars("comment")));
  Append(attribute, xmlNewCDataBlock(attribute.doc, AsXmlChars("<2>"), 3));
  xmlNode* const reference = xmlNewReference(attribute.doc, AsXmlChars("undeclared"));
  reference->content = const_cast<xmlChar*>(AsXmlChars("3"));
  Append(attribute, reference);
  EXPECT_EQ(XmlUtil_ExtractAttribute(tree.GetRoot(), "one"), "1<2>3");
}

TEST(XmlUtilTest, ExtractAttributeIsEmptyIfItsTextNodeHasNoContent) {
  const Tree tree("<a one='1'/>");
  xmlNodeSetContent(tree.GetRoot()->properties->children, nullptr);
  EXPECT_EQ(XmlUtil_ExtractAttribute(tree.GetRoot(), "one"), "");
}

TEST(XmlUtilTest, ExtractAttributeOfATextNodeIsEmpty) {
  const Tree tree("<a>text</a>");
  EXPECT_EQ(XmlUtil_ExtractAttribute(tree.GetChild(0), "one"), "");
}

TEST(XmlUtilTest, GetContentReturnsTheLastChildWithContent) {
  struct Case {
    const char* text;
    const char* content;
  };
  for (const Case& each : std::vector<Case>{
           {"<a/>", ""},
           {"<a>  b \n</a>", "  b \n"},
           {"<a>ab<!--x--></a>", "x"},
           {"<a>a<b/>c</a>", "c"},
           {"<a>a<b>inner</b></a>", "a"},
           {"<a><!--x-->a</a>", "a"},
           {"<a>a<!----></a>", ""},
           {"<a>a<![CDATA[<b>]]></a>", "<b>"},
           {"<a><![CDATA[<b>]]>a</a>", "a"},
           {"<a>a<?pi data?></a>", "data"},
           {"<a>a<?pi?></a>", "a"},
           {"<a>&lt;&amp;&gt;&quot;&apos;&#65;&#x42;</a>", "<&>\"'AB"},
       }) {
    EXPECT_EQ(XmlUtil_GetContent(Tree(each.text).GetRoot()), each.content) << each.text;
  }
}

TEST(XmlUtilTest, GetContentReturnsTheTextOfAnEntityThatIsNotReplaced) {
  const Tree tree("<!DOCTYPE a [<!ENTITY e 'entity text'>]><a>a&e;</a>");
  EXPECT_EQ(XmlUtil_GetContent(tree.GetRoot()), "entity text");
}

TEST(XmlUtilTest, GetContentOfAnEntityIgnoresTheDeclarationsAfterIt) {
  for (const char* declaration : {"", "<!ATTLIST a b CDATA #IMPLIED>", "<!ELEMENT a (b)>",
                                  "<!NOTATION a SYSTEM 'n'>", "<!ENTITY f 'another'>"}) {
    const Tree tree("<!DOCTYPE a [<!ENTITY e 'entity text'>" + std::string(declaration) +
                    "]><a>&e;</a>");
    EXPECT_EQ(XmlUtil_GetContent(tree.GetChild(0)), "entity text") << declaration;
  }
}

TEST(XmlUtilTest, GetContentForChildByTagFindsTheOnlyChild) {
  const Tree tree("<a> <b>1</b><c>2<!--3--></c><B>4</B></a>");
  EXPECT_EQ(XmlUtil_GetContentForChildByTag(tree.GetRoot(), "b"), "1");
  EXPECT_EQ(XmlUtil_GetContentForChildByTag(tree.GetRoot(), "c"), "3");
  EXPECT_EQ(XmlUtil_GetContentForChildByTag(tree.GetRoot(), "d"), "");
}

TEST(XmlUtilTest, GetContentForChildByTagRefusesDuplicates) {
  const Tree tree("<a><b>1</b><b/></a>");
  EXPECT_THAT([&] { XmlUtil_GetContentForChildByTag(tree.GetRoot(), "b"); },
              ThrowsMessage<KestrelException>(
                  "Illegal Duplicate tags found.  The tag b was expected only once, but was found "
                  "multiple times."));
}

TEST(XmlUtilTest, GetContentForChildByTagAllowsEmptyFirstMatches) {
  EXPECT_EQ(XmlUtil_GetContentForChildByTag(Tree("<a><b/><b/><b>2</b></a>").GetRoot(), "b"), "2");
  EXPECT_EQ(XmlUtil_GetContentForChildByTag(Tree("<a><b/><b></b></a>").GetRoot(), "b"), "");
  EXPECT_THROW(XmlUtil_GetContentForChildByTag(Tree("<a><b/><b>2</b><b/></a>").GetRoot(), "b"),
               KestrelException);
}

TEST(XmlUtilTest, GetContentForChildByTagSkipsACDataSection) {
  EXPECT_EQ(XmlUtil_GetContentForChildByTag(Tree("<a><![CDATA[x]]><b>1</b></a>").GetRoot(), "b"),
            "1");
}

TEST(XmlUtilTest, FindChildNodeReturnsTheOnlyOneOrNull) {
  const Tree tree("<a>text<![CDATA[x]]><b/><c/></a>");
  EXPECT_EQ(XmlUtil_FindChildNode(tree.GetRoot(), "c"), tree.GetChild(3));
  EXPECT_EQ(XmlUtil_FindChildNode(tree.GetRoot(), "d"), nullptr);
}

TEST(XmlUtilTest, FindChildNodeRefusesASecondOne) {
  const Tree tree("<a><b/>text<b/></a>");
  EXPECT_THAT(
      [&] { XmlUtil_FindChildNode(tree.GetRoot(), "b"); },
      ThrowsMessage<KestrelException>("More than one instance of b found, expected only one."));
}

TEST(XmlUtilTest, RefusesToBuildFromTextOrComments) {
  const Tree tree("<a>text<!--comment--><text/><comment/><![CDATA[x]]></a>");
  const char* const ofText = "Trying to make a meta object from a text field";
  const char* const ofComment = "Trying to make a meta object from a comment";
  EXPECT_THAT([&] { XmlUtil_BuildMetaObject(tree.GetChild(0)); },
              ThrowsMessage<KestrelException>(ofText));
  EXPECT_THAT([&] { XmlUtil_BuildMetaObject(tree.GetChild(1)); },
              ThrowsMessage<KestrelException>(ofComment));
  // Elements with the names "text" and "comment" are refused in the same way.
  EXPECT_THAT([&] { XmlUtil_BuildMetaObject(tree.GetChild(2)); },
              ThrowsMessage<KestrelException>(ofText));
  EXPECT_THAT([&] { XmlUtil_BuildMetaObject(tree.GetChild(3)); },
              ThrowsMessage<KestrelException>(ofComment));
  EXPECT_THAT(
      [&] { XmlUtil_BuildMetaObject(tree.GetChild(4)); },
      ThrowsMessage<KestrelException>("Unable to make a MetaObject from a node with tag ''"));
}

TEST(XmlUtilTest, BuildsStructuresAndListsFromTheirElements) {
  const Tree tree(
      "<a><structure typeName='Disk'><field name='Name'><string>sda</string></field></structure>"
      "<list type='int'><int>1</int></list></a>");
  const std::shared_ptr<MetaStruct> structure = BuildMetaStruct(tree.GetChild(0));
  EXPECT_EQ(DescribeValue(structure), "structure Disk {Name: string 'sda'}");
  const std::shared_ptr<MetaList> list = BuildMetaList(tree.GetChild(1));
  EXPECT_EQ(DescribeValue(list), "list of Int [int 1]");
}

struct ReadingCase {
  const char* name;
  std::string text;
  std::string result;
};

// Reads each value element twice: from a tree, and as the value of a document.
class XmlValueTest : public testing::TestWithParam<ReadingCase> {};

TEST_P(XmlValueTest, HasTheSameResultFromATreeAndFromADocument) {
  const bool throws = GetParam().result.rfind("throws ", 0) == 0;
  EXPECT_EQ(BuildOf(GetParam().text), GetParam().result);
  EXPECT_EQ(ResultOf("<output>" + GetParam().text + "</output>"),
            throws ? Unbuildable(GetParam().result.substr(7)) : GetParam().result);
}

std::string NameOf(const testing::TestParamInfo<ReadingCase>& info) { return info.param.name; }

std::string UnknownTag(const std::string& tag) {
  return "throws Unable to make a MetaObject from a node with tag '" + tag + "'";
}

std::string UnreadableInt(const std::string& text) {
  return "throws Unable to read an int value from: '" + text + "'";
}

constexpr const char* kBadListType =
    "throws Invalid list type attribute.  Must be one of [string, int, bool, structure, list]";
constexpr const char* kNoFieldName =
    "throws Invalid <field> tag found.  <field> requires a 'name' attribute.";
constexpr const char* kNoListOfLists = "throws Struct type expected for list.";

INSTANTIATE_TEST_SUITE_P(
    Scalars, XmlValueTest,
    testing::Values(
        ReadingCase{"StringIsNotTrimmed", "<string>  a b\n</string>", "string '  a b\n'"},
        ReadingCase{"StringEmpty", "<string/>", "string ''"},
        ReadingCase{"StringLastTextIsUsed", "<string>a<b/>c</string>", "string 'c'"},
        ReadingCase{"StringCommentIsContent", "<string>ab<!--x--></string>", "string 'x'"},
        ReadingCase{"StringCDataIsContent", "<string>ab<![CDATA[x&y]]></string>", "string 'x&y'"},
        ReadingCase{"StringAttributesDoNotMatter", "<string name='x'>a</string>", "string 'a'"},
        ReadingCase{"IntBetweenSpaces", "<int> 42 </int>", "int 42"},
        ReadingCase{"IntEmpty", "<int></int>", "int 0"},
        ReadingCase{"IntNegative", "<int>-7</int>", "int -7"},
        ReadingCase{"IntPlus", "<int>+7</int>", "int 7"},
        ReadingCase{"IntZeros", "<int>007</int>", "int 7"},
        ReadingCase{"IntTrailingText", "<int>12abc</int>", "int 12"},
        ReadingCase{"IntHexIsZero", "<int>0x10</int>", "int 0"},
        ReadingCase{"IntFraction", "<int>3.9</int>", "int 3"},
        ReadingCase{"IntLineEndsBefore", "<int>\n\t 5\n</int>", "int 5"},
        ReadingCase{"IntHighest", "<int>9223372036854775807</int>", "int 9223372036854775807"},
        ReadingCase{"IntLowest", "<int>-9223372036854775808</int>", "int -9223372036854775808"},
        ReadingCase{"IntTooHigh", "<int>9223372036854775808</int>",
                    UnreadableInt("9223372036854775808")},
        ReadingCase{"IntTooLow", "<int>-9223372036854775809</int>",
                    UnreadableInt("-9223372036854775809")},
        ReadingCase{"IntWord", "<int>x</int>", UnreadableInt("x")},
        ReadingCase{"IntSpacesOnly", "<int>  </int>", UnreadableInt("  ")},
        ReadingCase{"IntTwoSigns", "<int>+-1</int>", UnreadableInt("+-1")},
        ReadingCase{"IntSignAndSpace", "<int>- 1</int>", UnreadableInt("- 1")},
        ReadingCase{"BoolWordFalse", "<bool>false</bool>", "bool false"},
        ReadingCase{"BoolLetterF", "<bool>f</bool>", "bool false"},
        ReadingCase{"BoolZero", "<bool>0</bool>", "bool false"},
        ReadingCase{"BoolYes", "<bool>yes</bool>", "bool true"},
        ReadingCase{"BoolEmpty", "<bool/>", "bool true"},
        ReadingCase{"BoolCapitalised", "<bool>False</bool>", "bool true"},
        ReadingCase{"BoolUpperCase", "<bool>FALSE</bool>", "bool true"},
        ReadingCase{"BoolTrailingSpace", "<bool>false </bool>", "bool true"},
        ReadingCase{"BoolNo", "<bool>no</bool>", "bool true"},
        ReadingCase{"UnknownTag", "<integer>1</integer>", UnknownTag("integer")},
        ReadingCase{"UnknownBoolean", "<boolean>1</boolean>", UnknownTag("boolean")},
        ReadingCase{"TagInOtherCase", "<String>a</String>", UnknownTag("String")},
        ReadingCase{"FieldOutsideAStructure", "<field name='a'/>", UnknownTag("field")}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    Structures, XmlValueTest,
    testing::Values(
        ReadingCase{"Empty", "<structure typeName='Disk'/>", "structure Disk {}"},
        ReadingCase{"NoTypeName", "<structure/>", "throws Invalid name specified for MetaStruct: "},
        ReadingCase{"BadTypeName", "<structure typeName='My_Disk'/>",
                    "throws Invalid name specified for MetaStruct: My_Disk"},
        ReadingCase{"FieldsInNameOrder",
                    "<structure typeName='D'> <field name='B'><int>1</int></field>\n"
                    "<!-- c --><field name='A'> <!-- c --> <bool>f</bool> </field></structure>",
                    "structure D {A: bool false, B: int 1}"},
        ReadingCase{"FurtherValuesInAFieldAreIgnored",
                    "<structure typeName='D'><field name='A'><int>1</int><int>x</int><z/></field>"
                    "</structure>",
                    "structure D {A: int 1}"},
        ReadingCase{"OtherChildrenAreIgnored",
                    "<structure typeName='D'><int>x</int><Field name='A'/>text<?field name='A'?>"
                    "</structure>",
                    "structure D {}"},
        ReadingCase{"AFieldWithoutValueIsAbsent",
                    "<structure typeName='D'><field name='A'/><field name='B'> text <!-- c -->"
                    "<![CDATA[x]]></field></structure>",
                    "structure D {}"},
        ReadingCase{"AFieldWithoutNameThrows",
                    "<structure typeName='D'><field><int>1</int></field></structure>",
                    kNoFieldName},
        ReadingCase{"AFieldWithEmptyNameThrowsBeforeItsValue",
                    "<structure typeName='D'><field name=''><int>x</int></field></structure>",
                    kNoFieldName},
        ReadingCase{"ALaterFieldReplaces",
                    "<structure typeName='D'><field name='A'><int>1</int></field><field name='A'>"
                    "<string>a</string></field></structure>",
                    "structure D {A: string 'a'}"},
        ReadingCase{"Nested",
                    "<structure typeName='D'><field name='A'><structure typeName='E'><field "
                    "name='B'><list type='bool'><bool/></list></field></structure></field>"
                    "</structure>",
                    "structure D {A: structure E {B: list of Bool [bool true]}}"},
        ReadingCase{"BadValueInAField",
                    "<structure typeName='D'><field name='A'><z/></field></structure>",
                    UnknownTag("z")},
        ReadingCase{"TypeNameIsCheckedBeforeTheFields",
                    "<structure typeName='-'><field/></structure>",
                    "throws Invalid name specified for MetaStruct: -"}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    Lists, XmlValueTest,
    testing::Values(
        ReadingCase{"EmptyString", "<list type='string'/>", "list of String []"},
        ReadingCase{"EmptyInt", "<list type='int'/>", "list of Int []"},
        ReadingCase{"EmptyBool", "<list type='bool'> <!-- c --> </list>", "list of Bool []"},
        ReadingCase{"EmptyStructure", "<list type='structure'> text </list>", "list of Struct []"},
        ReadingCase{"EmptyList", "<list type='list'/>", kNoListOfLists},
        ReadingCase{"Elements", "<list type='int'> <int>1</int><!-- c --><int>2</int>x</list>",
                    "list of Int [int 1, int 2]"},
        ReadingCase{"NoType", "<list><int>x</int></list>", kBadListType},
        ReadingCase{"LongTypeWord", "<list type='integer'/>", kBadListType},
        ReadingCase{"LongBoolWord", "<list type='boolean'/>", kBadListType},
        ReadingCase{"TypeInOtherCase", "<list type='Int'/>", kBadListType},
        ReadingCase{"WrongKind", "<list type='int'><int>1</int><string>a</string></list>",
                    "throws Invalid type specificed in MetaList.  Expected object of type Int got "
                    "object of type String"},
        ReadingCase{"BadElement", "<list type='int'><int>1</int><z/></list>", UnknownTag("z")},
        ReadingCase{
            "Structures",
            "<list type='structure'><structure typeName='D'><field name='A'><int>1</int>"
            "</field></structure><structure typeName='D'><field name='A'><int>2</int></field>"
            "</structure></list>",
            "list of Struct [structure D {A: int 1}, structure D {A: int 2}]"},
        ReadingCase{"StructuresOfAnotherShape",
                    "<list type='structure'><structure typeName='D'><field name='A'><int>1</int>"
                    "</field></structure><structure typeName='D'><field name='A'><bool/></field>"
                    "</structure></list>",
                    "throws Invalid structure detected by MetaList::Add.  Type Errors were: (2) : "
                    "Type mismatch on field: A, There was an error adding an item to this list.  "
                    "The item being added did not match the declared structure of this list, so it "
                    "was not added., "},
        ReadingCase{
            "StructureListOfScalars", "<list type='structure'><int>1</int></list>",
            "throws Invalid type specificed in MetaList.  Expected object of type Struct got "
            "object of type Int"},
        ReadingCase{"ListOfLists", "<list type='list'><list type='int'/></list>", kNoListOfLists},
        ReadingCase{"ListOfListsWithABadFirstChild", "<list type='list'><int>x</int></list>",
                    UnreadableInt("x")}),
    NameOf);

class XmlOutputTest : public testing::TestWithParam<ReadingCase> {};

TEST_P(XmlOutputTest, IsRead) {
  const StreamCapture diagnostics(STDERR_FILENO);
  EXPECT_EQ(ResultOf(GetParam().text), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(
    Documents, XmlOutputTest,
    testing::Values(
        ReadingCase{"TheFirstValueIsTheResult",
                    "<output><!-- c --><string>a</string><int>1</int></output>", "string 'a'"},
        ReadingCase{"WhatFollowsTheFirstValueIsIgnored",
                    "<output><string>a</string><int>x</int><z/></output>", "string 'a'"},
        ReadingCase{"TheRootMayHaveAnyName",
                    "<result-of.anything><int>1</int></result-of.anything>", "int 1"},
        ReadingCase{"TheRootMayHaveTheNameOfAValueElement", "<int><string>a</string></int>",
                    "string 'a'"},
        ReadingCase{"EmptyRoot", "<output/>", "null"},
        ReadingCase{"RootOfSpaces", "<output>   </output>", "null"},
        ReadingCase{"RootWithoutElements", "<output> a <!-- c --><![CDATA[<int/>]]></output>",
                    "null"},
        ReadingCase{"BadListType", "<output><list type=\"integer\"/></output>",
                    Unbuildable("Invalid list type attribute.  Must be one of [string, int, bool, "
                                "structure, list]")},
        ReadingCase{"UnreadableInt", "<output><int>x</int></output>",
                    Unbuildable("Unable to read an int value from: 'x'")},
        ReadingCase{"AnElementNamedText", "<output><text/></output>",
                    Unbuildable("Trying to make a meta object from a text field")},
        ReadingCase{"AnElementNamedComment", "<output><comment/></output>",
                    Unbuildable("Trying to make a meta object from a comment")},
        ReadingCase{"AProcessingInstruction", "<output><?pi data?><int>1</int></output>",
                    Unbuildable("Unable to make a MetaObject from a node with tag 'pi'")},
        ReadingCase{"MetaDataOfAnotherVocabulary", "<output><meta-data/><root/></output>",
                    Unbuildable("Unable to make a MetaObject from a node with tag 'meta-data'")},
        ReadingCase{"ADeclaration", "<?xml version='1.0' encoding='UTF-8'?>\n<o><int>1</int></o>",
                    "int 1"},
        ReadingCase{"AByteOrderMark", "\xEF\xBB\xBF<o><int>1</int></o>", "int 1"},
        ReadingCase{"Latin1",
                    "<?xml version='1.0' encoding='ISO-8859-1'?><o><string>\xE4</string></o>",
                    "string '\xC3\xA4'"},
        ReadingCase{"ADocumentType", "<!DOCTYPE o [<!ENTITY e 'x'>]><o><string>a&e;</string></o>",
                    "string 'x'"},
        ReadingCase{"AnEntityAmongTheElements",
                    "<!DOCTYPE o [<!ENTITY e 'x'>]><o>&e;<string>a</string></o>",
                    Unbuildable("Unable to make a MetaObject from a node with tag 'e'")},
        ReadingCase{"AnEntityWithTheNameOfAValueElement",
                    "<!DOCTYPE o [<!ENTITY string 'x'><!ATTLIST a b CDATA #IMPLIED>]><o>&string;"
                    "</o>",
                    "string 'x'"},
        ReadingCase{"ANulByteAfterTheRoot", std::string("<o><int>1</int></o>\0x", 21), "int 1"},
        ReadingCase{"AKnownPrefixIsIgnored", "<p:o xmlns:p='urn:p'><p:int>1</p:int></p:o>",
                    "int 1"},
        ReadingCase{"AnUnknownPrefixBelongsToTheName", "<o><p:int>1</p:int></o>",
                    Unbuildable("Unable to make a MetaObject from a node with tag 'p:int'")}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    NotWellFormed, XmlOutputTest,
    testing::Values(
        ReadingCase{"NoBytes", "", "null"}, ReadingCase{"SpaceOnly", "  \n", "null"},
        ReadingCase{"PlainText", "done", "null"}, ReadingCase{"Unclosed", "<output>", "null"},
        ReadingCase{"MismatchedTags", "<output><int>1</string></output>", "null"},
        ReadingCase{"TrailingGarbage", "<output><int>1</int></output>x", "null"},
        ReadingCase{"TwoRoots", "<o><int>1</int></o><o/>", "null"},
        ReadingCase{"LeadingLine", "note\n<o><int>1</int></o>", "null"},
        ReadingCase{"SpaceBeforeADeclaration", " <?xml version='1.0'?><o><int>1</int></o>", "null"},
        ReadingCase{"UnknownEntity", "<o><string>&nbsp;</string></o>", "null"},
        ReadingCase{"InvalidUtf8", "<o><string>\xC3\x28</string></o>", "null"},
        ReadingCase{"ControlCharacter", "<o><string>\x01</string></o>", "null"},
        // A document that is not well-formed is reported as such, whatever values it contains.
        ReadingCase{"UnbuildableAndThenNotWellFormed", "<o><int>x</int>", "null"},
        ReadingCase{"BadListAndThenNotWellFormed", "<o><list type='x'/></p>", "null"},
        ReadingCase{"NulByte", std::string("<o><string>a\0b</string></o>", 28), "null"}),
    NameOf);

TEST(XmlUtilTest, OnlyTheDeclaredStructureOfAListInADocumentIsLocked) {
  const std::shared_ptr<MetaObject> value = XmlUtil_ParseXmlOutput(
      "<o><list type='structure'><structure typeName='D'><field name='A'><int>1</int></field>"
      "</structure></list></o>");
  const auto list = std::dynamic_pointer_cast<MetaList>(value);
  ASSERT_EQ(list->GetCount(), 1u);
  const auto element = std::dynamic_pointer_cast<MetaStruct>((*list)[0]);
  EXPECT_NO_THROW(element->SetField("B", 2));
  EXPECT_THAT([&] { list->GetListStructure()->SetField("B", 2); },
              ThrowsMessage<KestrelException>(
                  "Unable to set new field B on structure. Structure has been locked"));
}

TEST(XmlUtilTest, AFieldOfADocumentHasNoDocumentation) {
  const auto structure = std::dynamic_pointer_cast<MetaStruct>(XmlUtil_ParseXmlOutput(
      "<o><structure typeName='D'><field name='A'><int>1</int></field></structure></o>"));
  EXPECT_EQ(structure->GetFieldDocumentation("A"), "Documentation missing");
}

TEST(XmlUtilTest, AnEmptyListOfStructuresDeclaresNoStructure) {
  const auto list = std::dynamic_pointer_cast<MetaList>(
      XmlUtil_ParseXmlOutput("<o><list type='structure'/></o>"));
  EXPECT_THAT([&] { list->Add(MetaStruct::New("D")); },
              ThrowsMessage<KestrelException>(
                  "Invalid structure detected by MetaList::Add.  Type Errors were: (1) : List "
                  "created with NULL structure.  No items can be added to this list., "));
}

TEST(XmlUtilTest, AMalformedDocumentIsReportedOnceOnStandardError) {
  StreamCapture diagnostics(STDERR_FILENO);
  EXPECT_EQ(XmlUtil_ParseXmlOutput("<output><int>1</output>"), nullptr);
  EXPECT_EQ(diagnostics.GetText(),
            "STDOUT:1: parser error : Opening and ending tag mismatch: int line 1 and output\n"
            "<output><int>1</output>\n"
            "                       ^\n"
            "STDOUT:1: parser error : Premature end of data in tag output line 1\n"
            "<output><int>1</output>\n"
            "                       ^\n");
}

TEST(XmlUtilTest, AWellFormedDocumentIsReadSilently) {
  StreamCapture diagnostics(STDERR_FILENO);
  EXPECT_NE(XmlUtil_ParseXmlOutput("<output><int>1</int></output>"), nullptr);
  EXPECT_THROW(XmlUtil_ParseXmlOutput("<output><int>x</int></output>"), KestrelException);
  EXPECT_THAT(diagnostics.GetText(), IsEmpty());
}

/// Makes a document of `depth` lists of structures, each in the first structure of the list around
/// it.
std::string NestedLists(int depth) {
  return "<output>" +
         Repeat("<list type='structure'><structure typeName='D'><field name='A'>", depth) +
         "<int>1</int>" + Repeat("</field></structure></list>", depth) + "</output>";
}

// If each first element were built twice, 80 levels would take 2^80 steps.
TEST(XmlUtilTest, ANestedFirstElementIsBuiltOnce) {
  std::string expected = "int 1";
  for (int i = 0; i < 80; ++i) {
    expected = "list of Struct [structure D {A: " + expected + "}]";
  }
  EXPECT_EQ(ResultOf(NestedLists(80)), expected);
  const std::string value = NestedLists(80);
  EXPECT_EQ(BuildOf(value.substr(8, value.size() - 17)), expected);
}

TEST(XmlUtilTest, ReadsAMillionElements) {
  const auto list = std::dynamic_pointer_cast<MetaList>(XmlUtil_ParseXmlOutput(
      "<o><list type='int'>" + Repeat("<int>12</int>", 999999) + "<int>13</int></list></o>"));
  ASSERT_EQ(list->GetCount(), 1000000u);
  EXPECT_EQ(DescribeValue(list->GetItem(0)), "int 12");
  EXPECT_EQ(DescribeValue(list->GetItem(999999)), "int 13");
}

// If all declarations were searched for each value, this would take minutes.
TEST(XmlUtilTest, ReadsManyEntitiesAmongManyDeclarations) {
  std::string declarations = "<!ENTITY string 'x'>";
  for (int i = 0; i < 20000; ++i) {
    declarations += "<!ENTITY e" + std::to_string(i) + " 'y'>";
  }
  const auto list = std::dynamic_pointer_cast<MetaList>(
      XmlUtil_ParseXmlOutput("<!DOCTYPE o [" + declarations + "]><o><list type='string'>" +
                             Repeat("&string;", 20000) + "</list></o>"));
  ASSERT_EQ(list->GetCount(), 20000u);
  EXPECT_EQ(DescribeValue(list->GetItem(19999)), "string 'x'");
}

TEST(XmlUtilTest, ReadsManyFieldsAndManyStructures) {
  std::string fields;
  for (int i = 0; i < 100000; ++i) {
    fields +=
        "<field name='f" + std::to_string(i) + "'><int>" + std::to_string(i) + "</int></field>";
  }
  const auto structure = std::dynamic_pointer_cast<MetaStruct>(
      XmlUtil_ParseXmlOutput("<o><structure typeName='S'>" + fields + "</structure></o>"));
  EXPECT_EQ(structure->GetFieldNames().size(), 100000u);
  EXPECT_EQ(DescribeValue(structure->GetField("f77777")), "int 77777");
  const auto list = std::dynamic_pointer_cast<MetaList>(XmlUtil_ParseXmlOutput(
      "<o><list type='structure'>" +
      Repeat("<structure typeName='S'><field name='a'><string>x</string></field></structure>",
             100000) +
      "</list></o>"));
  EXPECT_EQ(list->GetCount(), 100000u);
}

TEST(XmlUtilTest, ATextTooLongForTheParserIsNotADocument) {
  if (Testing::Rounds(0, 1) == 0) {
    GTEST_SKIP() << "takes two gigabytes: part of a campaign only";
  }
  std::string text(static_cast<std::size_t>(INT_MAX) + 1, ' ');
  text.replace(0, 8, "<o><int>");
  text.replace(text.size() - 10, 10, "</int></o>");
  StreamCapture diagnostics(STDERR_FILENO);
  EXPECT_EQ(XmlUtil_ParseXmlOutput(text), nullptr);
  EXPECT_THAT(diagnostics.GetText(), IsEmpty());
}

TEST(XmlUtilTest, NothingIsReadFromOtherFiles) {
  const Testing::ScopedTempDir folder;
  const std::string secret = folder.Write("secret", "secret");
  const std::string types = folder.Write("types", "<!ATTLIST list type CDATA 'int'>");
  const std::string noType = Unbuildable(
      "Invalid list type attribute.  Must be one of [string, int, bool, structure, list]");
  EXPECT_EQ(
      ResultOf("<!DOCTYPE o [<!ENTITY e SYSTEM '" + secret + "'>]><o><string>a&e;</string></o>"),
      "string 'a'");
  EXPECT_EQ(ResultOf("<!DOCTYPE o SYSTEM '" + types + "'><o><list/></o>"), noType);
  EXPECT_EQ(ResultOf("<!DOCTYPE o [<!ENTITY % p SYSTEM '" + types + "'>%p;]><o><list/></o>"),
            noType);
  EXPECT_EQ(ResultOf("<!DOCTYPE o [<!ATTLIST list type CDATA 'int'>]><o><list/></o>"),
            "list of Int []");
}

TEST(XmlUtilTest, ADocumentIsAtMost257ElementsDeep) {
  StreamCapture diagnostics(STDERR_FILENO);
  const auto nested = [](int depth) {
    return "<o><string/>" + Repeat("<a>", depth - 1) + Repeat("</a>", depth - 1) + "</o>";
  };
  EXPECT_EQ(ResultOf(nested(257)), "string ''");
  EXPECT_THAT(diagnostics.GetText(), IsEmpty());
  EXPECT_EQ(ResultOf(nested(258)), "null");
  EXPECT_THAT(diagnostics.GetText(), HasSubstr("Excessive depth in document: 256 use"));
}

}  // namespace
}  // namespace Kestrel::AutoCli
