// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Small documents that would take minutes or gigabytes to read are refused; all documents within
// the limits are read.

#include <gtest/gtest.h>
#include <libxml/parser.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "kestrel/KestrelException.h"
#include "kestrel/autocli/XmlPlugin.h"
#include "kestrel/autocli/XmlUtil.h"
#include "support/DescribeValue.h"
#include "support/ScopedTempDir.h"
#include "support/StreamCapture.h"

namespace Kestrel::AutoCli {
namespace {

using Testing::DescribeValue;
using Testing::ScopedTempDir;

constexpr int kMaxAttributes = 10000;
constexpr std::size_t kMaxExpansion = 10000000;
const std::string kTooManyAttributes = "An element has more than 10000 attributes";
const std::string kTooMuchExpansion = "The entities stand for more than 10 MB of text";

std::string Repeat(std::string_view text, std::size_t count) {
  std::string repeated;
  repeated.reserve(text.size() * count);
  for (std::size_t i = 0; i < count; ++i) {
    repeated += text;
  }
  return repeated;
}

/// Returns one string that contains `before + N + after` for each N from 1 to `count`.
std::string Number(const std::string& before, const std::string& after, int count) {
  std::string numbered;
  for (int i = 1; i <= count; ++i) {
    numbered += before + std::to_string(i) + after;
  }
  return numbered;
}

std::string ResultOf(const std::string& text) {
  try {
    return DescribeValue(XmlUtil_ParseXmlOutput(text));
  } catch (const KestrelException& error) {
    return error.what();
  }
}

std::string Refusal(const std::string& reason) {
  return "Error parsing command output.  " + reason;
}

std::string FaultOfDescriptor(const std::string& text) {
  const ScopedTempDir folder;
  const std::string path = folder.Write("a.xml", text);
  try {
    XmlPlugin::New(path)->Initialize();
  } catch (const KestrelException& error) {
    const std::string before =
        "Unable to handle XML Plugin " + path + ".  There was an error while parsing: ";
    const std::string message = error.what();
    return message.substr(message.compare(0, before.size(), before) == 0 ? before.size() : 0);
  }
  return "no fault";
}

std::string Extension(const std::string& prolog, const std::string& content) {
  return prolog + "<x><version>1.0.0</version><namespaces><namespace path='a'>" + content +
         "</namespace></namespaces></x>";
}

// Ways to give an element `count` attributes.

struct AttributesCase {
  const char* name;
  std::function<std::string(int count)> prolog;
  std::function<std::string(int count)> attributes;
};

const std::function<std::string(int)> kNothing = [](int) { return std::string(); };

const AttributesCase kAttributesCases[] = {
    {"Attributes", kNothing, [](int count) { return Number(" a", "=''", count); }},
    {"Namespaces", kNothing, [](int count) { return Number(" xmlns:a", "='u'", count); }},
    {"Defaults",
     [](int count) {
       return "<!DOCTYPE x [<!ATTLIST e " + Number(" a", " CDATA ''", count) + ">]>";
     },
     kNothing},
    {"AttributesAfterADocumentType", [](int) { return "<!DOCTYPE x [<!ENTITY e 'x'>]>"; },
     [](int count) { return Number(" a", "='&e;'", count); }},
    {"AttributesInLatin1", [](int) { return "<?xml version='1.0' encoding='iso-8859-1'?>"; },
     [](int count) { return Number(" a", "=''", count); }},
};

class XmlAttributeLimitTest : public testing::TestWithParam<AttributesCase> {
 protected:
  std::string Element(int count) const { return "<e" + GetParam().attributes(count) + "/>"; }

  std::string Output(int count) const {
    return GetParam().prolog(count) + "<o><string>v</string>" + Element(count) + "</o>";
  }

