// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/fleet/rows/RowReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kestrel/KestrelException.h>

#include <sstream>
#include <string>

namespace Kestrel::Fleet {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::ThrowsMessage;

const std::string kShape =
    R"({"type":"Volume","fields":[["Host","string"],["Name","string"],["Size","int"]]})"
    "\n";

std::string ReadAll(const std::string& text) {
  std::istringstream stream(text);
  RowReader reader(stream);
  return reader.ReadRows()->ToString();
}

TEST(RowReaderTest, PutsTheHostOfEachPartIntoItsRows) {
  const std::string rows = ReadAll(kShape +
                                   "{\"host\":\"web[1-2]\",\"rows\":2}\n"
                                   "{\"Name\":\"a\",\"Size\":-1}\n"
                                   "{\"Size\":9223372036854775807,\"Name\":\"b\"}\n"
                                   "{\"host\":\"web3\",\"rows\":0}\n"
                                   "{\"host\":\"web4\",\"rows\":1}\n"
                                   "{\"Name\":\"c\",\"Size\":0}\n");
  EXPECT_THAT(rows, HasSubstr("web[1-2]"));
  EXPECT_THAT(rows, HasSubstr("9223372036854775807"));
  EXPECT_THAT(rows, HasSubstr("web4"));
  EXPECT_EQ(std::string::npos, rows.find("web3"));
}

TEST(RowReaderTest, ReadsEveryKindOfField) {
  std::istringstream stream(
      R"({"type":"T","fields":[["Host","string"],["B","bool"],["S","string-list"],["I","int-list"],)"
      R"(["F","bool-list"],["O","structure","O",[["A","int"]]],)"
      R"(["L","structure-list","P",[["A","structure","Q",[["X","bool"]]]]]]})"
      "\n{\"host\":\"h\",\"rows\":1}\n"
      R"({"B":true,"S":["x","\u0001"],"I":[1,2],"F":[false],"O":{"A":5},"L":[{"A":{"X":true}}]})"
      "\n");
  RowReader reader(stream);
  const std::string rows = reader.ReadRows()->ToString();
  EXPECT_THAT(rows, HasSubstr("\x01"));
  EXPECT_THAT(reader.GetShape().GetSortFields(), ElementsAre("B", "Host"));
}

TEST(RowReaderTest, SortsTextOfSizesByTheirBytes) {
  std::istringstream stream(
      R"({"type":"T","fields":[["Host","string"],["Size","string"],["Size Bytes","int"]]})"
      "\n");
  const RowReader reader(stream);
  EXPECT_EQ("Size Bytes", reader.GetShape().GetSortKey("Size"));
  EXPECT_EQ("Host", reader.GetShape().GetSortKey("Host"));
}

TEST(RowReaderTest, RefusesRowsOfAnotherShape) {
  const std::string part = "{\"host\":\"h\",\"rows\":1}\n";
  for (const char* row : {"{\"Name\":\"a\"}", "{\"Name\":1,\"Size\":1}",
                          "{\"Name\":\"a\",\"Size\":true}", "rubbish", "[]", "{"}) {
    EXPECT_THROW(ReadAll(kShape + part + row + "\n"), KestrelException) << row;
  }
}

TEST(RowReaderTest, RefusesRowsThatEndTooEarly) {
  EXPECT_THAT(
      [] { ReadAll(kShape + "{\"host\":\"h\",\"rows\":2}\n{\"Name\":\"a\",\"Size\":1}\n"); },
      ThrowsMessage<KestrelException>("The rows end too early"));
}

TEST(RowReaderTest, RefusesAShapeWithoutFields) {
  EXPECT_THAT([] { ReadAll("{\"type\":\"T\",\"fields\":[]}\n{\"host\":\"h\",\"rows\":0}\n"); },
              ThrowsMessage<KestrelException>("The shape of the rows has no fields"));
}

TEST(RowReaderTest, RefusesAnUnknownShape) {
  for (const char* shape :
       {"", "{}", "{\"type\":\"T\",\"fields\":[[\"a\",\"float\"]]}",
        "{\"type\":\"T\",\"fields\":[[\"a\",\"float-list\"]]}",
        "{\"type\":\"T\",\"fields\":[[\"a\",\"structure\"]]}", "{\"type\":1,\"fields\":[]}"}) {
    std::istringstream stream(std::string(shape) + "\n");
    EXPECT_THROW(RowReader reader(stream), KestrelException) << shape;
  }
}

}  // namespace
}  // namespace Kestrel::Fleet
