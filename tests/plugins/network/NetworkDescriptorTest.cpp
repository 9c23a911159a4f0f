// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "plugins/shell-common/MadeUpTool.h"
#include "plugins/support/CommandCall.h"
#include "support/Witness.h"

// The commands of network.xml.
namespace Kestrel::Testing {
namespace {

using ::testing::ElementsAre;

constexpr const char* kCheck = "network address check";
constexpr const char* kResolve = "network name resolve";

bool HasTool(const std::string& name) { return !Witness("command -v " + name + " || :").empty(); }

TEST(NetworkAddressCheckTest, ReadsTheOutputOfPing) {
  const MadeUpTool ping("ping",
                        "[ \"$*\" = '-4 -n -q -c 5 -W 2 -- 10.0.0.1' ] || exit 2\n"
                        "echo 'PING 10.0.0.1 (10.0.0.1) 56(84) bytes of data.'; echo\n"
                        "echo '--- 10.0.0.1 ping statistics ---'\n"
                        "echo '5 packets transmitted, 4 received, 20% packet loss, time 4001ms'\n"
                        "echo 'rtt min/avg/max/mdev = 0.034/0.041/12.048/0.007 ms'\n");
  EXPECT_EQ(CallStruct(kCheck, {{"address", "10.0.0.1"}, {"count", "+05"}, {"family", " 4"}}),
            Row({{"Address", "10.0.0.1"},
                 {"Sent", "5"},
                 {"Received", "4"},
                 {"Minimum Microseconds", "34"},
                 {"Average Microseconds", "41"},
                 {"Maximum Microseconds", "12048"}}));
}

TEST(NetworkAddressCheckTest, TimesAreIntegers) {
  const MadeUpTool ping("ping",
                        "echo '1 packets transmitted, 1 received, 0% packet loss, time 0ms'\n"
                        "echo 'rtt min/avg/max/mdev = 9.7/100.2504/1001/0.000 ms'\n");
  const CommandResult result = Call(kCheck, {{"address", "a"}});
  ASSERT_NE(result.GetStruct(), nullptr);
  EXPECT_EQ(result.GetStruct()->GetFieldType("Average Microseconds"), MetaObj::MetaType::Int);
  const Row row = ToRow(*result.GetStruct());
  EXPECT_EQ(row.at("Minimum Microseconds"), "9700");
  EXPECT_EQ(row.at("Average Microseconds"), "100250");
  EXPECT_EQ(row.at("Maximum Microseconds"), "1001000");
}

TEST(NetworkAddressCheckTest, AMachineThatDoesNotRespondIsAnError) {
  const MadeUpTool ping("ping",
                        "[ \"$*\" = '-n -q -c 3 -W 2 -- fe80::1%eth0' ] || exit 2\n"
                        "echo '3 packets transmitted, 0 received, 100% packet loss'\nexit 1\n");
  EXPECT_THAT(CallErrors(kCheck, {{"address", "fe80::1%eth0"}}),
              ElementsAre("fe80::1%eth0 does not respond to 3 requests"));
}

TEST(NetworkAddressCheckTest, CountsASingleRequestInTheSingular) {
  const MadeUpTool ping("ping", "exit 1\n");
  EXPECT_THAT(CallErrors(kCheck, {{"address", "a"}, {"count", "1"}}),
              ElementsAre("a does not respond to 1 request"));
}

TEST(NetworkAddressCheckTest, ReportsTheErrorOfPing) {
  const MadeUpTool ping("ping", "printf 'ping: x: Name unknown\\nmore\\n' >&2\nexit 2\n");
  EXPECT_THAT(CallErrors(kCheck, {{"address", "x"}}), ElementsAre("ping: x: Name unknown"));
}

TEST(NetworkAddressCheckTest, AnAnswerWithoutTimesIsAnError) {
  const MadeUpTool ping("ping", "echo '1 packets transmitted, 1 received, 0% packet loss'\n");
  EXPECT_THAT(CallErrors(kCheck, {{"address", "x"}}), ElementsAre("ping printed no times for x"));
}

struct AddressCase {
  const char* name;
  const char* address;
};

class CheckedAddressTest : public ::testing::TestWithParam<AddressCase> {};

// The address is a single argument, unchanged, and never an option.
TEST_P(CheckedAddressTest, ReachesPingUnchanged) {
  const MadeUpTool ping("ping", "for last; do :; done; printf '[%s]\\n' \"$last\" >&2; exit 2\n");
  EXPECT_THAT(CallErrors(kCheck, {{"address", GetParam().address}}),
              ElementsAre("[" + std::string(GetParam().address) + "]"));
}

constexpr AddressCase kAddresses[] = {
    {"Option", "-f"},
    {"LongOption", "--count=9"},
    {"Quote", "it's"},
    {"Quotes", "'; echo a'"},
    {"Substitution", "$(id)"},
    {"Backquotes", "`id`"},
    {"Spaces", " a  b "},
    {"Backslash", "a\\tb\\"},
    {"Pattern", "/*"},
    {"Brace", "a}b"},
    {"Comment", "#a"},
    {"NotAscii",
     "b\xc3\xbc"
     "cher"},
};
INSTANTIATE_TEST_SUITE_P(Addresses, CheckedAddressTest, ::testing::ValuesIn(kAddresses),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(NetworkAddressCheckTest, ReachesThisMachine) {
  if (!HasTool("ping")) {
    GTEST_SKIP() << "There is no ping here";
  }
  const CommandResult result = Call(kCheck, {{"address", "127.0.0.1"}, {"count", "1"}});
  if (result.GetValue() == nullptr) {
    GTEST_SKIP() << "ping may not be used here: " << ::testing::PrintToString(result.GetErrors());
  }
  EXPECT_EQ(ToRow(*result.GetStruct()).at("Received"), "1");
}

TEST(NetworkNameResolveTest, ResolvesAsTheHostDoes) {
  std::vector<Row> rows;
  for (const std::string& address :
       WitnessLines("getent ahosts localhost | awk '{ print $1 }' | awk '!seen[$0]++'")) {
    rows.push_back(
        {{"Address", address}, {"Family", address.find(':') == std::string::npos ? "4" : "6"}});
  }
  EXPECT_EQ(CallRows(kResolve, {{"name", "localhost"}}), rows);
  EXPECT_THAT(CallRows(kResolve, {{"name", "::1"}}),
              ElementsAre(Row({{"Address", "::1"}, {"Family", "6"}})));
}

struct UnknownNameCase {
  const char* name;
  const char* value;
};

class UnknownNameTest : public ::testing::TestWithParam<UnknownNameCase> {};

TEST_P(UnknownNameTest, IsAnError) {
  EXPECT_THAT(
      CallErrors(kResolve, {{"name", GetParam().value}}),
      ElementsAre("There is no address for the name '" + std::string(GetParam().value) + "'"));
}

constexpr UnknownNameCase kUnknownNames[] = {
    {"Unknown", "no-such-name.invalid"},
    {"Option", "-a"},
    {"LongOption", "--service"},
    {"Quote", "it's.invalid"},
    {"Substitution", "$(hostname)"},
    {"Spaces", "local host"},
    {"Empty", ""},
};
INSTANTIATE_TEST_SUITE_P(Names, UnknownNameTest, ::testing::ValuesIn(kUnknownNames),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(NetworkNameResolveTest, AddressesAreListedOnce) {
  const MadeUpTool getent("getent",
                          "printf '%s\\n' '10.0.0.9 STREAM x' '10.0.0.9 DGRAM' '::2 STREAM' "
                          "'10.0.0.9 RAW'\n");
  EXPECT_THAT(CallRows(kResolve, {{"name", "x"}}),
              ElementsAre(Row({{"Address", "10.0.0.9"}, {"Family", "4"}}),
                          Row({{"Address", "::2"}, {"Family", "6"}})));
}

}  // namespace
}  // namespace Kestrel::Testing
