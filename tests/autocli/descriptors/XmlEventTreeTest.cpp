// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// A tree made without the parser must equal the tree that `xmlReadMemory` makes. The comparison
// covers everything that the library reads from a tree. If the parser reports anything about a
// document, the library must not make a tree of that document without the parser.

#include "autocli/descriptors/XmlEventTree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory_resource>
#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "autocli/descriptors/XmlDocument.h"
#include "autocli/descriptors/XmlNode.h"
#include "kestrel/autocli/XmlUtil.h"
#include "support/BrokenDescriptors.h"
#include "support/Random.h"
#include "support/RandomXml.h"

namespace Kestrel::AutoCli {
namespace {

using Testing::kXmlPieces;
using Testing::MutateXml;
using Testing::Random;
using Testing::Rounds;
using Testing::XmlDocumentMaker;

void Describe(const xmlNode* node, std::string& description) {
  description += "(" + std::to_string(node->type) + " " + NameOf(node);
  if (node->type == XML_ELEMENT_NODE) {
    for (const xmlAttr* i = node->properties; i != nullptr; i = i->next) {
      const std::string name = AsChars(i->name);
      description += " " + name + "=[" + XmlUtil_ExtractAttribute(node, name) + "]";
    }
    for (const xmlNode* child : XmlChildren(node)) {
      Describe(child, description);
    }
    description += " content=[" + XmlUtil_GetContent(node) + "]";
  } else {
    description += node->content == nullptr ? " none" : std::string(" =") + AsChars(node->content);
  }
  description += ")";
}

/// Counts the diagnostics of the parser instead of printing them, as long as the object exists.
class DiagnosticsCount {
 public:
  DiagnosticsCount() {
    xmlSetStructuredErrorFunc(&count_, [](void* count, auto*) { ++*static_cast<int*>(count); });
  }
  DiagnosticsCount(const DiagnosticsCount&) = delete;
  DiagnosticsCount& operator=(const DiagnosticsCount&) = delete;
  ~DiagnosticsCount() { xmlSetStructuredErrorFunc(nullptr, nullptr); }

  bool IsZero() const { return count_ == 0; }

