// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/syscall.h>

#include <cerrno>
#include <string>
#include <vector>

#include "plugins/host/support/HostCall.h"
#include "plugins/host/support/MadeUpMachine.h"
#include "support/ForbiddenCalls.h"

// The list of connections on a machine with simulated sockets.
namespace Kestrel::Testing {
namespace {

using ::testing::ElementsAre;

class ConnectionMachineTest : public MadeUpMachineTest {
 protected:
  ConnectionMachineTest() {
    File("proc/net/tcp",
         "  sl  local_address rem_address   st\n"
         "   0: 0100007F:0016 00000000:0000 0A 00000000:00000003 00:00000000 00000000  1000 0 11\n"
         "   1: 050200C0:C001 090200C0:01BB 01 0000000A:0000000B 02:000A7214 00000000     0 0 12\n"
         "   2: 050200C0:C002 090200C0:01BB 06 00000000:00000000 03:000A7214 00000000     0 0 0\n"
         "   damaged line\n");
    File("proc/net/tcp6",
         "   0: 00000000000000000000000001000000:0016 00000000000000000000000000000000:0000 0A "
         "00000000:00000000 00:00000000 00000000     0 0 13\n");
    File(
        "proc/net/udp",
        "   0: 00000000:0035 00000000:0000 07 00000000:00000000 00:00000000 00000000   101 0 14\n");
    File("proc/20/comm", "sshd\n");
    Link("proc/20/fd/3", "socket:[11]");
    File("proc/7/comm", "a\x1b[2Jb\n");
    Link("proc/7/fd/9", "socket:[11]");
    File("proc/8/comm", "cat\n");
    Link("proc/8/fd/0", "/dev/null");
  }

  // Requests by netlink must fail, because the kernel of the real machine would answer them.
  void PrepareThere() const override { Forbid(SYS_socket, AF_NETLINK, EPROTONOSUPPORT); }

  static std::vector<std::string> Inodes(const Parameters& parameters) {
    return CallColumn("network connection list", "Inode", parameters);
  }
};

TEST_F(ConnectionMachineTest, ListsConnections) {
  ExpectPrinted("network connection list",
                "Protocol  State        Recv-Q  Send-Q  Local            Remote\n"
                "--------  -----------  ------  ------  ---------------  ------\n"
                "tcp       listen            3       0  127.0.0.1:22     0.0.0.0:*\n"
                "tcp       established      11      10  192.0.2.5:49153  192.0.2.9:443\n"
                "tcp       time-wait         0       0  192.0.2.5:49154  192.0.2.9:443\n"
                "tcp       listen            0       0  [::1]:22         [::]:*\n"
                "udp       unconnected       0       0  0.0.0.0:53       0.0.0.0:*\n");
}

TEST_F(ConnectionMachineTest, NamesTheProcessesWhenAsked) {
  ExpectPrinted("network connection list --processes --state listen",
                "Protocol  State   Local         Remote     Processes\n"
                "--------  ------  ------------  ---------  ---------\n"
                "tcp       listen  127.0.0.1:22  0.0.0.0:*  a\\x1b[2Jb (7), sshd (20)\n"
                "tcp       listen  [::1]:22      [::]:*     \n");
}

TEST_F(ConnectionMachineTest, ShowsEveryFieldOfASocket) {
  RunThere([] {
    EXPECT_THAT(CallRows("network connection list", {{"state", "established"}}),
                ElementsAre(Row({{"Protocol", "tcp"},
                                 {"Type", "stream"},
                                 {"Family", "4"},
                                 {"State", "established"},
                                 {"Local", "192.0.2.5:49153"},
                                 {"Local Address", "192.0.2.5"},
                                 {"Local Port", "49153"},
                                 {"Remote", "192.0.2.9:443"},
                                 {"Remote Address", "192.0.2.9"},
                                 {"Remote Port", "443"},
                                 {"Recv-Q", "11"},
                                 {"Send-Q", "10"},
                                 {"User Id", "0"},
                                 {"Inode", "12"},
                                 {"Processes", ""},
                                 {"Process Ids", ""}})));
  });
}

TEST_F(ConnectionMachineTest, ReadsOnlyWhatIsAskedFor) {
  File("proc/net/udp", "damaged\n");
  Folder("proc/net/udp6");
  RunThere([] {
    EXPECT_EQ(Inodes({{"protocol", "tcp"}}).size(), 4u);
    EXPECT_THAT(CallErrors("network connection list", {{"protocol", "udp"}}),
                ElementsAre("Unable to read /proc/net/udp6: Is a directory"));
    EXPECT_THAT(CallErrors("network connection list"),
                ElementsAre("Unable to read /proc/net/udp6: Is a directory"));
  });
}

struct ConnectionFilterCase {
  const char* name;
  Parameters parameters;
  std::vector<std::string> inodes;
};

const ConnectionFilterCase kConnectionFilters[] = {
    {"None", {}, {"11", "12", "0", "13", "14"}},
    {"Protocol", {{"protocol", "udp"}}, {"14"}},
    {"ProtocolInUpperCase", {{"protocol", "UDP"}}, {"14"}},
    {"Protocols", {{"protocol", "udp"}, {"protocol", "tcp"}}, {"11", "12", "0", "13", "14"}},
    {"Family4", {{"family", "4"}}, {"11", "12", "0", "14"}},
    {"Family6", {{"family", "6"}}, {"13"}},
    {"Family4OfAll", {{"family", "4"}, {"all", ""}}, {"11", "12", "0", "14"}},
    {"Family6OfAll", {{"family", "6"}, {"all", ""}}, {"13"}},
    {"State", {{"state", "listen"}}, {"11", "13"}},
    {"States", {{"state", "time-wait"}, {"state", "unconnected"}}, {"0", "14"}},
    {"StateInUpperCase", {{"state", "TIME_WAIT"}, {"state", "Unconn"}}, {"0", "14"}},
    {"StateByNumber", {{"state", "10"}}, {"11", "13"}},
    {"StateOfNone", {{"state", "closing"}}, {}},
    {"LocalPort", {{"port", "22"}}, {"11", "13"}},
    {"RemotePort", {{"port", "443"}}, {"12", "0"}},
    {"Ports", {{"port", "53"}, {"port", "49154"}}, {"0", "14"}},
    {"PortOfNone", {{"port", "80"}}, {}},
    {"AllTogether",
     {{"protocol", "tcp"}, {"family", "4"}, {"port", "22"}, {"state", "listen"}},
     {"11"}},
    {"NothingInCommon", {{"protocol", "udp"}, {"state", "listen"}}, {}},
};

class ConnectionFilterTest : public ConnectionMachineTest,
                             public ::testing::WithParamInterface<ConnectionFilterCase> {};

TEST_P(ConnectionFilterTest, ListsTheSelectedSockets) {
  RunThere([] { EXPECT_EQ(Inodes(GetParam().parameters), GetParam().inodes); });
}

INSTANTIATE_TEST_SUITE_P(Filters, ConnectionFilterTest, ::testing::ValuesIn(kConnectionFilters),
                         [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace Kestrel::Testing
