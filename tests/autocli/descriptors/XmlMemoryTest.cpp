// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// If memory runs out, the parser cannot read a document completely. The library must never treat
// such a document as complete. So these tests make each allocation of the parser fail, alone or
// together with all later ones.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libxml/globals.h>
#include <libxml/parser.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <new>
#include <string>
#include <string_view>

#include "kestrel/KestrelException.h"
#include "kestrel/autocli/RootNamespace.h"
#include "kestrel/autocli/XmlPlugin.h"
#include "kestrel/autocli/XmlUtil.h"
#include "support/DescribeValue.h"
#include "support/ScopedTempDir.h"
#include "support/StreamCapture.h"

namespace Kestrel::AutoCli {
namespace {

using Testing::DescribeValue;
using Testing::ScopedTempDir;
using Testing::StreamCapture;

/// Replaces the allocator of libxml2 as long as the object exists, and counts the allocations.
class FailingAllocator {
 public:
  enum class Failing { Never, Once, FromThenOn };

  /// The first allocation to fail is `number`, counted from 1.
  FailingAllocator(Failing failing, int number) {
    _failing = failing;
    _number = number;
    _count = 0;
    xmlGcMemSetup(std::free, Allocate, Allocate, Reallocate, Duplicate);
  }
  FailingAllocator(const FailingAllocator&) = delete;
  FailingAllocator& operator=(const FailingAllocator&) = delete;
  ~FailingAllocator() { xmlGcMemSetup(std::free, std::malloc, std::malloc, std::realloc, strdup); }

  static int GetCount() { return _count; }

 private:
  static bool Fails() {
    ++_count;
    return (_failing == Failing::Once && _count == _number) ||
           (_failing == Failing::FromThenOn && _count >= _number);
  }
  static void* Allocate(std::size_t size) { return Fails() ? nullptr : std::malloc(size); }
  static void* Reallocate(void* memory, std::size_t size) {
    return Fails() ? nullptr : std::realloc(memory, size);
  }
  static char* Duplicate(const char* text) { return Fails() ? nullptr : strdup(text); }

  static inline Failing _failing = Failing::Never;
  static inline int _number = 0;
  static inline int _count = 0;
};

using Failing = FailingAllocator::Failing;

/// Returns the result of `read`, or "refused" when it throws.
std::string ResultOf(const std::function<std::string()>& read, Failing failing, int number) {
  const FailingAllocator allocator(failing, number);
  try {
    return read();
  } catch (const KestrelException&) {
    return "refused";
  } catch (const std::bad_alloc&) {
    return "refused";
  }
}

/// Expects that `read` returns its whole result or refuses the document, whichever allocation
/// fails.
void ExpectAllOrNothing(const std::function<std::string()>& read) {
  xmlInitParser();
  StreamCapture diagnostics(STDERR_FILENO);
  const std::string whole = ResultOf(read, Failing::Never, 0);
  const int count = FailingAllocator::GetCount();
  ASSERT_NE(whole, "refused");
  int refused = 0;
  for (const Failing failing : {Failing::Once, Failing::FromThenOn}) {
    for (int number = 1; number <= count; ++number) {
      const std::string result = ResultOf(read, failing, number);
      refused += result == "refused" ? 1 : 0;
      EXPECT_THAT(result, testing::AnyOf(whole, "refused")) << "allocation " << number;
    }
  }
  EXPECT_GE(refused, count / 2);
}

struct Document {
  const char* name;
  std::string_view text;
};

class XmlMemoryTest : public testing::TestWithParam<Document> {};

TEST_P(XmlMemoryTest, ADocumentIsReadCompletelyOrRefused) {
  const std::string text(GetParam().text);
  ExpectAllOrNothing([&] { return DescribeValue(XmlUtil_ParseXmlOutput(text)); });
}

constexpr Document kDocuments[] = {
    {"Value", "<o><list type='string'><string>a</string><string>b</string></list></o>"},
    {"Structure",
     "<o><structure typeName='S'><field name='a'><int>1</int></field>"
     "<field name='b'><bool>t</bool></field></structure></o>"},
    {"Comments", "<o><!-- c --><string>a<!--b--></string></o><!-- d -->"},
    {"Sections", "<o><string>a<![CDATA[b]]></string></o><?end x?>"},
    {"Instruction", "<o><string>a<?b c?></string></o>"},
    {"Namespaces", "<o xmlns:p='urn:p'><p:string p:a='1' b='2'>a</p:string></o>"},
    {"Identifiers", "<o xml:id='a'><string xml:id='b'>x</string></o>"},
    {"Latin1", "<?xml version='1.0' encoding='iso-8859-1'?><o><string>\xE4</string></o>"},
    {"Entities",
     "<!DOCTYPE o [<!ENTITY e 'x'><!ENTITY f '&e;&e;'>]>"
     "<o><structure typeName='a&e;b'><field name='&f;'><string>&e;</string></field></structure>"
     "</o>"},
    {"Defaults",
     "<!DOCTYPE o [<!ELEMENT list (string*)><!ATTLIST list type CDATA 'string' b CDATA #IMPLIED>]>"
     "<o><list b='1'><string/></list></o>"},
};

INSTANTIATE_TEST_SUITE_P(Documents, XmlMemoryTest, testing::ValuesIn(kDocuments),
                         [](const auto& tested) { return std::string(tested.param.name); });

/// Returns the names and descriptions of the commands below "disk" in the descriptor at `path`, and
/// of their parameters.
std::string TreeOf(const std::string& path) {
  const auto plugin = XmlPlugin::New(path);
  plugin->Initialize();
  const auto root = RootNamespace::New(nullptr);
  plugin->RegisterNamespaces(root);
  std::string tree;
  for (const auto& node : root->GetNamespaceNode("disk")->GetNamespaceNodes()) {
    const auto command = std::dynamic_pointer_cast<ExtensionCommand>(node);
    tree += command->GetName() + ": " + command->GetDescription();
    for (const auto& parameter : command->GetInputSpec()->GetParameters()) {
      tree += " " + parameter->GetName() + " (" + parameter->GetDescription(false) + ")";
    }
    tree += "\n";
  }
  return tree;
}

TEST(XmlMemoryTest, ADescriptorIsReadCompletelyOrRefused) {
  const std::string command =
      "<description>Lists<!-- x -->it.</description><input-spec>"
      "<parameter name='path' type='string' required='false'><description>&p;</description>"
      "</parameter><parameter name='all' type='flag' required='false'>"
      "<description><![CDATA[All.]]></description></parameter></input-spec>"
      "<output-spec><string/></output-spec><format-parameters/><execute>echo</execute>";
  const ScopedTempDir folder;
  const std::string path = folder.Write(
      "disk.xml",
      "<!DOCTYPE x [<!ENTITY p 'A path.'>]><x><version>1.0.0</version><namespaces>"
      "<namespace path='disk'><description>Disks.</description></namespace></namespaces><commands>"
      "<command path='disk.get'>" +
          command + "</command><command path='disk.list'>" + command + "</command></commands></x>");
  ExpectAllOrNothing([&] { return TreeOf(path); });
}

}  // namespace
}  // namespace Kestrel::AutoCli
