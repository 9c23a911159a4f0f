// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/formatters/FieldPrefixes.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "kestrel/metaobj/MetaStruct.h"

namespace Kestrel::AutoCli {
namespace {

using MetaObj::MetaStruct;

std::string MakeText(const std::string& name, bool isFirst, long level) {
  return (isFirst ? "first " : "") + name + "@" + std::to_string(level);
}

std::shared_ptr<MetaStruct> MakeRecord(const std::string& typeName, int fields = 2) {
  auto record = MetaStruct::New(typeName);
  for (int i = 0; i < fields; ++i) {
    record->SetField("f" + std::to_string(i), i);
  }
  return record;
}

TEST(FieldPrefixesTest, MakesTheTextsInTheOrderOfTheFields) {
  FieldPrefixes prefixes(MakeText);
  const std::string* const texts = prefixes.Find(*MakeRecord("Row", 3), 4);
  ASSERT_NE(texts, nullptr);
  EXPECT_EQ(texts[0], "first f0@4");
  EXPECT_EQ(texts[1], "f1@4");
  EXPECT_EQ(texts[2], "f2@4");
}

TEST(FieldPrefixesTest, MakesThemOnceForAllRecordsOfOneLayoutAndLevel) {
  FieldPrefixes prefixes(MakeText);
  const auto row = MakeRecord("Row");
  const std::string* const texts = prefixes.Find(*row, 1);
  EXPECT_EQ(prefixes.Find(*MakeRecord("Row"), 1), texts);
  EXPECT_NE(prefixes.Find(*row, 2), texts);
  EXPECT_NE(prefixes.Find(*MakeRecord("Other"), 1), texts);
  EXPECT_NE(prefixes.Find(*MakeRecord("Row", 3), 1), texts);
  EXPECT_EQ(prefixes.Find(*row, 1), texts);
}

TEST(FieldPrefixesTest, MakesTextsBelowLevelZeroToo) {
  FieldPrefixes prefixes(MakeText);
  const auto row = MakeRecord("Row");
  ASSERT_NE(prefixes.Find(*row, -7), nullptr);
  EXPECT_EQ(prefixes.Find(*row, -7)[1], "f1@-7");
}

TEST(FieldPrefixesTest, HasNoneForARecordThatSharesNoLayout) {
  FieldPrefixes prefixes(MakeText);
  EXPECT_NE(prefixes.Find(*MakeRecord("Row", 64), 1), nullptr);
  EXPECT_EQ(prefixes.Find(*MakeRecord("Row", 65), 1), nullptr);
}

TEST(FieldPrefixesTest, HasNoneForDeepRecords) {
  FieldPrefixes prefixes(MakeText);
  const auto row = MakeRecord("Row");
  EXPECT_NE(prefixes.Find(*row, 64), nullptr);
  EXPECT_EQ(prefixes.Find(*row, 65), nullptr);
}

TEST(FieldPrefixesTest, KeepsTheTextsOfSixtyFourShapesAndNoMore) {
  FieldPrefixes prefixes(MakeText);
  std::vector<std::shared_ptr<MetaStruct>> rows;  // a layout lives as long as its records
  std::vector<const std::string*> texts;
  for (int i = 0; i < 65; ++i) {
    rows.push_back(MakeRecord("Row" + std::to_string(i)));
    texts.push_back(prefixes.Find(*rows.back(), 0));
  }
  for (std::size_t i = 0; i < 64; ++i) {
    ASSERT_NE(texts[i], nullptr) << i;
    EXPECT_EQ(prefixes.Find(*rows[i], 0), texts[i]) << i;
    EXPECT_EQ(texts[i][1], "f1@0") << i;
  }
  EXPECT_EQ(texts[64], nullptr);
}

}  // namespace
}  // namespace Kestrel::AutoCli
