// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "plugins/host/support/HostCall.h"
#include "plugins/host/support/HostRun.h"
#include "plugins/host/support/Namespaces.h"
#include "support/Golden.h"
#include "support/Witness.h"

// The commands in the namespace "network" as a user sees them.
namespace Kestrel::Testing {
namespace {

TEST(NetworkToolTest, AMissingInterfaceIsAnErrorOfTheCall) {
  const VexilResult result =
      HostRun({"network", "interface", "get", "--interface", "no-such0"}).Run();
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err, "Errors: \nThere is no network interface named 'no-such0'\n");
  EXPECT_EQ(result.status, 1);
}

TEST(NetworkToolTest, AllTablesAndOneTableExcludeEachOther) {
  const VexilResult result =
      HostRun({"network", "route", "list", "--all", "--table", "main", "--type", "x"}).Run();
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err,
            "Errors: \n"
            "There is no such type: 'x'; --type is one of: none, unicast, local, broadcast, "
            "anycast, multicast, blackhole, unreachable, prohibit, throw, nat, xresolve\n"
            "--all lists the routes of all tables, so --table cannot be used too.\n");
  EXPECT_EQ(result.status, 1);
}

TEST(NetworkToolTest, TheColumnsOfACallDoNotAffectTheNextCall) {
  const std::string refusal = RunInOwnNetwork([] {
    Witness("ip link set lo up && ip route add blackhole 10.4.0.0/16");
    const VexilResult result = HostRun({"--input=STDIN"})
                                   .WithInput(
                                       "network route list --table main --family 4\n"
                                       "network route list --family 4\n"
                                       "network counter list --trouble\n"
                                       "network counter list --interface none\n")
                                   .Run();
    EXPECT_EQ(result.out,
              "Table  Destination  Type       Via\n"
              "-----  -----------  ---------  ---\n"
              "main   10.4.0.0/16  blackhole  none\n"
              "Destination  Type       Protocol  Metric  Via\n"
              "-----------  ---------  --------  ------  ---\n"
              "10.4.0.0/16  blackhole  boot           0  none\n"
              "Interface  RX Errors  RX Dropped  TX Errors  TX Dropped\n"
              "---------  ---------  ----------  ---------  ----------\n"
              "Interface  RX Bytes  RX Packets  TX Bytes  TX Packets  Trouble\n"
              "---------  --------  ----------  --------  ----------  -------\n");
    EXPECT_EQ(result.err, "");
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

TEST(NetworkToolTest, CollectsAllMistakesOfACall) {
  const VexilResult result = HostRun({"network", "address", "list", "--family", "5",
                                      "--prefix-length", "200", "--colour", "red"})
                                 .Run();
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err,
            "Errors: \n"
            "Unknown parameter : colour\n"
            "Invalid data constraint for parameter 'family'. Expected a single value from the set "
            "[4, 6]\n"
            "Invalid data constraint for parameter 'prefix-length'. Expected integer in the range "
            "0-128\n");
  EXPECT_EQ(result.status, 1);
}

// A network without traffic: all interfaces are down.
void MakeStillNetwork() {
  Witness(
      "set -e;"
      "ip link add inside address 02:00:00:00:00:01 type veth peer name outside"
      "  address 02:00:00:00:00:02;"
      "ip link add bridge0 address 02:00:00:00:00:03 type bridge;"
      "ip link set outside master bridge0;"
      "ip address add 192.0.2.5/24 brd + dev inside;"
      "ip address add 2001:db8:1111:2222:3333:4444:5555:6666/64 dev inside;"
      "ip address add 198.51.100.1 peer 198.51.100.2/32 dev bridge0");
}

// Replaces the number after each of the labels with "#".
std::string WithoutNumbers(std::string text, const std::vector<std::string>& labels) {
  for (const std::string& label : labels) {
    for (std::size_t at = text.find(label); at != std::string::npos; at = text.find(label, at)) {
      at += label.size();
      text.replace(at, text.find('\n', at) - at, "#");
    }
  }
  return text;
}

const Parameters kOurInterfaces = {
    {"interface", "inside"}, {"interface", "outside"}, {"interface", "bridge0"}};

TEST(NetworkToolTest, PrintsInterfacesWithTheirAddressesWrapped) {
  const std::string refusal = RunInOwnNetwork([] {
    MakeStillNetwork();
    EXPECT_THAT(Print("network interface list", kOurInterfaces, 80),
                MatchesGolden("host/network-interface-list"));
    EXPECT_THAT(Print("network counter list", kOurInterfaces, 80),
                MatchesGolden("host/network-counter-list"));
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

TEST(NetworkToolTest, PrintsAnInterfaceWithStructuresWithinIt) {
  const std::string refusal = RunInOwnNetwork([] {
    MakeStillNetwork();
    Witness("ip address delete 2001:db8:1111:2222:3333:4444:5555:6666/64 dev inside");
    // The index of the interface and the kernel's own traffic vary.
    const std::string text =
        WithoutNumbers(Print("network interface get", {{"interface", "inside"}}, 80),
                       {"Index       : ", "Bytes  : ", "Dropped: ", "Errors : ", "Packets: "});
    EXPECT_THAT(text, MatchesGolden("host/network-interface-get"));
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

TEST(NetworkToolTest, PrintsAddressesRoutesAndNeighbors) {
  const std::string refusal = RunInOwnNetwork([] {
    MakeStillNetwork();
    Witness(
        "set -e; ip link set inside addrgenmode none; ip link set inside up;"
        "ip route add default via 192.0.2.1 metric 50 src 192.0.2.5;"
        "ip route add blackhole 10.4.0.0/16;"
        "ip neighbor add 192.0.2.77 lladdr 02:00:00:00:00:77 dev inside nud permanent");
    const Parameters family = {{"family", "4"}};
    EXPECT_THAT(Print("network address list", {{"family", "4"}, {"interface", "inside"}}, 80),
                MatchesGolden("host/network-address-list"));
    EXPECT_THAT(Print("network route list", family, 80), MatchesGolden("host/network-route-list"));
    EXPECT_THAT(Print("network neighbor list", family, 80),
                MatchesGolden("host/network-neighbor-list"));
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

}  // namespace
}  // namespace Kestrel::Testing
