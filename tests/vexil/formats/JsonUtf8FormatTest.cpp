// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/formats/FormatsFixture.h"

namespace Kestrel::Formats {
namespace {

std::string Json(const std::shared_ptr<MetaObject>& root) { return Print(kJsonUtf8Format, root); }

TEST(JsonUtf8FormatTest, IndentsByThreeSpaces) {
  EXPECT_EQ(Json(MakeList({MakeVolume()})),
            "[\n"
            "   {\n"
            "      \"Disk\": {\n"
            "         \"Name\": \"sda\",\n"
            "         \"Size\": 7\n"
            "      },\n"
            "      \"Labels\": [\n"
            "         \"a\",\n"
            "         \"b\"\n"
            "      ],\n"
            "      \"On\": true\n"
            "   }\n"
            "]\n");
}

TEST(JsonUtf8FormatTest, PrintsEmptyValuesOnOneLine) {
  EXPECT_EQ(Json(MetaList::New(MetaType::Struct, nullptr)), "[]\n");
  EXPECT_EQ(Json(MetaStruct::New("Empty")), "{}\n");
  auto outer = MetaStruct::New("Outer");
  outer->SetField("A", MetaList::New(MetaType::Int));
  outer->SetField("B", MetaStruct::New("Empty"));
  EXPECT_EQ(Json(outer), "{\n   \"A\": [],\n   \"B\": {}\n}\n");
  EXPECT_EQ(Json(MakeList({MetaStruct::New("Empty"), MetaStruct::New("Empty")})),
            "[\n   {},\n   {}\n]\n");
}

TEST(JsonUtf8FormatTest, PrintsScalars) {
  EXPECT_EQ(Json(MetaBool::New(false)), "false\n");
  EXPECT_EQ(Json(MetaInt::New(-5)), "-5\n");
  EXPECT_EQ(Json(MetaString::New("Zoë\n")), "\"Zoë\\n\"\n");
  EXPECT_EQ(Json(MakeTexts({"a"})), "[\n   \"a\"\n]\n");
}

TEST(JsonUtf8FormatTest, IndentsEachLevelOfNestedStructures) {
  EXPECT_EQ(Json(Testing::MakeNested(3)),
            "{\n"
            "   \"a\": 2,\n"
            "   \"child\": {\n"
            "      \"a\": 1,\n"
            "      \"child\": {\n"
            "         \"a\": 0\n"
            "      }\n"
            "   }\n"
            "}\n");
}

}  // namespace
}  // namespace Kestrel::Formats
