// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "plugins/shell-common/Descriptors.h"
#include "plugins/shell-common/MadeUpTool.h"
#include "plugins/support/CommandCall.h"
#include "support/Witness.h"

// The commands below "address".
namespace Kestrel::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

bool HasTool(const std::string& name) { return Witness("command -v " + name + " || :") != ""; }

TEST(AddressCommandsTest, ReadsTheOutputOfPing) {
  const MadeUpTool ping("ping",
                        "echo \"$*\" >&2; [ \"$*\" = '-4 -n -q -c 5 -W 2 -- 10.0.0.1' ] || exit 2\n"
                        "echo 'PING 10.0.0.1 (10.0.0.1) 56(84) bytes of data.'; echo\n"
                        "echo '--- 10.0.0.1 ping statistics ---'\n"
                        "echo '5 packets transmitted, 4 received, 20% packet loss, time 4001ms'\n"
                        "echo 'rtt min/avg/max/mdev = 0.034/0.041/0.048/0.007 ms'\n");
  EXPECT_EQ(
      CallStruct("address check", {{"address", "10.0.0.1"}, {"count", "+05"}, {"family", " 4"}}),
      Row({{"Address", "10.0.0.1"},
           {"Sent", "5"},
           {"Received", "4"},
           {"Average", "0.041"},
           {"Reachable", "true"}}));
}

TEST(AddressCommandsTest, AcceptsThatThereIsNoResponse) {
  const MadeUpTool ping("ping",
                        "[ \"$*\" = '-n -q -c 3 -W 2 -- fe80::1%eth0' ] || exit 2\n"
                        "echo '3 packets transmitted, 0 received, 100% packet loss'\nexit 1\n");
  EXPECT_EQ(CallStruct("address check", {{"address", "fe80::1%eth0"}}),
            Row({{"Address", "fe80::1%eth0"},
                 {"Sent", "3"},
                 {"Received", "0"},
                 {"Average", ""},
                 {"Reachable", "false"}}));
}

TEST(AddressCommandsTest, KeepsABackslashInAnAddress) {
  const MadeUpTool ping("ping", "echo '3 packets transmitted, 0 received'\nexit 1\n");
  EXPECT_THAT(Witness("'" + ScriptPath("check-address.sh") + "' 'a\\tb\\\\c'"),
              ::testing::HasSubstr("<string>a\\tb\\\\c</string>"));
}

TEST(AddressCommandsTest, ReportsTheErrorOfPing) {
  const MadeUpTool ping("ping", "printf 'ping: x: Name unknown\\nmore\\n' >&2\nexit 2\n");
  EXPECT_THAT(CallErrors("address check", {{"address", "x"}}),
              ElementsAre("ping: x: Name unknown"));
}

TEST(AddressCommandsTest, ReachesThisMachine) {
  if (!HasTool("ping")) {
    GTEST_SKIP() << "There is no ping here";
  }
  const CommandResult result = Call("address check", {{"address", "127.0.0.1"}, {"count", "1"}});
  if (result.GetValue() == nullptr) {
    GTEST_SKIP() << "ping may not be used here: " << ::testing::PrintToString(result.GetErrors());
  }
  EXPECT_THAT(result.GetValue()->ToString(), ::testing::HasSubstr("127.0.0.1"));
}

TEST(AddressCommandsTest, ResolvesAsTheHostDoes) {
  std::vector<Row> rows;
  for (const std::string& address :
       WitnessLines("getent ahosts localhost | awk '{ print $1 }' | awk '!seen[$0]++'")) {
    rows.push_back({{"Address", address},
                    {"Family", address.find(':') == std::string::npos ? "IPv4" : "IPv6"}});
  }
  EXPECT_EQ(CallRows("address resolve", {{"name", "localhost"}}), rows);
  EXPECT_THAT(CallRows("address resolve", {{"name", "::1"}}),
              ElementsAre(Row({{"Address", "::1"}, {"Family", "IPv6"}})));
}

TEST(AddressCommandsTest, ReportsAnUnknownName) {
  EXPECT_THAT(CallErrors("address resolve", {{"name", "no-such-name.invalid"}}),
              ElementsAre("There is no address for the name no-such-name.invalid"));
}

TEST(AddressCommandsTest, NamesPorts) {
  std::vector<Row> rows;
  for (const char* const port : {"22/tcp", "53/tcp", "53/udp"}) {
    const std::string service =
        Witness("getent services " + std::string(port) + " | awk '{ print $1 }'");
    ASSERT_NE(service, "") << "The host does not name port " << port;
    const std::string text = port;
    rows.push_back({{"Port", text.substr(0, 2)},
                    {"Protocol", text.substr(3)},
                    {"Service", service.substr(0, service.size() - 1)}});
  }
  EXPECT_EQ(CallRows("address ports", {{"number", "22"}, {"number", "+053"}}), rows);
  EXPECT_THAT(CallRows("address ports", {{"number", "65535"}}), IsEmpty());
}

}  // namespace
}  // namespace Kestrel::Testing
