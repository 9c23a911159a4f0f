// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/JsonFormatter.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <ios>
#include <limits>
#include <memory>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "support/FormatterFixture.h"
#include "support/LimitedBuffer.h"

namespace Kestrel::AutoCli {
namespace {

using namespace ::Kestrel::Testing;  // NOLINT: helpers of these tests

class JsonFormatterTest : public FormatterFixture<JsonFormatter> {};

std::shared_ptr<MetaList> MakeNumbers(const std::vector<long>& numbers) {
  auto list = MetaList::New(MetaType::Int);
  list->AddAll(numbers);
  return list;
}

TEST_F(JsonFormatterTest, TheExceptionOfAStreamReachesTheCaller) {
  EXPECT_TRUE(ThrowsOnAFullDisk());
  LimitedBuffer buffer(0);
  std::ostream out(&buffer);
  out.exceptions(std::ios_base::badbit);
  JsonFormatter formatter;
  EXPECT_THROW(formatter.Format(MakeNumbers({1}), out, 0), std::ios_base::failure);
}

TEST_F(JsonFormatterTest, DocumentsItself) {
  const JsonFormatter formatter;
  EXPECT_EQ(formatter.GetName(), "json");
  EXPECT_EQ(formatter.GetDescription(), "Print the output as JSON.");
  EXPECT_TRUE(formatter.GetParams().empty());
}

TEST_F(JsonFormatterTest, PrintsAScalarOnALineOfItsOwn) {
  EXPECT_EQ(Print(MetaBool::New(true)), "true\n");
  EXPECT_EQ(Print(MetaBool::New(false)), "false\n");
  EXPECT_EQ(Print(MetaInt::New(-5)), "-5\n");
  EXPECT_EQ(Print(MetaString::New("two words")), "\"two words\"\n");
  EXPECT_EQ(Print(MetaString::New("")), "\"\"\n");
}

TEST_F(JsonFormatterTest, PrintsTheLimitsOfIntegers) {
  EXPECT_EQ(Print(MetaInt::New(std::numeric_limits<long>::max())), "9223372036854775807\n");
  EXPECT_EQ(Print(MetaInt::New(std::numeric_limits<long>::min())), "-9223372036854775808\n");
}

TEST_F(JsonFormatterTest, EscapesAStringByteByByte) {
  EXPECT_EQ(Print(MetaString::New("a\tb\"c/d")), "\"a\\tb\\\"c\\/d\"\n");
  EXPECT_EQ(Print(MetaString::New("\\")), "\"\\\\\"\n");
  EXPECT_EQ(Print(MetaString::New("\b\t\n\f\r")), "\"\\b\\t\\n\\f\\r\"\n");
  EXPECT_EQ(Print(MetaString::New("\x0b\x1f\x7f")), "\"\\u000b\\u001f\\u007f\"\n");
  EXPECT_EQ(Print(MetaString::New(std::string(1, '\0'))), "\"\\u0000\"\n");
  EXPECT_EQ(Print(MetaString::New("\xc3\xa4")), "\"\\u00c3\\u00a4\"\n");
  EXPECT_EQ(Print(MetaString::New("\x80\xff")), "\"\\u0080\\u00ff\"\n");
}

/// Escapes one byte, by an independent implementation of the rule.
std::string EscapeByte(int byte) {
  switch (byte) {
    case '"':
    case '\\':
    case '/':
      return {'\\', static_cast<char>(byte)};
    case 8:
      return "\\b";
    case 9:
      return "\\t";
    case 10:
      return "\\n";
    case 12:
      return "\\f";
    case 13:
      return "\\r";
    default:
      break;
  }
  if (byte >= 32 && byte <= 126) {
    return {static_cast<char>(byte)};
  }
  char text[8];
  std::snprintf(text, sizeof text, "\\u%4.4x", static_cast<unsigned>(byte));
  return text;
}

TEST_F(JsonFormatterTest, EscapesEveryByteAsTheRuleRequires) {
  for (int byte = 0; byte < 256; ++byte) {
    EXPECT_EQ(PrintAt(0, MetaString::New(std::string(2, static_cast<char>(byte)))),
              '"' + EscapeByte(byte) + EscapeByte(byte) + '"')
        << byte;
  }
}

TEST_F(JsonFormatterTest, PrintsAnEmptyLineBeforeAStructure) {
  const auto structure = MetaStruct::New("Row");
  structure->SetField("b", "x");
  structure->SetField("a", 1);
  EXPECT_EQ(Print(structure), "\n{\n   \"a\": 1,\n   \"b\": \"x\"\n}\n");
}

TEST_F(JsonFormatterTest, PrintsEmptyStructuresAndLists) {
  EXPECT_EQ(Print(MetaStruct::New("Empty")), "\n{\n}\n");
  EXPECT_EQ(Print(MetaList::New(MetaType::Int)), "\n[\n]\n");
  EXPECT_EQ(Print(MakeDisks({})), "\n[\n]\n");
}

TEST_F(JsonFormatterTest, PrintsEachScalarOfAListOnALine) {
  EXPECT_EQ(Print(MakeNumbers({1, 2})), "\n[\n1, \n2\n]\n");
  const auto texts = MetaList::New(MetaType::String);
  texts->AddAll(std::vector<std::string>{"", "x/"});
  EXPECT_EQ(Print(texts), "\n[\n\"\", \n\"x\\/\"\n]\n");
  const auto flags = MetaList::New(MetaType::Bool);
  flags->AddAll(std::vector<bool>{true, false});
  EXPECT_EQ(Print(flags), "\n[\ntrue, \nfalse\n]\n");
}

TEST_F(JsonFormatterTest, PrintsALineOfSpacesBeforeEachStructureOfAList) {
  EXPECT_EQ(Print(MakeDisks({{"a", 1}, {"b", 2}})),
            "\n"
            "[\n"
            "\n"
            "      {\n"
            "         \"Name\": \"a\",\n"
            "         \"Size\": 1\n"
            "      }, \n"
            "\n"
            "      {\n"
            "         \"Name\": \"b\",\n"
            "         \"Size\": 2\n"
            "      }\n"
            "]\n");
  EXPECT_EQ(PrintAt(1, MakeDisks({{"a", 1}})),
            "\n"
            "   [\n"
            "   \n"
            "            {\n"
            "               \"Name\": \"a\",\n"
            "               \"Size\": 1\n"
            "            }\n"
            "   ]");
}

TEST_F(JsonFormatterTest, PrintsNestedValuesAfterTheNameOfTheirField) {
  const auto inner = MetaStruct::New("Inner");
  inner->SetField("x", MakeNumbers({7, 8}));
  inner->SetField("y", MetaStruct::New("Empty"));
  const auto structure = MetaStruct::New("Outer");
  structure->SetField("disks", MakeDisks({{"a", 1}}));
  structure->SetField("inner", inner);
  structure->SetField("last", true);
  EXPECT_EQ(Print(structure),
            "\n"
            "{\n"
            "   \"disks\": \n"
            "   [\n"
            "   \n"
            "            {\n"
            "               \"Name\": \"a\",\n"
            "               \"Size\": 1\n"
            "            }\n"
            "   ],\n"
            "   \"inner\": \n"
            "   {\n"
            "      \"x\": \n"
            "         [\n"
            "         7, \n"
            "         8\n"
            "         ],\n"
            "      \"y\": \n"
            "         {\n"
            "         }\n"
            "   },\n"
            "   \"last\": true\n"
            "}\n");
}

TEST_F(JsonFormatterTest, IndentsByThreeSpacesPerLevelFromLevelOne) {
  const auto structure = MetaStruct::New("Row");
  structure->SetField("a", 1);
  EXPECT_EQ(PrintAt(2, structure), "\n      {\n         \"a\": 1\n      }");
  EXPECT_EQ(PrintAt(0, structure), "\n{\n   \"a\": 1\n}");
  EXPECT_EQ(PrintAt(-9, structure), "\n{\n   \"a\": 1\n}");
  EXPECT_EQ(PrintAt(2, MetaInt::New(1)), "1");
}

TEST_F(JsonFormatterTest, IndentsEachStructureByItsLevel) {
  const auto inner = MetaStruct::New("Row");
  inner->SetField("a", 1);
  const auto structure = MetaStruct::New("Row");
  structure->SetField("a", inner);
  EXPECT_EQ(Print(structure), "\n{\n   \"a\": \n   {\n      \"a\": 1\n   }\n}\n");
}

TEST_F(JsonFormatterTest, PrintsAStructureOfManyFields) {
  const auto structure = MetaStruct::New("Row");
  std::string expected = "\n{\n";
  for (int i = 100; i < 300; ++i) {
    const std::string name = "f" + std::to_string(i);
    structure->SetField(name, i);
    expected += (i == 100 ? "" : ",\n");
    expected += "   \"" + name + "\": " + std::to_string(i);
  }
  EXPECT_EQ(Print(structure), expected + "\n}\n");
}

TEST_F(JsonFormatterTest, WritesNothingMoreAfterTheStreamHasFailed) {
  const auto inner = MetaStruct::New("Inner");
  inner->SetField("a", std::string(100000, '"'));
  inner->SetField("b", "text");
  const auto structure = MetaStruct::New("Outer");
  structure->SetField("inner", inner);
  structure->SetField("last", "text");
  LimitedBuffer buffer(1000);
  std::ostream out(&buffer);
  Format(MakeOutput(structure), out);
  EXPECT_TRUE(out.bad());
  EXPECT_EQ(buffer.GetText().size(), 1000u);
  EXPECT_EQ(buffer.GetRefusals(), 1);
}

TEST_F(JsonFormatterTest, DoesNotEscapeFieldNames) {
  const auto structure = MetaStruct::New("Row");
  structure->SetField("a/b \"c\" \\ \xc3\xa4\n", 1);
  EXPECT_EQ(Print(structure), "\n{\n   \"a/b \"c\" \\ \xc3\xa4\n\": 1\n}\n");
}

TEST_F(JsonFormatterTest, IgnoresAllParameters) {
  EXPECT_EQ(Print(MakeDisk("a", 1), {{"fields:Disk", "Name"},
                                     {"fields", "Name"},
                                     {"printf:Disk.Size", "%5ld"},
                                     {"stylesheet", "x.xsl"},
                                     {"units:Disk.Size", "MB"}}),
            "\n{\n   \"Name\": \"a\",\n   \"Size\": 1\n}\n");
}

TEST_F(JsonFormatterTest, ReportsAValueWhoseClassDoesNotMatchItsKind) {
  const auto print = [](MetaType type) { return PrintAt(2, std::make_shared<LyingValue>(type)); };
  EXPECT_EQ(print(MetaType::Bool), "Error reading a bool\n");
  EXPECT_EQ(print(MetaType::Int), "Error reading a int\n");
  EXPECT_EQ(print(MetaType::String), "Error reading a string\n");
  EXPECT_EQ(print(MetaType::Struct), "Error reading a struct from output.\n");
  EXPECT_EQ(print(MetaType::List), "Error reading a List\n");
  EXPECT_EQ(Print(std::make_shared<LyingValue>(MetaType::Int)), "Error reading a int\n\n");
}

TEST_F(JsonFormatterTest, ReportsAnUnknownKindAndNull) {
  EXPECT_EQ(PrintAt(2, std::make_shared<LyingValue>(static_cast<MetaType>(-1))),
            "Unknown data type\n");
  EXPECT_EQ(PrintAt(2, nullptr), "Unknown data type\n");
  std::ostringstream out;
  const auto output = CallSpec::Output::New();
  Format(output, out);
  EXPECT_EQ(out.str(), "Unknown data type\n\n");
  EXPECT_FALSE(output->HasError());
}

TEST_F(JsonFormatterTest, ContinuesAfterABadFieldOrElement) {
  const auto structure = MetaStruct::New("Row");
  structure->SetField("a", std::make_shared<LyingValue>(MetaType::Struct));
  structure->SetField("b", 1);
  EXPECT_EQ(Print(structure),
            "\n{\n   \"a\": Error reading a struct from output.\n,\n   \"b\": 1\n}\n");
  const auto numbers = MakeNumbers({1});
  numbers->Add(std::shared_ptr<MetaObject>(std::make_shared<LyingValue>(MetaType::Int)));
  numbers->Add(2);
  EXPECT_EQ(Print(numbers), "\n[\n1, \nError reading a int\n, \n2\n]\n");
}

}  // namespace
}  // namespace Kestrel::AutoCli
