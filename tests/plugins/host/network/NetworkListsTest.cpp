// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <algorithm>
#include <string>
#include <vector>

#include "kestrel/autocli/Command.h"
#include "kestrel/callspec/OutputSpec.h"
#include "plugins/host/network/MadeUpNetwork.h"
#include "plugins/host/support/HostCall.h"
#include "plugins/host/support/HostRun.h"
#include "plugins/host/support/PlainUser.h"
#include "plugins/host/support/Rows.h"
#include "support/Witness.h"

// Properties of every list in the namespace "network".
namespace Kestrel::Testing {
namespace {

using MetaObj::MetaStruct;
using MetaObj::MetaType;
using ::testing::Each;
using ::testing::IsEmpty;
using ::testing::Le;
using ::testing::Not;
using ::testing::StartsWith;

struct ListCase {
  const char* name;
  const char* command;
  Parameters parameters;
};

void PrintTo(const ListCase& list, std::ostream* out) { *out << list.name; }

const ListCase kLists[] = {
    {"Addresses", "network address list", {}},
    {"Connections", "network connection list", {{"all", ""}}},
    {"ConnectionsWithProcesses", "network connection list", {{"all", ""}, {"processes", ""}}},
    {"Counters", "network counter list", {}},
    {"CountersOfTrouble", "network counter list", {{"trouble", ""}}},
    {"Dns", "network dns list", {}},
    {"Interfaces", "network interface list", {}},
    {"Neighbors", "network neighbor list", {{"all", ""}}},
    {"Ports", "network port list", {}},
    {"Routes", "network route list", {}},
    {"RoutesOfAllTables", "network route list", {{"all", ""}}},
};

class NetworkListTest : public ::testing::TestWithParam<ListCase> {
 protected:
  // Makes a network that does not change by itself: interfaces, addresses, routes, neighbors and
  // sockets.
  static void MakeEverything() {
    MakeNetwork();
    MakeAddresses();
    MakeRoutes();
    MakeNeighbors();
    OpenSockets();
  }

  // The sockets listen until this process ends, on ports that the kernel chooses.
  static void OpenSockets() {
    for (const int family : {AF_INET, AF_INET, AF_INET6}) {
      EXPECT_EQ(::listen(::socket(family, SOCK_STREAM | SOCK_CLOEXEC, 0), 1), 0);
    }
  }

  static CommandResult CallWith(Parameters parameters) {
    parameters.insert(parameters.end(), GetParam().parameters.begin(), GetParam().parameters.end());
    return Call(GetParam().command, parameters);
  }

