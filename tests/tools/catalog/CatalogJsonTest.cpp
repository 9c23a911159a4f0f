// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/catalog/CatalogJson.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "RandomTree.h"
#include "kestrel/KestrelException.h"
#include "support/Random.h"

namespace Kestrel::Catalog {
namespace {

using MetaObj::MetaType;
using testing::HasSubstr;
using Testing::Random;
using testing::ThrowsMessage;

constexpr const char* kSmallTree = R"({
  "commands": [
    {
      "description": "List the disks.",
      "examples": [
        {
          "arguments": "--size 4",
          "description": "List small ones"
        }
      ],
      "formatParameters": {
        "fields:Disk": "Name"
      },
      "formatter": "table",
      "metaData": {
        "changes": "false"
      },
      "parameters": [
        {
          "constraint": {
            "maximum": 9,
            "minimum": -1,
            "text": "integer in the range -1-9",
            "type": "range"
          },
          "description": "How large.",
          "kind": "int-list",
          "multiple": true,
          "name": "size",
          "required": true,
          "secret": false,
          "shortName": "s"
        },
        {
          "constraint": {
            "type": "none"
          },
          "description": "",
          "kind": "string",
          "multiple": false,
          "name": "word",
          "required": false,
          "secret": true,
          "shortName": ""
        }
      ],
      "path": "disk list",
      "plugin": "disk.xml",
      "result": {
        "description": "The disks.",
        "fields": [
          {
            "documentation": "Ä\u0001\"",
            "kind": "string",
            "path": "Name",
            "typeName": ""
          }
        ],
        "kind": "structure-list",
        "typeName": "Disk"
      }
    }
  ],
  "faults": [
    {
      "path": "disk get",
      "plugin": "",
      "text": "no fuel"
    }
  ],
  "format": 1,
  "namespaces": [
    {
      "description": "Disks.",
      "path": "disk",
      "plugins": [
        "disk.xml"
      ]
    }
  ]
}
)";

Tree MakeSmallTree() {
  Parameter size;
  size.name = "size";
  size.shortName = "s";
  size.kind = CallSpec::IntList;
  size.description = "How large.";
  size.required = true;
  size.multiple = true;
  size.constraint.type = CallSpec::IntRange;
  size.constraint.minimum = -1;
  size.constraint.maximum = 9;
  size.constraint.text = "integer in the range -1-9";
  Parameter word;
  word.name = "word";
  word.secret = true;
  Command list;
  list.path = "disk list";
  list.plugin = "disk.xml";
  list.description = "List the disks.";
  list.examples = {{"--size 4", "List small ones"}};
  list.metaData = {{"changes", "false"}};
  list.formatter = "table";
  list.formatParameters = {{"fields:Disk", "Name"}};
  list.parameters = {size, word};
  list.result = {ValueKind{MetaType::Struct, true},
                 "Disk",
                 "The disks.",
                 {{"Name", {MetaType::String, false}, "", "\xc3\x84\x01\""}}};
  return {{{"disk", "Disks.", {"disk.xml"}}}, {list}, {{"disk get", "", "no fuel"}}};
}

/// Returns the JSON of the small tree with the first occurrence of `from` replaced by `to`.
std::string Replaced(const std::string& from, const std::string& to) {
  std::string text = kSmallTree;
  const std::size_t at = text.find(from);
  EXPECT_NE(std::string::npos, at) << from;
  return text.replace(at, from.size(), to);
}

TEST(CatalogJsonTest, WritesEveryMemberWithItsKeysInOrder) {
  EXPECT_EQ(kSmallTree, WriteJson(MakeSmallTree()));
}

TEST(CatalogJsonTest, ReadsWhatItHasWritten) {
  EXPECT_TRUE(MakeSmallTree() == ReadJson(kSmallTree));
}

TEST(CatalogJsonTest, WritesATreeWithoutNodes) {
  EXPECT_EQ(
      "{\n  \"commands\": [],\n  \"faults\": [],\n  \"format\": 1,\n  \"namespaces\": []\n}\n",
      WriteJson(Tree()));
}

TEST(CatalogJsonTest, AnyTreeReadsBackEqualAndWritesTheSameBytesAgain) {
  Random random;
  SCOPED_TRACE(random.HowToRepeat());
  for (int round = Testing::Rounds(300, 20000); round > 0; --round) {
    const Tree tree = MakeRandomTree(random);
    const std::string text = WriteJson(tree);
    const Tree read = ReadJson(text);
    ASSERT_TRUE(tree == read) << text;
    ASSERT_EQ(text, WriteJson(read));
  }
}