  std::string Descriptor(int count) const {
    return Extension(GetParam().prolog(count), "<description>A.</description>" + Element(count));
  }
};

TEST_P(XmlAttributeLimitTest, AnElementHasAtMostTenThousandAttributes) {
  EXPECT_EQ(ResultOf(Output(kMaxAttributes)), "string 'v'");
  EXPECT_EQ(FaultOfDescriptor(Descriptor(kMaxAttributes)), "no fault");
  EXPECT_EQ(ResultOf(Output(kMaxAttributes + 1)), Refusal(kTooManyAttributes));
  EXPECT_EQ(FaultOfDescriptor(Descriptor(kMaxAttributes + 1)), kTooManyAttributes);
}

// If the parser compared all attributes with each other, this would take an hour.
TEST_P(XmlAttributeLimitTest, AMillionAttributesAreRefusedImmediately) {
  Testing::StreamCapture diagnostics(STDERR_FILENO);
  EXPECT_EQ(ResultOf(Output(1000000)), Refusal(kTooManyAttributes));
  EXPECT_EQ(FaultOfDescriptor(Descriptor(1000000)), kTooManyAttributes);
}

INSTANTIATE_TEST_SUITE_P(Kinds, XmlAttributeLimitTest, testing::ValuesIn(kAttributesCases),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST(XmlLimitsTest, AnElementInAnEntityHasAtMostTenThousandAttributes) {
  const auto output = [](int count) {
    return "<!DOCTYPE o [<!ENTITY e '<!-- < -->" + Repeat("<?p <a = ?><![CDATA[<b = ]]>", 10000) +
           "<p q=\">\"/><string" + Number(" a", "=\"\"", count) +
           "/>'>]><o><string>v</string>&e;</o>";
  };
  EXPECT_EQ(ResultOf(output(kMaxAttributes)), "string 'v'");
  EXPECT_EQ(ResultOf(output(kMaxAttributes + 1)), Refusal(kTooManyAttributes));
  EXPECT_EQ(ResultOf(output(500000)), Refusal(kTooManyAttributes));
}

TEST(XmlLimitsTest, TheAttributesOfDifferentElementsAreNotAddedUp) {
  const std::string element = "<e" + Number(" a", "='='", kMaxAttributes) + "/>";
  EXPECT_EQ(ResultOf("<o><string>v</string>" + Repeat(element, 5) + "</o>"), "string 'v'");
  EXPECT_EQ(ResultOf("<o><string>" + Repeat("<e a=''/>= ", 50000) + "v</string></o>"),
            "string '= v'");
}

TEST(XmlLimitsTest, TheNamespacesInScopeCountAsAttributes) {
  const std::string open = "<e" + Number(" xmlns:a", "='u'", kMaxAttributes / 2) + ">";
  const auto output = [&](const std::string& attributes) {
    return "<o><string>v</string>" + open + "<f" + attributes + "/></e></o>";
  };
  EXPECT_EQ(ResultOf(output(Number(" b", "=''", kMaxAttributes / 2))), "string 'v'");
  EXPECT_EQ(ResultOf(output(Number(" b", "=''", kMaxAttributes / 2 + 1))),
            Refusal(kTooManyAttributes));
}

// Ways to make ten elements expand to `size` bytes in total, each to a tenth of that. The library
// also counts the references within entities, such as "&e;", as text.

struct ExpansionCase {
  const char* name;
  std::function<std::string(std::size_t size)> prolog;
  const char* content;
};

std::string EntityOf(std::size_t size) {
  return "<!DOCTYPE x [<!ENTITY e '" + std::string(size / 10 - 5, 'x') + "'>";
}

const ExpansionCase kExpansionCases[] = {
    {"Contents", [](std::size_t size) { return EntityOf(size + 50) + "]>"; }, "<e>&e;</e>"},
    {"Attributes", [](std::size_t size) { return EntityOf(size + 50) + "]>"; }, "<e a='&e;'/>"},
    {"NestedEntities", [](std::size_t size) { return EntityOf(size + 20) + "<!ENTITY f '&e;'>]>"; },
     "<e>&f;</e>"},
    {"NestedEntitiesAfterText",
     [](std::size_t size) { return EntityOf(size - 20) + "<!ENTITY f 'xx&e;xx'>]>"; },
     "<e>&f;</e>"},
    {"Defaults",
     [](std::size_t size) {
       return "<!DOCTYPE x [<!ATTLIST e a CDATA '" + std::string(size / 10, 'x') + "'>]>";
     },
     "<e/>"},
};

class XmlExpansionLimitTest : public testing::TestWithParam<ExpansionCase> {
 protected:
  std::string Output(std::size_t size) const {
    return GetParam().prolog(size) + "<o><string>v</string>" + Repeat(GetParam().content, 10) +
           "</o>";
  }

  std::string Descriptor(std::size_t size) const {
    return Extension(GetParam().prolog(size),
                     "<description>A.</description>" + Repeat(GetParam().content, 10));
  }
};

TEST_P(XmlExpansionLimitTest, EntitiesExpandToAtMostTenMegabytes) {
  EXPECT_EQ(ResultOf(Output(kMaxExpansion)), "string 'v'");
  EXPECT_EQ(FaultOfDescriptor(Descriptor(kMaxExpansion)), "no fault");
  EXPECT_EQ(ResultOf(Output(kMaxExpansion + 10)), Refusal(kTooMuchExpansion));
  EXPECT_EQ(FaultOfDescriptor(Descriptor(kMaxExpansion + 10)), kTooMuchExpansion);
}

INSTANTIATE_TEST_SUITE_P(Kinds, XmlExpansionLimitTest, testing::ValuesIn(kExpansionCases),
                         [](const auto& tested) { return std::string(tested.param.name); });

/// A document parsed by a caller.
class Tree {
 public:
  explicit Tree(std::string_view text)
      : document_(xmlReadMemory(text.data(), static_cast<int>(text.size()), "test", nullptr,
                                XML_PARSE_HUGE),
                  &xmlFreeDoc) {}

  /// Sets the only attribute of the root. Its value may contain references.
  void SetAttribute(const char* name, const char* value) const {
    xmlAttr* const attribute =
        xmlNewDocProp(document_.get(), reinterpret_cast<const xmlChar*>(name),
                      reinterpret_cast<const xmlChar*>(value));
    attribute->parent = GetRoot();
    GetRoot()->properties = attribute;
  }

  xmlNode* GetRoot() const { return xmlDocGetRootElement(document_.get()); }

 private:
  std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document_;
};

std::string FaultOf(const std::function<void()>& operation) {
  try {
    operation();
  } catch (const KestrelException& error) {
    return error.what();
  }
  return "no fault";
}

TEST(XmlLimitsTest, AnAttributeOfACallersTreeIsAtMostTenMegabytes) {
  const std::string type = "<!DOCTYPE a [<!ENTITY e '" + std::string(1000, 'x') + "'>]>";
  const Tree small(type + "<a b='" + Repeat("&e;", 10000) + "'/>");
  EXPECT_EQ(XmlUtil_ExtractAttribute(small.GetRoot(), "b").size(), kMaxExpansion);
  const Tree large(type + "<a b='" + Repeat("&e;", 10001) + "'/>");
  EXPECT_EQ(FaultOf([&] { XmlUtil_ExtractAttribute(large.GetRoot(), "b"); }), kTooMuchExpansion);
}

// Each entity refers ten times to the one before. The last stands for a billion bytes, or for none.
TEST(XmlLimitsTest, NestedEntitiesOfACallersTreeAreNotFollowedForever) {
  for (const char* innermost : {"x", ""}) {
    std::string type = "<!DOCTYPE a [<!ENTITY e0 '" + std::string(innermost) + "'>";
    for (int i = 1; i < 10; ++i) {
      const std::string before = "&e" + std::to_string(i - 1) + ";";
      type += "<!ENTITY e" + std::to_string(i) + " '" + Repeat(before, 10) + "'>";
    }
    const Tree tree(type + "]><structure/>");
    tree.SetAttribute("typeName", "&e9;");
    EXPECT_EQ(FaultOf([&] { XmlUtil_ExtractAttribute(tree.GetRoot(), "typeName"); }),
              kTooMuchExpansion);
  }
}

TEST(XmlLimitsTest, AHundredThousandEntitiesWithinEachOtherAreRefused) {
  constexpr int kEntities = 100000;
  std::string type = "<!DOCTYPE a [<!ENTITY e0 'x'>";
  for (int i = 1; i <= kEntities; ++i) {
    type += "<!ENTITY e" + std::to_string(i) + " '&e" + std::to_string(i - 1) + ";'>";
  }
  const Tree tree(type + "]><list type='string'/>");
  const std::string last = "e" + std::to_string(kEntities);
  xmlNode* const root = tree.GetRoot();
  xmlAddChild(root, xmlNewReference(root->doc, reinterpret_cast<const xmlChar*>(last.c_str())));
  EXPECT_EQ(FaultOf([&] { BuildMetaList(root); }), kTooMuchExpansion);
}

TEST(XmlLimitsTest, AValueOfACallersTreeExpandsToAtMostTenMegabytes) {
  const std::string type = "<!DOCTYPE a [<!ENTITY e '" + std::string(100000, 'x') + "'>]>";
  const auto list = [&](int count) {
    return type + "<list type='string'>" + Repeat("<string>&e;</string>", count) + "</list>";
  };
  const Tree small(list(100));
  EXPECT_EQ(BuildMetaList(small.GetRoot())->GetCount(), 100u);
  const Tree large(list(101));
  EXPECT_EQ(FaultOf([&] { BuildMetaList(large.GetRoot()); }), kTooMuchExpansion);
  EXPECT_EQ(FaultOf([&] { XmlUtil_BuildMetaObject(large.GetRoot()); }), kTooMuchExpansion);
  const Tree structure(type + "<structure>" +
                       Repeat("<field name='f'><string>&e;</string></field>", 101) +
                       "</structure>");
  EXPECT_EQ(FaultOf([&] { BuildMetaStruct(structure.GetRoot()); }), kTooMuchExpansion);
}

// A copy of the whole text for each reference would take minutes.
TEST(XmlLimitsTest, AnAttributeOfAMillionReferencesIsReadInLinearTime) {
  const Tree tree("<!DOCTYPE a [<!ENTITY e 'x'>]><a b='" + Repeat("&e;", 1000000) + "'/>");
  EXPECT_EQ(XmlUtil_ExtractAttribute(tree.GetRoot(), "b"), std::string(1000000, 'x'));
}

}  // namespace
}  // namespace Kestrel::AutoCli