  static std::vector<std::string> Fields(MetaType type) {
    const auto rows = CallWith({}).GetStructs();
    std::vector<std::string> fields;
    if (!rows.empty()) {
      for (const std::string& field : rows.front()->GetFieldNames()) {
        if (rows.front()->GetFieldType(field) == type) {
          fields.push_back(field);
        }
      }
    }
    return fields;
  }
};

INSTANTIATE_TEST_SUITE_P(Lists, NetworkListTest, ::testing::ValuesIn(kLists),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(NetworkListTest, NoStringIsEmpty) {
  IN_OWN_NETWORK([] {
    MakeEverything();
    const auto rows = ToRows(CallWith({}).GetValue());
    for (const std::string& field : Fields(MetaType::String)) {
      for (const Row& row : rows) {
        EXPECT_NE(row.at(field), "") << field << " of " << ::testing::PrintToString(row);
      }
    }
  });
}

TEST_P(NetworkListTest, SortsByEveryString) {
  IN_OWN_NETWORK([] {
    MakeEverything();
    for (const std::string& field : Fields(MetaType::String)) {
      if (field == "RX" || field == "TX") {
        continue;  // formatted for people, but sorted by the bytes
      }
      std::vector<std::string> values;
      for (const auto& row : CallWith({{"sort", field}}).GetStructs()) {
        values.push_back(TextOf(row, field));
      }
      EXPECT_TRUE(std::is_sorted(values.begin(), values.end())) << field;
    }
  });
}

TEST_P(NetworkListTest, SortsByEveryInteger) {
  IN_OWN_NETWORK([] {
    MakeEverything();
    for (const std::string& field : Fields(MetaType::Int)) {
      std::vector<long> values;
      for (const auto& row : CallWith({{"sort", field}, {"descending", ""}}).GetStructs()) {
        values.push_back(NumberOf(row, field));
      }
      EXPECT_TRUE(std::is_sorted(values.rbegin(), values.rend())) << field;
    }
  });
}

TEST_P(NetworkListTest, ALimitKeepsTheFirstRows) {
  IN_OWN_NETWORK([] {
    MakeEverything();
    std::vector<Row> all = ToRows(CallWith({}).GetValue());
    all.resize(std::min<std::size_t>(all.size(), 2));
    EXPECT_EQ(ToRows(CallWith({{"limit", "2"}}).GetValue()), all);
  });
}

TEST_P(NetworkListTest, AnUnknownFieldToSortByIsAnError) {
  const auto errors = CallWith({{"sort", "Colour"}}).GetErrors();
  ASSERT_EQ(errors.size(), 1u);
  EXPECT_THAT(errors[0], StartsWith("There is no field 'Colour' to sort by. Sort by one of: "));
}

// Returns the length of each line without its trailing spaces, which are invisible.
std::vector<std::size_t> LengthsOfLines(const std::string& text) {
  std::vector<std::size_t> lengths;
  for (std::size_t start = 0; start < text.size(); start = text.find('\n', start) + 1) {
    const std::string line = text.substr(start, text.find('\n', start) - start);
    lengths.push_back(line.find_last_not_of(' ') + 1);
  }
  return lengths;
}

// Makes the interfaces, addresses, routes and neighbors of an ordinary host.
void MakeOrdinaryHost() {
  Configure(
      "ip link set lo up;"
      "ip link add eth0 address 52:54:00:12:34:56 type veth peer name far0;"
      "ip link add docker0 type bridge;"
      "ip link set eth0 up; ip link set far0 up; ip link set docker0 up;"
      "ip address add 192.168.100.124/24 brd + dev eth0 valid_lft 85000 preferred_lft 85000;"
      "ip address add 2001:db8:1234:5678:5054:ff:fe12:3456/64 dev eth0 nodad;"
      "ip address add 172.17.0.1/16 brd + dev docker0;"
      "ip route add default via 192.168.100.1 dev eth0 proto dhcp src 192.168.100.124 metric 100;"
      "ip -6 route add default via fe80::5054:ff:fe00:1 dev eth0 proto ra metric 1024;"
      "ip neighbor add 192.168.100.1 lladdr 52:54:00:00:00:01 dev eth0 nud permanent;"
      "ip neighbor add fe80::5054:ff:fe00:1 lladdr 52:54:00:00:00:01 dev eth0 nud permanent");
}

TEST_P(NetworkListTest, ItsTableFitsAScreenOf80Columns) {
  IN_OWN_NETWORK([] {
    MakeOrdinaryHost();
    const std::string text = Print(GetParam().command, GetParam().parameters, 80);
    EXPECT_THAT(LengthsOfLines(text), Each(Le(80u))) << text;
  });
}

TEST(NetworkAddressListTest, TheLongestNamesAndAddressesFitAScreenOf80Columns) {
  IN_OWN_NETWORK([] {
    Configure(
        "ip link add br-0123456789ab type bridge; ip link set br-0123456789ab addrgenmode none up;"
        "ip address add 2001:db8:1234:5678:9abc:def0:1234:5678/128 dev br-0123456789ab nodad");
    EXPECT_EQ(Print("network address list", {{"prefix-length", "128"}}, 80),
              "Interface        CIDR                                        Scope   Peer\n"
              "---------------  ------------------------------------------  ------  ----\n"
              "br-0123456789ab  2001:db8:1234:5678:9abc:def0:1234:5678/128  global  none\n");
  });
}

TEST_P(NetworkListTest, EveryUserMayCallIt) {
  IN_OWN_NETWORK([] {
    MakeOrdinaryHost();
    const std::size_t rows = CallWith({}).GetStructs().size();
    const PlainUser user;
    const CommandResult result = CallWith({});
    EXPECT_THAT(result.GetErrors(), IsEmpty());
    EXPECT_GE(result.GetStructs().size(), rows);  // the kernel may have added neighbors
  });
}

TEST_P(NetworkListTest, RunsWithoutAnyEnvironment) {
  std::string line = "env -i '" KESTREL_HOST_TOOL "' --plugin '" KESTREL_HOST_PLUGIN "' " +
                     std::string(GetParam().command);
  for (const auto& parameter : GetParam().parameters) {
    line += " --" + parameter.first;
  }
  EXPECT_THAT(Witness(line + " 2>&1"), Not(::testing::HasSubstr("Errors: ")));
}

// ---- mistakes

struct MistakeCase {
  const char* name;
  std::vector<std::string> arguments;
  const char* message;
};

class NetworkMistakeTest : public ::testing::TestWithParam<MistakeCase> {};

// The message is on standard error, after the line "Errors: ".
TEST_P(NetworkMistakeTest, IsReportedWithoutAPrefix) {
  std::vector<std::string> arguments = {"network"};
  arguments.insert(arguments.end(), GetParam().arguments.begin(), GetParam().arguments.end());
  const VexilResult result = HostRun(arguments).Run();
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err, "Errors: \n" + std::string(GetParam().message) + "\n");
  EXPECT_EQ(result.status, 1);
}

const MistakeCase kMistakes[] = {
    {"State",
     {"neighbor", "list", "--state", "gone"},
     "There is no such state: 'gone'; --state is one of: none, incomplete, reachable, stale, "
     "delay, probe, failed, noarp, permanent"},
    {"EmptyState",
     {"interface", "list", "--state", ""},
     "There is no such state: ''; --state is one of: UNKNOWN, NOTPRESENT, DOWN, LOWERLAYERDOWN, "
     "TESTING, DORMANT, UP"},
    {"Protocol",
     {"connection", "list", "--protocol", "tcp6"},
     "There is no such protocol: 'tcp6'; --protocol is one of: tcp, udp, unix"},
    {"AllAndAProtocol",
     {"connection", "list", "--all", "--protocol", "tcp"},
     "--all lists all protocols, so --protocol cannot be used too."},
    {"Kind",
     {"dns", "list", "--kind", "servers"},
     "There is no such kind: 'servers'; --kind is one of: server, search, option, sortlist"},
    {"DescendingOnly",
     {"dns", "list", "--descending"},
     "--descending needs --sort with the name of a field."},
    {"Interface",
     {"interface", "get", "--interface", "a b"},
     "There is no network interface named 'a b'"},
    {"Type",
     {"route", "list", "--type", "12"},
     "There is no such type: '12'; --type is one of: none, unicast, local, broadcast, anycast, "
     "multicast, blackhole, unreachable, prohibit, throw, nat, xresolve"},
};
INSTANTIATE_TEST_SUITE_P(Mistakes, NetworkMistakeTest, ::testing::ValuesIn(kMistakes),
                         [](const auto& row) { return std::string(row.param.name); });

// ---- names of interfaces

struct InterfaceCommand {
  const char* name;
  const char* command;
};

class InterfaceFilterTest : public ::testing::TestWithParam<InterfaceCommand> {};

INSTANTIATE_TEST_SUITE_P(Commands, InterfaceFilterTest,
                         ::testing::Values(InterfaceCommand{"Address", "network address list"},
                                           InterfaceCommand{"Counter", "network counter list"},
                                           InterfaceCommand{"Neighbor", "network neighbor list"},
                                           InterfaceCommand{"Route", "network route list"}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(InterfaceFilterTest, TakesNamesAndPatterns) {
  IN_OWN_NETWORK([] {
    MakeNetwork();
    MakeAddresses();
    Configure(
        "ip neighbor add 198.51.100.9 lladdr 02:00:00:00:00:09 dev bridge0 nud permanent;"
        "ip neighbor add 192.0.2.9 lladdr 02:00:00:00:00:09 dev inside nud permanent");
    const auto interfaces = [](const Parameters& parameters) {
      return CallColumn(GetParam().command, "Interface", parameters);
    };
    EXPECT_THAT(interfaces({{"interface", "inside"}}),
                ::testing::AllOf(Not(IsEmpty()), Each("inside")));
    EXPECT_THAT(interfaces({{"interface", "in*de"}}),
                ::testing::AllOf(Not(IsEmpty()), Each("inside")));
    EXPECT_THAT(interfaces({{"i", "*0"}}), ::testing::AllOf(Not(IsEmpty()), Each("bridge0")));
    EXPECT_THAT(interfaces({{"i", "INSIDE"}}), IsEmpty());
    EXPECT_THAT(interfaces({{"i", "insid"}}), IsEmpty());
    EXPECT_THAT(interfaces({{"i", "insid."}}), IsEmpty());
    EXPECT_THAT(interfaces({{"i", ""}}), IsEmpty());
  });
}

// In the name of an interface, the kernel accepts every byte except NUL, "/", ":" and white space.
TEST(InterfaceNameTest, ControlCharactersAreEscaped) {
  IN_OWN_NETWORK([] {
    Configure(
        "name=$(printf 'a\\033[2J'); ip link add \"$name\" type veth peer name far0;"
        "ip link set \"$name\" up; ip address add 192.0.2.5/24 dev \"$name\"");
    const std::string shown = "a\\x1b[2J";
    EXPECT_THAT(CallColumn("network interface list", "Name"), ::testing::Contains(shown));
    EXPECT_THAT(CallColumn("network counter list", "Interface"), ::testing::Contains(shown));
    EXPECT_THAT(CallColumn("network address list", "Interface"), ::testing::Contains(shown));
    EXPECT_THAT(CallColumn("network route list", "Via"), ::testing::Contains("dev " + shown));
    EXPECT_THAT(CallColumn("network interface list", "Name", {{"interface", "a\x1b[2J"}}),
                ::testing::ElementsAre(shown));
  });
}

}  // namespace
}  // namespace Kestrel::Testing