TEST(CatalogJsonTest, IgnoresSpacesAndTheOrderOfKeys) {
  EXPECT_TRUE(Tree() ==
              ReadJson("\n{\"namespaces\":[],\"format\":1,\"faults\":[ ],\"commands\":[]}"));
}

TEST(CatalogJsonTest, RefusesToWriteAStringThatIsNotUtf8) {
  Tree tree;
  tree.namespaces = {{"disk", "a\xff", {}}};
  EXPECT_THAT([&] { WriteJson(tree); },
              ThrowsMessage<KestrelException>(HasSubstr("The catalog cannot be written: ")));
}

TEST(CatalogJsonTest, RefusesToWriteAKindThatDoesNotExist) {
  Tree tree = MakeSmallTree();
  tree.commands[0].parameters[0].kind = static_cast<CallSpec::ParameterType>(9);
  EXPECT_THAT([&] { WriteJson(tree); }, ThrowsMessage<KestrelException>("A kind does not exist"));
}

struct Refusal {
  std::string name;
  std::string text;
  std::string reason;
};

class CatalogJsonRefusalTest : public testing::TestWithParam<Refusal> {};

TEST_P(CatalogJsonRefusalTest, IsReportedWithItsReason) {
  EXPECT_THAT([] { ReadJson(GetParam().text); },
              ThrowsMessage<KestrelException>(HasSubstr(GetParam().reason)));
}

std::string ExpectedAt(const std::string& expected, const std::string& place) {
  return "The catalog cannot be read: expected " + expected + " at '" + place + "'";
}

INSTANTIATE_TEST_SUITE_P(
    Texts, CatalogJsonRefusalTest,
    testing::Values(
        Refusal{"Empty", "", "The catalog is not JSON: "},
        Refusal{"CutShort", std::string(kSmallTree).substr(0, 900), "The catalog is not JSON: "},
        Refusal{"NotUtf8", Replaced("no fuel", "\xff"), "The catalog is not JSON: "},
        Refusal{"NoObject", "[]", ExpectedAt("an object", "")},
        Refusal{"NoFormat", "{}", ExpectedAt("this key", "/format")},
        Refusal{"OtherFormat", Replaced("\"format\": 1", "\"format\": 2"),
                ExpectedAt("the format 1", "")},
        Refusal{"UnknownKey", Replaced("\"format\": 1", "\"format\": 1, \"formats\": 1"),
                ExpectedAt("no other keys", "")},
        Refusal{"MissingKey", Replaced("\"text\": \"no fuel\"", "\"words\": \"no fuel\""),
                ExpectedAt("this key", "/faults/0/text")},
        Refusal{"UnknownKeyWithin", Replaced("\"no fuel\"", "\"no fuel\", \"more\": 1"),
                ExpectedAt("no other keys", "/faults/0")},
        Refusal{"NoList", Replaced("\"namespaces\": [", "\"namespaces\": 1, \"x\": ["),
                ExpectedAt("an array", "/namespaces")},
        Refusal{"NoString", Replaced("\"no fuel\"", "7"), ExpectedAt("a string", "/faults/0/text")},
        Refusal{"NoStringInAMap", Replaced("\"false\"", "false"),
                ExpectedAt("a string", "/commands/0/metaData/changes")},
        Refusal{"NoBoolean", Replaced("\"secret\": false", "\"secret\": 0"),
                ExpectedAt("a boolean", "/commands/0/parameters/0/secret")},
        Refusal{"Fraction", Replaced("\"maximum\": 9", "\"maximum\": 9.5"),
                ExpectedAt("an integer of 64 bits", "/commands/0/parameters/0/constraint/maximum")},
        Refusal{"TooLarge", Replaced("\"maximum\": 9", "\"maximum\": 9223372036854775808"),
                ExpectedAt("an integer of 64 bits", "/commands/0/parameters/0/constraint/maximum")},
        Refusal{"UnknownKind", Replaced("\"int-list\"", "\"float\""),
                ExpectedAt("the word of a kind", "/commands/0/parameters/0/kind")},
        Refusal{"MemberOfAnotherType", Replaced("\"type\": \"range\"", "\"type\": \"regex\""),
                ExpectedAt("this key", "/commands/0/parameters/0/constraint/expression")}),
    [](const auto& refusal) { return refusal.param.name; });

}  // namespace
}  // namespace Kestrel::Catalog
