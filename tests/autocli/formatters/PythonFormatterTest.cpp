// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/PythonFormatter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ios>
#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "kestrel/KestrelException.h"
#include "support/FormatterFixture.h"
#include "support/LimitedBuffer.h"

namespace Kestrel::AutoCli {
namespace {

using namespace ::Kestrel::Testing;  // NOLINT: helpers of these tests
using ::testing::ThrowsMessage;

class PythonFormatterTest : public FormatterFixture<PythonFormatter> {};

TEST_F(PythonFormatterTest, TheExceptionOfAStreamReachesTheCaller) {
  EXPECT_TRUE(ThrowsOnAFullDisk());
  LimitedBuffer full(1);
  std::ostream out(&full);
  out.exceptions(std::ios_base::badbit);
  EXPECT_THROW(PythonFormatter().Format(MetaInt::New(12345), out, 0), std::ios_base::failure);
}

TEST_F(PythonFormatterTest, DocumentsItself) {
  const PythonFormatter formatter;
  EXPECT_EQ(formatter.GetName(), "python");
  EXPECT_EQ(formatter.GetDescription(), "Print the output as Python syntax suitable for eval().");
  EXPECT_TRUE(formatter.GetParams().empty());
}

TEST_F(PythonFormatterTest, PrintsAScalarOnALineOfItsOwn) {
  EXPECT_EQ(Print(MetaBool::New(true)), "True\n");
  EXPECT_EQ(Print(MetaBool::New(false)), "False\n");
  EXPECT_EQ(Print(MetaInt::New(-5)), "-5\n");
  EXPECT_EQ(Print(MetaString::New("two words")), "\"\"\"two words\"\"\"\n");
  EXPECT_EQ(Print(MetaString::New("")), "\"\"\"\"\"\"\n");
}

TEST_F(PythonFormatterTest, PrintsTheLimitsOfIntegers) {
  EXPECT_EQ(Print(MetaInt::New(std::numeric_limits<long>::max())), "9223372036854775807\n");
  EXPECT_EQ(Print(MetaInt::New(std::numeric_limits<long>::min())), "-9223372036854775808\n");
}

TEST_F(PythonFormatterTest, EscapesQuotesAndNewlinesAndNothingElse) {
  EXPECT_EQ(Print(MetaString::New("a\"\nb")), "\"\"\"a\\\"\\nb\"\"\"\n");
  EXPECT_EQ(Print(MetaString::New("a\"")), "\"\"\"a\\\"\"\"\"\n");
  EXPECT_EQ(Print(MetaString::New("\"\"\"")), "\"\"\"\\\"\\\"\\\"\"\"\"\n");
  EXPECT_EQ(Print(MetaString::New("'\\\r\t/\xc3\xa4\xff")), "\"\"\"'\\\r\t/\xc3\xa4\xff\"\"\"\n");
}

TEST_F(PythonFormatterTest, LeavesABackslashBeforeTheClosingQuotes) {
  EXPECT_EQ(Print(MetaString::New("a\\")), "\"\"\"a\\\"\"\"\n");
  EXPECT_EQ(Print(MetaString::New("\\\"")), "\"\"\"\\\\\"\"\"\"\n");
}

TEST_F(PythonFormatterTest, LeavesAllOtherBytesUnchanged) {
  for (int byte = 0; byte < 256; ++byte) {
    const std::string text(1, static_cast<char>(byte));
    const std::string expected = byte == '"' ? "\\\"" : byte == '\n' ? "\\n" : text;
    EXPECT_EQ(PrintAt(0, MetaString::New(text)), "\"\"\"" + expected + "\"\"\"") << byte;
  }
}

TEST_F(PythonFormatterTest, PrintsAStructureWithASeparatorAfterEachField) {
  const auto disk = MetaStruct::New("Disk");
  disk->SetField("Size", 512);
  disk->SetField("Name", "disk1");
  EXPECT_EQ(Print(disk), "{\"Name\": \"\"\"disk1\"\"\", \"Size\": 512, }\n");
}

TEST_F(PythonFormatterTest, PrintsASeparatorAfterEachElementOfAList) {
  const auto flags = MetaList::New(MetaType::Bool);
  flags->AddAll(std::vector<bool>{true, false});
  EXPECT_EQ(Print(flags), "[True, False, ]\n");
  const auto texts = MetaList::New(MetaType::String);
  texts->AddAll(std::vector<std::string>{"", "x"});
  EXPECT_EQ(Print(texts), "[\"\"\"\"\"\", \"\"\"x\"\"\", ]\n");
  const auto numbers = MetaList::New(MetaType::Int);
  numbers->AddAll(std::vector<long>{1, -2});
  EXPECT_EQ(Print(numbers), "[1, -2, ]\n");
  EXPECT_EQ(Print(MakeDisks({{"disk1", 512}})),
            "[{\"Name\": \"\"\"disk1\"\"\", \"Size\": 512, }, ]\n");
}

TEST_F(PythonFormatterTest, PrintsEmptyStructuresAndLists) {
  EXPECT_EQ(Print(MetaStruct::New("Empty")), "{}\n");
  EXPECT_EQ(Print(MetaList::New(MetaType::Int)), "[]\n");
  EXPECT_EQ(Print(MakeDisks({})), "[]\n");
}

TEST_F(PythonFormatterTest, PrintsNestedValuesOnTheSameLine) {
  const auto inner = MetaStruct::New("Inner");
  inner->SetField("x", std::vector<long>{7, 8});
  inner->SetField("y", MetaStruct::New("Empty"));
  const auto structure = MetaStruct::New("Outer");
  structure->SetField("disks", MakeDisks({{"a", 1}, {"b", 2}}));
  structure->SetField("inner", inner);
  structure->SetField("last", true);
  EXPECT_EQ(Print(structure),
            "{\"disks\": [{\"Name\": \"\"\"a\"\"\", \"Size\": 1, }, {\"Name\": \"\"\"b\"\"\", "
            "\"Size\": 2, }, ], \"inner\": {\"x\": [7, 8, ], \"y\": {}, }, \"last\": True, }\n");
}

TEST_F(PythonFormatterTest, TheLevelDoesNotChangeTheOutput) {
  const std::string text = PrintAt(2, MakeDisks({{"a", 1}}));
  EXPECT_EQ(text, "[{\"Name\": \"\"\"a\"\"\", \"Size\": 1, }, ]");
  EXPECT_EQ(PrintAt(-5, MakeDisks({{"a", 1}})), text);
  EXPECT_EQ(PrintAt(1000, MakeDisks({{"a", 1}})), text);
}

TEST_F(PythonFormatterTest, DoesNotEscapeFieldNames) {
  const auto structure = MetaStruct::New("Row");
  structure->SetField("a \"b\" \\ \xc3\xa4\n", 1);
  EXPECT_EQ(Print(structure), "{\"a \"b\" \\ \xc3\xa4\n\": 1, }\n");
}

TEST_F(PythonFormatterTest, IgnoresAllParameters) {
  EXPECT_EQ(Print(MakeDisk("a", 1), {{"fields:Disk", "Name"},
                                     {"fields", "Name"},
                                     {"printf:Disk.Size", "%5ld"},
                                     {"stylesheet", "x.xsl"},
                                     {"units:Disk.Size", "MB"}}),
            "{\"Name\": \"\"\"a\"\"\", \"Size\": 1, }\n");
}

TEST_F(PythonFormatterTest, ReportsAValueWhoseClassDoesNotMatchItsKind) {
  const auto print = [](MetaType type) { return PrintAt(2, std::make_shared<LyingValue>(type)); };
  EXPECT_EQ(print(MetaType::Bool), "Error reading a bool\n");
  EXPECT_EQ(print(MetaType::Int), "Error reading a int\n");
  EXPECT_EQ(print(MetaType::String), "Error reading a string\n");
  EXPECT_EQ(print(MetaType::Struct), "Error reading a struct from output.\n");
  EXPECT_EQ(print(MetaType::List), "Error reading a List\n");
  EXPECT_EQ(print(static_cast<MetaType>(5)), "Unknown data type\n");
  EXPECT_EQ(Print(std::make_shared<LyingValue>(MetaType::Int)), "Error reading a int\n\n");
}

TEST_F(PythonFormatterTest, ContinuesAfterABadFieldOrElement) {
  const auto structure = MetaStruct::New("Row");
  structure->SetField("a", std::make_shared<LyingValue>(MetaType::List));
  structure->SetField("b", 1);
  EXPECT_EQ(Print(structure), "{\"a\": Error reading a List\n, \"b\": 1, }\n");
  const auto numbers = MetaList::New(MetaType::Int);
  numbers->Add(std::shared_ptr<MetaObject>(std::make_shared<LyingValue>(MetaType::Int)));
  numbers->Add(2);
  EXPECT_EQ(Print(numbers), "[Error reading a int\n, 2, ]\n");
}

TEST_F(PythonFormatterTest, ThrowsForNull) {
  const char* const message = "Invalid MetaObject passed to Format in PythonFormatter";
  EXPECT_THAT([] { PrintAt(2, nullptr); }, ThrowsMessage<KestrelException>(message));
  std::ostringstream out;
  const auto output = CallSpec::Output::New();
  EXPECT_THAT([&] { Format(output, out); }, ThrowsMessage<KestrelException>(message));
  EXPECT_EQ(out.str(), "");
}

TEST_F(PythonFormatterTest, IsAllAsciiLooksAtTheHighBitOfEachByte) {
  EXPECT_TRUE(PythonFormatter::IsAllAscii(""));
  for (int byte = 0; byte < 256; ++byte) {
    const std::string text = {'a', static_cast<char>(byte), 'b'};
    EXPECT_EQ(PythonFormatter::IsAllAscii(text), byte < 128) << byte;
  }
}

}  // namespace
}  // namespace Kestrel::AutoCli