 private:
  int count_ = 0;
};

/// Describes the tree that the parser makes. The result is empty if the parser reports anything.
std::string DescribeParsersTree(const std::string& text) {
  const DiagnosticsCount diagnostics;
  const XmlDocument document(
      xmlReadMemory(text.data(), static_cast<int>(text.size()), "test", nullptr, 0), {xmlFreeDoc});
  std::string description;
  if (document != nullptr && diagnostics.IsZero()) {
    Describe(xmlDocGetRootElement(document.get()), description);
  }
  return description;
}

/// Returns whether a tree was made from events. If so, expects the parser to make the same tree.
bool ExpectSameTreeIfAny(const std::string& text) {
  const std::unique_ptr<XmlEventTree> tree = XmlEventTree::Read(text);
  if (tree == nullptr) {
    return false;
  }
  std::string description;
  Describe(tree->GetRoot(), description);
  EXPECT_EQ(description, DescribeParsersTree(text)) << text.substr(0, 2000);
  return true;
}

std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string GetDescriptor() {
  return ReadFile(KESTREL_SOURCE_DIR "/plugins/network/network.xml.in");
}

TEST(XmlEventTreeTest, EqualsTheParsersTreeForEachShippedDescriptor) {
  for (const char* path :
       {"/plugins/network/network.xml.in", "/plugins/password/password.xml.in"}) {
    EXPECT_TRUE(ExpectSameTreeIfAny(ReadFile(std::string(KESTREL_SOURCE_DIR) + path))) << path;
  }
}

TEST(XmlEventTreeTest, HasEveryKindOfNodeOfAnOrdinaryDocument) {
  constexpr const char* kDocuments[] = {
      "<o/>",
      "<o a='1' b=\"\" c='&amp;&lt;&#65;' a2='x\ny'/>",
      "<o>text<a/>more</o>",
      "<o>&lt;&amp;&gt;&#65;&#x20AC;</o>",
      "<o><![CDATA[a<b]]><![CDATA[]]>x<![CDATA[c]]></o>",
      "<o>a<!--c-->b<!----></o>",
      "<!-- before --> <o a = 'it&apos;s' ><a >]] ]> \"'</a ></o ><!-- after -->\n",
      "<?xml version='1.0' encoding='UTF-8'?>\n<o>\n\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80\t</o>\n",
      "<?xml version=\"1.0\"?><o a='\xC3\xA4 &#228;&#xe4;'><!--\xC3\xA4--></o>",
      "\xEF\xBB\xBF<o>  </o>",
  };
  for (const std::string document : kDocuments) {
    EXPECT_TRUE(ExpectSameTreeIfAny(document)) << document;
  }
}

TEST(XmlEventTreeTest, IsNotMadeForDocumentsThatAreNotOrdinary) {
  const std::string manyAttributes = [] {
    std::string text = "<o";
    for (int i = 0; i <= 10000; ++i) {
      text += " a" + std::to_string(i) + "=''";
    }
    return text + "/>";
  }();
  const std::string documents[] = {
      "",
      "<o>",
      "<o>&e;</o>",
      "<o xml:id='a'/>",
      "<o xmlns='urn:p'/>",
      "<o xmlns:p='urn:p'><p:a/></o>",
      "<o><?pi data?></o>",
      "<?oasis-xml-catalog catalog='c'?><o/>",
      "<o>\r\n</o>",
      "<o>]]></o>",
      "<o><!-- -- --></o>",
      "<o a='<'/>",
      "<o a='1'b='2'/>",
      "<o a='1' a='2'/>",
      "<o>&#0;&#xD800;&#xFFFE;</o>",
      "<o>\xC0\xBC\xE0\x80\xBC\xED\xA0\x80\xEF\xBF\xBE\xF4\x90\x80\x80</o>",
      "<?xml version='1.1'?><o/>",
      "<o/>x",
      "<o/><o/>",
      "<o><p:a/></o>",
      "<!DOCTYPE o><o/>",
      "<!DOCTYPE o [<!ENTITY e 'v'>]><o>&e;</o>",
      "<?xml version='1.0' encoding='ISO-8859-1'?><o>\xE4</o>",
      "<o>\xE4</o>",
      manyAttributes,
      "<" + std::string(50001, 'a') + "/>",
      "<o " + std::string(50001, 'a') + "=''/>",
      "<o>" + std::string(5000001, 'a') + "</o>",
  };
  for (const std::string& document : documents) {
    EXPECT_EQ(XmlEventTree::Read(document), nullptr) << document.substr(0, 100);
  }
}

TEST(XmlEventTreeTest, IsNotMadeIfTheProgramMakesTheParserRemoveSpace) {
  const int before = xmlKeepBlanksDefault(0);
  const std::unique_ptr<XmlEventTree> tree = XmlEventTree::Read("<o> <a/> </o>");
  xmlKeepBlanksDefault(before);
  EXPECT_EQ(tree, nullptr);
}

/// Memory for one allocation.
class OneAllocation : public std::pmr::memory_resource {
 private:
  void* do_allocate(std::size_t size, std::size_t alignment) override {
    if (std::exchange(isUsed_, true)) {
      throw std::bad_alloc();
    }
    return std::pmr::new_delete_resource()->allocate(size, alignment);
  }
  void do_deallocate(void* memory, std::size_t size, std::size_t alignment) override {
    std::pmr::new_delete_resource()->deallocate(memory, size, alignment);
  }
  bool do_is_equal(const memory_resource& other) const noexcept override { return this == &other; }

