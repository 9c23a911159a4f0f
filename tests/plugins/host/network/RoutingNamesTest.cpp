// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/network/RoutingNames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kestrel/KestrelException.h>
#include <sys/stat.h>
#include <unistd.h>

#include "plugins/host/support/PlainUser.h"
#include "support/ScopedTempDir.h"

namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using ::testing::Optional;
using Testing::PlainUser;
using Testing::ScopedTempDir;
using ::testing::ThrowsMessage;

NumberTable TableOf(std::string_view lines) {
  NumberTable table;
  table.AddLines(lines);
  return table;
}

struct LineCase {
  const char* name;
  std::string lines;
  std::string nameOfSeven;
};

class NumberTableTest : public ::testing::TestWithParam<LineCase> {};

TEST_P(NumberTableTest, ReadsTheLines) {
  EXPECT_EQ(TableOf(GetParam().lines).NameOf(7), GetParam().nameOfSeven);
}

const LineCase kLineCases[] = {
    {"Nothing", "", "7"},
    {"ANumberAndItsName", "7 seven\n", "seven"},
    {"NoLineFeedAtTheEnd", "7 seven", "seven"},
    {"Tabs", "\t7\t\tseven\t\n", "seven"},
    {"CarriageReturn", "7 seven\r\n", "seven"},
    {"Hexadecimal", "0x7 seven\n", "seven"},
    {"HexadecimalInUpperCase", "0X07 seven\n", "seven"},
    {"CommentAfterTheName", "7 seven # a number\n", "seven"},
    {"CommentAtTheName", "7 seven# a number\n", "seven"},
    {"CommentedOut", "#7 seven\n", "7"},
    {"TheLastOfTwoLinesIsUsed", "7 first\n7 last\n", "last"},
    {"OtherNumbers", "6 six\n8 eight\n", "7"},
    {"NoName", "7\n", "7"},
    {"ANameOfTwoWords", "7 twice three\n", "7"},
    {"NoNumber", "seven 7\n", "7"},
    {"ANegativeNumber", "-7 seven\n", "7"},
    {"DigitsAndMore", "7x seven\n", "7"},
    {"EmptyHexadecimal", "0x seven\n", "7"},
    {"TooLargeANumber", "4294967303 seven\n", "7"},
    {"BytesOfAnyKind", std::string("\0\xff\n7 \xfe\x01\n", 8), "\xfe\x01"},
};
INSTANTIATE_TEST_SUITE_P(Lines, NumberTableTest, ::testing::ValuesIn(kLineCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(NumberTableTest, FindsNumbersByNameInEitherCase) {
  const NumberTable table = TableOf("254 main\n255 Local\n");
  EXPECT_THAT(table.NumberOf("main"), Optional(254u));
  EXPECT_THAT(table.NumberOf("MAIN"), Optional(254u));
  EXPECT_THAT(table.NumberOf("local"), Optional(255u));
  EXPECT_EQ(table.NumberOf("mai"), std::nullopt);
  EXPECT_EQ(table.NumberOf("mainly"), std::nullopt);
  EXPECT_EQ(table.NumberOf(""), std::nullopt);
}

TEST(NumberTableTest, TakesNumbersThatHaveNoName) {
  const NumberTable table = TableOf("254 main\n");
  EXPECT_THAT(table.NumberOf("254"), Optional(254u));
  EXPECT_THAT(table.NumberOf("0"), Optional(0u));
  EXPECT_THAT(table.NumberOf("0xffffffff"), Optional(0xffffffffu));
  EXPECT_EQ(table.NumberOf("4294967296"), std::nullopt);
  EXPECT_EQ(table.NumberOf("-1"), std::nullopt);
  EXPECT_EQ(table.NumberOf("1 "), std::nullopt);
}

TEST(NumberTableTest, ANameOfDigitsTakesPrecedenceOverTheNumber) {
  EXPECT_THAT(TableOf("7 8\n").NumberOf("8"), Optional(7u));
}

TEST(NumberTableTest, ListsItsNamesByNumber) {
  EXPECT_EQ(TableOf("9 nine\n1 one\n3 three\n").GetList(), "one, three, nine");
  EXPECT_EQ(NumberTable().GetList(), "");
}

TEST(RoutingNamesTest, BuiltInNamesAreUsedWithoutFiles) {
  const ScopedTempDir root;
  const RoutingNames names = ReadRoutingNames(root.GetPath());
  EXPECT_EQ(names.tables.GetList(), "unspec, default, main, local");
  EXPECT_EQ(names.scopes.GetList(), "global, site, link, host, nowhere");
  EXPECT_EQ(names.protocols.GetList(), BuiltInRoutingNames().protocols.GetList());
  EXPECT_EQ(names.protocols.NameOf(16), "dhcp");
}

TEST(RoutingNamesTest, AFileAddsToTheBuiltInNamesAndReplacesThem) {
  const ScopedTempDir root;
  root.Write("etc/iproute2/rt_tables", "100 office\n254 usual\n");
  root.Write("etc/iproute2/rt_protos", "0 unspec\n99 openr\n");
  root.Write("etc/iproute2/rt_scopes", "0 everywhere\n");
  const RoutingNames names = ReadRoutingNames(root.GetPath());
  EXPECT_EQ(names.tables.GetList(), "unspec, office, default, usual, local");
  EXPECT_EQ(names.protocols.NameOf(0), "unspec");
  EXPECT_EQ(names.protocols.NameOf(99), "openr");
  EXPECT_EQ(names.protocols.NameOf(17), "mrouted");
  EXPECT_EQ(names.scopes.GetList(), "everywhere, site, link, host, nowhere");
}

TEST(RoutingNamesTest, ReadsEachFileFromTheFirstFolderThatHasIt) {
  const ScopedTempDir root;
  root.Write("usr/lib/iproute2/rt_tables", "1 library\n");
  root.Write("usr/lib/iproute2/rt_protos", "200 library\n");
  root.Write("usr/share/iproute2/rt_tables", "1 shared\n");
  root.Write("usr/share/iproute2/rt_scopes", "7 shared\n");
  EXPECT_EQ(ReadRoutingNames(root.GetPath()).tables.NameOf(1), "shared");
  root.Write("etc/iproute2/rt_tables", "2 own\n");
  const RoutingNames names = ReadRoutingNames(root.GetPath());
  EXPECT_EQ(names.tables.NameOf(1), "1");
  EXPECT_EQ(names.tables.NameOf(2), "own");
  EXPECT_EQ(names.protocols.NameOf(200), "library");
  EXPECT_EQ(names.scopes.NameOf(7), "shared");
}

TEST(RoutingNamesTest, FilesOfAFolderAddNames) {
  const ScopedTempDir root;
  root.Write("etc/iproute2/rt_tables", "1 one\n");
  root.Write("etc/iproute2/rt_tables.d/10-first.conf", "2 two\n3 early\n");
  root.Write("etc/iproute2/rt_tables.d/20-second.conf", "3 three\n4 own\n");
  root.Write("etc/iproute2/rt_tables.d/README", "5 readme\n");
  root.Write("etc/iproute2/rt_tables.d/.hidden.conf", "6 hidden\n");
  root.Write("usr/share/iproute2/rt_tables.d/x.conf", "4 shared\n7 seven\n");
  EXPECT_EQ(ReadRoutingNames(root.GetPath()).tables.GetList(),
            "unspec, one, two, three, own, seven, default, main, local");
}

TEST(RoutingNamesTest, AFileThatCannotBeReadIsAnError) {
  const ScopedTempDir root;
  const std::string file = root.Write("etc/iproute2/rt_tables", "1 one\n");
  ASSERT_EQ(::chmod(file.c_str(), 0), 0);
  ASSERT_EQ(::chmod(root.GetPath().c_str(), 0755), 0);
  const PlainUser user;
  EXPECT_THAT([&] { ReadRoutingNames(root.GetPath()); },
              ThrowsMessage<KestrelException>("Unable to read " + file + ": Permission denied"));
}

TEST(RoutingNamesTest, AFolderThatCannotBeReadIsAnError) {
  const ScopedTempDir root;
  const std::string folder = root.MakeDirectory("etc/iproute2/rt_tables.d");
  ASSERT_EQ(::chmod(folder.c_str(), 0), 0);
  ASSERT_EQ(::chmod(root.GetPath().c_str(), 0755), 0);
  const PlainUser user;
  EXPECT_THAT([&] { ReadRoutingNames(root.GetPath()); },
              ThrowsMessage<KestrelException>("Unable to read " + folder + ": Permission denied"));
}

}  // namespace
}  // namespace Kestrel::Host