  bool isUsed_ = false;
};

TEST(XmlEventTreeTest, ThrowsIfMemoryRunsOut) {
  std::string text = "<o>";
  for (int i = 0; i < 1000; ++i) {
    text += "<a/>";
  }
  text += "</o>";
  EXPECT_NE(XmlEventTree::Read(text), nullptr);
  OneAllocation memory;
  std::pmr::memory_resource* const before = std::pmr::set_default_resource(&memory);
  EXPECT_THROW(XmlEventTree::Read(text), std::bad_alloc);
  std::pmr::set_default_resource(before);
}

TEST(XmlEventTreeTest, ReportsNothing) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(XmlEventTree::Read("<o><a></o>"), nullptr);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(XmlEventTreeTest, JoinsTextThatComesInManyPieces) {
  std::string text = "<o>";
  for (int i = 0; i < 300000; ++i) {
    text += "a&lt;";
  }
  EXPECT_TRUE(ExpectSameTreeIfAny(text + "</o>"));
}

TEST(XmlEventTreeTest, EqualsTheParsersTreeOfARandomDocument) {
  Random random;
  SCOPED_TRACE(random.HowToRepeat());
  XmlDocumentMaker maker(random);
  const int rounds = Rounds(10000, 1000000);
  int trees = 0;
  for (int i = 0; i < rounds && !HasFailure(); ++i) {
    std::string text = maker.Make();
    for (std::size_t damage = random.Below(4); damage > 1; --damage) {
      MutateXml(text, random);
    }
    trees += ExpectSameTreeIfAny(text) ? 1 : 0;
  }
  EXPECT_GT(trees, rounds / 5);
}

TEST(XmlEventTreeTest, EqualsTheParsersTreeOfADamagedDescriptor) {
  Random random;
  SCOPED_TRACE(random.HowToRepeat());
  const std::string descriptor = GetDescriptor();
  const int rounds = Rounds(2000, 1000000);
  int trees = 0;
  for (int i = 0; i < rounds && !HasFailure(); ++i) {
    std::string text = descriptor;
    for (std::size_t damage = random.Below(4); damage > 0; --damage) {
      MutateXml(text, random);
    }
    trees += ExpectSameTreeIfAny(text) ? 1 : 0;
  }
  EXPECT_GT(trees, rounds / 10);
}

TEST(XmlEventTreeTest, EqualsTheParsersTreeOfABrokenDescriptor) {
  for (const auto& broken : Testing::GetBrokenDescriptors()) {
    ExpectSameTreeIfAny(
        ReadFile(Testing::GetBrokenDescriptorFolder() + "/" + broken.name + ".xml"));
  }
}

/// Contains something of each kind that an ordinary document may contain.
constexpr std::string_view kEverything =
    "<?xml version='1.0'?><!-- c --><o> <list type='structure'><structure typeName='S'><field "
    "name='a&lt;'><string>\xC3\xA4]&#65;<![CDATA[x]]><!--c--></string></field></structure>"
    "</list><b x = \"1\" y='2'/></o>\n";

TEST(XmlEventTreeTest, EqualsTheParsersTreeAfterAnyByteIsChangedOrAdded) {
  int trees = 0;
  for (std::size_t i = 0; i < kEverything.size() && !HasFailure(); ++i) {
    std::string changed(kEverything);
    std::string longer = std::string(kEverything).insert(i, 1, ' ');
    for (int byte = 0; byte < 256; ++byte) {
      changed[i] = static_cast<char>(byte);
      longer[i] = static_cast<char>(byte);
      trees += ExpectSameTreeIfAny(changed) ? 1 : 0;
      trees += ExpectSameTreeIfAny(longer) ? 1 : 0;
    }
  }
  EXPECT_GT(trees, 9000);
}

TEST(XmlEventTreeTest, EqualsTheParsersTreeAfterDamageAtEachPosition) {
  const std::string text(kEverything);
  int trees = 0;
  for (std::size_t i = 0; i < text.size() && !HasFailure(); ++i) {
    EXPECT_FALSE(i < text.size() - 1 && ExpectSameTreeIfAny(text.substr(0, i)));
    trees += ExpectSameTreeIfAny(text.substr(0, i) + text.substr(i + 1)) ? 1 : 0;
    for (const std::string_view piece : kXmlPieces) {
      trees += ExpectSameTreeIfAny(std::string(text).insert(i, piece)) ? 1 : 0;
    }
    EXPECT_FALSE(ExpectSameTreeIfAny(std::string(text).insert(i, 1, '\0')));
  }
  EXPECT_GT(trees, 1000);
}

}  // namespace
}  // namespace Kestrel::AutoCli
