// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/if_packet.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <set>

#include "kestrel/KestrelException.h"
#include "plugins/host/network/MadeUpEtc.h"
#include "plugins/host/network/MadeUpNetwork.h"
#include "plugins/host/network/Netlink.h"
#include "plugins/host/support/HostCall.h"
#include "plugins/host/support/JsonWitness.h"
#include "plugins/host/support/Namespaces.h"
#include "plugins/host/support/Rows.h"
#include "support/ForbiddenCalls.h"
#include "support/Witness.h"

// The commands in the namespace "network" about interfaces, addresses, routes and neighbors,
// compared with ip and /sys.
namespace Kestrel::Testing {
namespace {

using MetaObj::MetaStruct;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::ThrowsMessage;
using ::testing::UnorderedElementsAre;

std::vector<Json> Entries(const Json& list) {
  std::vector<Json> entries;
  for (const auto& [key, entry] : list) {
    entries.push_back(entry);
  }
  return entries;
}

std::string PrefixLength(bool isVersion6, const std::string& destination) {
  const std::size_t slash = destination.find('/');
  if (slash != std::string::npos) {
    return destination.substr(slash + 1);
  }
  if (destination == "default") {
    return "0";
  }
  return isVersion6 ? "128" : "32";
}

// ---- network interface list, get and network counter list

// Removes the flags that either only ip or only the command shows.
std::vector<std::string> CommonFlags(std::vector<std::string> flags) {
  for (const char* name : {"NO-CARRIER", "M-DOWN", "RUNNING"}) {
    flags.erase(std::remove(flags.begin(), flags.end(), name), flags.end());
  }
  return Sorted(flags);
}

std::string StatisticOf(const Json& link, const std::string& path) {
  return link.get<std::string>("stats64." + path);
}

Row IpLinkRow(const Json& link) {
  const auto flags = MemberTexts(link, "flags");
  const bool isUp = std::find(flags.begin(), flags.end(), "UP") != flags.end();
  return {{"Name", MemberText(link, "ifname")},
          {"Index", MemberText(link, "ifindex")},
          {"Alias", MemberText(link, "ifalias", "none")},
          {"State", MemberText(link, "operstate")},
          {"Up", isUp ? "true" : "false"},
          {"Type", MemberText(link, "link_type")},
          {"Kind", link.get<std::string>("linkinfo.info_kind", "none")},
          {"MTU", MemberText(link, "mtu")},
          {"MAC Address", MemberText(link, "address", "none")},
          {"Broadcast", MemberText(link, "broadcast", "none")},
          {"Flags", Joined(CommonFlags(flags))},
          {"Master", MemberText(link, "master", "none")},
          {"Queueing", MemberText(link, "qdisc", "none")},
          {"Queue Length", MemberText(link, "txqlen", "0")}};
}

std::vector<Json> IpLinks() {
  return Entries(JsonWitness("ip -json -details -statistics link show"));
}

std::vector<Row> IpLinkRows() {
  std::vector<Row> rows;
  for (const Json& link : IpLinks()) {
    rows.push_back(IpLinkRow(link));
  }
  return rows;
}

std::vector<Row> InterfaceDetailRows() {
  std::vector<Row> rows;
  for (const Row& interface : CallRows("network interface list")) {
    const auto record =
        Call("network interface get", {{"interface", interface.at("Name")}}).GetStruct();
    if (record == nullptr) {
      continue;  // the interface no longer exists, so Compare tries again
    }
    Row row = ToRow(*record);
    for (const char* name : {"Received", "Transmitted", "Addresses"}) {
      row.erase(name);
    }
    std::vector<std::string> flags;
    for (std::string& flag : WordsIn(row["Flags"])) {
      flags.push_back(flag.substr(0, flag.find(',')));
    }
    const bool isRunning = std::find(flags.begin(), flags.end(), "RUNNING") != flags.end();
    EXPECT_EQ(isRunning, row["State"] == "UP" || row["State"] == "UNKNOWN") << row["Name"];
    row["Flags"] = Joined(CommonFlags(flags));
    rows.push_back(row);
  }
  return rows;
}

const std::vector<std::string> kListedFields = {"Name", "Index", "State", "Up",
                                                "Type", "Kind",  "MTU",   "MAC Address"};

std::vector<Row> IpAddressTexts() {
  std::vector<Row> rows;
  for (const Json& link : Entries(JsonWitness("ip -json address show"))) {
    std::vector<std::string> addresses;
    for (const Json& address : Entries(link.get_child("addr_info"))) {
      addresses.push_back(MemberText(address, "local") + "/" + MemberText(address, "prefixlen"));
    }
    rows.push_back(
        {{"Name", MemberText(link, "ifname")}, {"Addresses", Joined(Sorted(addresses))}});
  }
  return rows;
}

std::vector<Row> ListedAddressTexts() {
  std::vector<Row> rows;
  for (const Row& row : CallRows("network interface list")) {
    std::vector<std::string> addresses;
    for (const std::string& word : WordsIn(row.at("Addresses"))) {
      addresses.push_back(word.substr(0, word.find(',')));
    }
    rows.push_back({{"Name", row.at("Name")}, {"Addresses", Joined(Sorted(addresses))}});
  }
  return rows;
}

void ExpectInterfacesAsIpSays() {
  const Agreement details = Compare(InterfaceDetailRows, IpLinkRows);
  EXPECT_THAT(details.witness, Not(IsEmpty()));
  EXPECT_EQ(details.command, details.witness);
  const Agreement list =
      Compare([] { return OnlyFields(CallRows("network interface list"), kListedFields); },
              [] { return OnlyFields(IpLinkRows(), kListedFields); });
  EXPECT_EQ(list.command, list.witness);
  const Agreement addresses = Compare(ListedAddressTexts, IpAddressTexts);
  EXPECT_EQ(addresses.command, addresses.witness);
}

TEST(NetworkInterfaceTest, AgreesWithIp) { ExpectInterfacesAsIpSays(); }

TEST(NetworkInterfaceTest, AgreesWithIpInItsOwnNetwork) {
  IN_OWN_NETWORK([] {
    MakeNetwork();
    MakeAddresses();
    ExpectInterfacesAsIpSays();
    const Row outside =
        ToRow(*Call("network interface get", {{"interface", "outside"}}).GetStruct());
    EXPECT_EQ(outside.at("Master"), "bridge0");
    EXPECT_EQ(outside.at("Kind"), "veth");
    EXPECT_EQ(outside.at("MTU"), "1400");
    EXPECT_EQ(outside.at("Alias"), "to the lab");
    EXPECT_EQ(outside.at("MAC Address"), "02:00:00:00:00:02");
    const Row inside = ToRow(*Call("network interface get", {{"i", "inside"}}).GetStruct());
    EXPECT_EQ(inside.at("Queue Length"), "77");
    EXPECT_THAT(inside.at("Flags"), ::testing::HasSubstr("PROMISC"));
  });
}

TEST(NetworkInterfaceTest, FiltersChooseAmongTheInterfaces) {
  IN_OWN_NETWORK([] {
    MakeNetwork();
    Configure("ip link set outside down");
    // A moment later, the interface "inside" enters the state "lowerlayerdown".
    Configure(
        "for i in $(seq 200); do ip link show inside | grep -q LOWERLAYERDOWN && exit 0; "
        "sleep 0.05; done; exit 1");
    const auto names = [](const Parameters& parameters) {
      return CallColumn("network interface list", "Name", parameters);
    };
    EXPECT_THAT(names({{"interface", "lo"}, {"interface", "inside"}, {"interface", "none"}}),
                UnorderedElementsAre("lo", "inside"));
    EXPECT_THAT(names({{"up", "false"}}), Contains("outside"));
    EXPECT_THAT(names({{"up", "false"}}), Not(Contains("inside")));
    EXPECT_THAT(names({{"up", "true"}}), Contains("inside"));
    EXPECT_THAT(names({{"up", "true"}}), Not(Contains("outside")));
    EXPECT_EQ(names({{"up", "true"}, {"up", "n"}}), names({}));
    EXPECT_THAT(names({{"state", "DOWN"}}), Contains("outside"));
    EXPECT_THAT(names({{"state", "DOWN"}}), Not(Contains("lo")));
    EXPECT_THAT(names({{"state", "UNKNOWN"}}), Contains("lo"));
    EXPECT_THAT(names({{"u", "1"}, {"s", "LOWERLAYERDOWN"}}), ElementsAre("inside"));
    EXPECT_THAT(names({{"u", "1"}, {"s", "lowerLayerDown"}}), ElementsAre("inside"));
    EXPECT_THAT(names({{"u", "1"}, {"s", "3"}}), ElementsAre("inside"));
    EXPECT_THAT(names({{"interface", "*side"}}), UnorderedElementsAre("inside", "outside"));
    EXPECT_THAT(names({{"interface", "sixteen-letters0"}}), IsEmpty());
  });
}

TEST(NetworkInterfaceTest, AnInterfaceThatDoesNotExistIsAnError) {
  EXPECT_THAT(Call("network interface get", {{"interface", "no-such0"}}).GetErrors(),
              ElementsAre("There is no network interface named 'no-such0'"));
}

TEST(NetworkInterfaceTest, RejectsInvalidNamesStatesAndBooleans) {
  EXPECT_THAT(Call("network interface get").GetErrors(),
              ElementsAre("Missing required parameter --interface"));
  EXPECT_THAT(Call("network interface get", {{"interface", "l*"}}).GetErrors(),
              ElementsAre("There is no network interface named 'l*'"))
      << "one interface is named exactly";
  EXPECT_THAT(Call("network interface get", {{"interface", "a"}, {"interface", "b"}}).GetErrors(),
              ElementsAre("Found multiple values for interface this parameter can only accept a "
                          "single value."));
  EXPECT_THAT(Call("network interface list", {{"state", "gone"}}).GetErrors(),
              ElementsAre("There is no such state: 'gone'; --state is one of: UNKNOWN, NOTPRESENT, "
                          "DOWN, LOWERLAYERDOWN, TESTING, DORMANT, UP"));
  EXPECT_THAT(Call("network interface list", {{"up", "TRUE"}}).GetErrors(),
              ElementsAre("Invalid data 'TRUE' for parameter up expected one of [1, 0, y, n, true, "
                          "false, True, False, yes, no, t, f, T, F]"));
}

// Maps the field of a counter to its place in the output of ip.
const std::map<std::string, std::string> kCounters = {
    {"RX Bytes", "rx.bytes"},     {"RX Packets", "rx.packets"}, {"RX Errors", "rx.errors"},
    {"RX Dropped", "rx.dropped"}, {"TX Bytes", "tx.bytes"},     {"TX Packets", "tx.packets"},
    {"TX Errors", "tx.errors"},   {"TX Dropped", "tx.dropped"}};

// Sends a datagram over the loopback interface to a port without a listener.
void SendDatagram(const std::string& text) {
  const int sender = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  sockaddr_in place = {};
  place.sin_family = AF_INET;
  place.sin_port = htons(9);
  place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  EXPECT_EQ(::sendto(sender, text.data(), text.size(), 0, reinterpret_cast<sockaddr*>(&place),
                     sizeof(place)),
            static_cast<ssize_t>(text.size()));
  ::close(sender);
}

// Counters only increase, so the values of the command must be between those that ip prints before
// and after it.
TEST(NetworkCounterListTest, IsBetweenTheValuesOfIpBeforeAndAfter) {
  const auto before = IpLinks();
  const auto rows = CallRows("network counter list");
  const auto after = IpLinks();
  ASSERT_EQ(rows.size(), before.size());
  ASSERT_EQ(rows.size(), after.size());
  for (std::size_t index = 0; index < rows.size(); ++index) {
    const Row& row = rows[index];
    ASSERT_EQ(row.at("Interface"), MemberText(before[index], "ifname"));
    for (const auto& [field, path] : kCounters) {
      EXPECT_GE(std::stol(row.at(field)), std::stol(StatisticOf(before[index], path))) << field;
      EXPECT_LE(std::stol(row.at(field)), std::stol(StatisticOf(after[index], path))) << field;
    }
  }
}

TEST(NetworkCounterListTest, IsBetweenTheValuesInSysBeforeAndAfter) {
  const auto read = [](const std::string& interface, const char* name) {
    return std::stol(Witness("cat /sys/class/net/" + interface + "/statistics/" + name +
                             " 2>/dev/null || echo -1"));
  };
  for (const auto& interface : CallColumn("network counter list", "Interface")) {
    const long before = read(interface, "rx_bytes");
    if (before < 0) {
      continue;  // /sys shows another network namespace
    }
    const Row row = CallRows("network counter list", {{"interface", interface}}).at(0);
    EXPECT_GE(std::stol(row.at("RX Bytes")), before);
    EXPECT_LE(std::stol(row.at("RX Bytes")), read(interface, "rx_bytes"));
  }
}

TEST(NetworkCounterListTest, CountsTheTrafficOfItsOwnNetwork) {
  IN_OWN_NETWORK([] {
    Configure("ip link set lo up");
    const auto active = [] {
      return CallColumn("network counter list", "Interface", {{"active", ""}});
    };
    EXPECT_THAT(active(), IsEmpty());
    EXPECT_THAT(CallColumn("network counter list", "Interface", {{"trouble", ""}}), IsEmpty());
    SendDatagram("hello\n");
    EXPECT_THAT(active(), ElementsAre("lo"));
    const Row row = CallRows("network counter list", {{"i", "lo"}, {"a", ""}}).at(0);
    // The packets are a datagram of six bytes and the message that its port is unreachable.
    EXPECT_EQ(row.at("TX Packets"), "2");
    EXPECT_EQ(row.at("RX Packets"), "2");
    EXPECT_EQ(row.at("TX Bytes"), StatisticOf(IpLinks().at(0), "tx.bytes"));
    const auto record = Call("network interface get", {{"interface", "lo"}}).GetStruct();
    const auto received = std::dynamic_pointer_cast<MetaStruct>(record->GetField("Received"));
    ASSERT_NE(received, nullptr);
    EXPECT_EQ(
        ToRow(*received),
        (Row{{"Bytes", row.at("RX Bytes")}, {"Packets", "2"}, {"Errors", "0"}, {"Dropped", "0"}}));
  });
}

// Sends a packet over the loopback interface, which drops the packet because nothing receives its
// protocol.
void SendPacketThatIsDropped() {
  constexpr unsigned short kUnusedProtocol = 0x9999;
  const int sender = ::socket(AF_PACKET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  sockaddr_ll place = {};
  place.sll_family = AF_PACKET;
  place.sll_protocol = htons(kUnusedProtocol);
  place.sll_ifindex = static_cast<int>(::if_nametoindex("lo"));
  EXPECT_EQ(::sendto(sender, "x", 1, 0, reinterpret_cast<sockaddr*>(&place), sizeof(place)), 1);
  ::close(sender);
}

TEST(NetworkCounterListTest, ShowsWhichCounterIndicatesTrouble) {
  IN_OWN_NETWORK([] {
    Configure("ip link set lo up");
    EXPECT_THAT(CallRows("network counter list", {{"trouble", ""}}), IsEmpty());
    SendPacketThatIsDropped();
    const Row row = CallRows("network counter list", {{"trouble", ""}}).at(0);
    EXPECT_EQ(row.at("RX Dropped"), StatisticOf(IpLinks().at(0), "rx.dropped"));
    EXPECT_EQ(row.at("Trouble"), "1");
    EXPECT_EQ(Print("network counter list", {{"trouble", ""}}, 80),
              "Interface  RX Errors  RX Dropped  TX Errors  TX Dropped\n"
              "---------  ---------  ----------  ---------  ----------\n"
              "lo                 0           1          0           0  \n");
    EXPECT_EQ(Print("network counter list", {{"human", ""}}, 80),
              "Interface  RX   RX Packets  TX   TX Packets  Trouble\n"
              "---------  ---  ----------  ---  ----------  -------\n"
              "lo         1 B           1  1 B           1        1  \n")
        << "the columns of an earlier call are not kept";
  });
}

// ---- network address list

// Flags that ip writes as separate members.
const std::vector<std::string> kAddressFlags = {
    "deprecated", "dadfailed", "dynamic",      "home",      "mngtmpaddr",
    "nodad",      "autojoin",  "optimistic",   "secondary", "stable-privacy",
    "temporary",  "tentative", "noprefixroute"};

std::string IpLifetime(const Json& address, const std::string& member) {
  const std::string seconds = MemberText(address, member);
  return seconds == "4294967295" ? "-1" : seconds;
}

std::vector<Row> IpAddressRows() {
  std::vector<Row> rows;
  for (const Json& link : Entries(JsonWitness("ip -json address show"))) {
    for (const Json& address : Entries(link.get_child("addr_info"))) {
      std::vector<std::string> flags;
      for (const std::string& flag : kAddressFlags) {
        if (address.find(flag) != address.not_found()) {
          flags.push_back(flag);
        }
      }
      rows.push_back(
          {{"Interface", MemberText(link, "ifname")},
           {"Family", MemberText(address, "family") == "inet" ? "4" : "6"},
           {"Address", MemberText(address, "local")},
           {"Prefix Length", MemberText(address, "prefixlen")},
           {"CIDR", MemberText(address, "local") + "/" + MemberText(address, "prefixlen")},
           {"Peer", MemberText(address, "address", "none")},
           {"Broadcast", MemberText(address, "broadcast", "none")},
           {"Scope", MemberText(address, "scope")},
           {"Label", MemberText(address, "label", "none")},
           {"Valid Seconds", IpLifetime(address, "valid_life_time")},
           {"Preferred Seconds", IpLifetime(address, "preferred_life_time")},
           {"Flags", Joined(Sorted(flags))}});
    }
  }
  return rows;
}

std::vector<Row> WithSortedFlags(std::vector<Row> rows) {
  for (Row& row : rows) {
    std::vector<std::string> flags;
    for (const std::string& word : WordsIn(row.at("Flags"))) {
      flags.push_back(word.substr(0, word.find(',')));
    }
    row["Flags"] = Joined(Sorted(flags));
  }
  return rows;
}

void ExpectAddressesAsIpSays() {
  const Agreement agreement =
      Compare([] { return WithSortedFlags(CallRows("network address list")); }, IpAddressRows);
  EXPECT_THAT(agreement.witness, Not(IsEmpty()));
  EXPECT_EQ(agreement.command, agreement.witness);
}

TEST(NetworkAddressListTest, AgreesWithIp) { ExpectAddressesAsIpSays(); }

TEST(NetworkAddressListTest, AgreesWithIpInItsOwnNetwork) {
  IN_OWN_NETWORK([] {
    MakeNetwork();
    MakeAddresses();
    ExpectAddressesAsIpSays();
    EXPECT_THAT(CallColumn("network address list", "Peer", {{"interface", "bridge0"}}),
                Contains("198.51.100.2"));
    EXPECT_THAT(CallColumn("network address list", "Label", {{"interface", "inside"}}),
                Contains("inside:one"));
  });
}

TEST(NetworkAddressListTest, AnInterfaceShowsItsAddressesAsStructures) {
  IN_OWN_NETWORK([] {
    MakeNetwork();
    MakeAddresses();
    const auto record = Call("network interface get", {{"interface", "inside"}}).GetStruct();
    const auto list = std::dynamic_pointer_cast<MetaObj::MetaList>(record->GetField("Addresses"));
    ASSERT_NE(list, nullptr);
    std::vector<Row> rows;
    for (const auto& address : list->GetObjects()) {
      rows.push_back(ToRow(dynamic_cast<const MetaStruct&>(*address)));
    }
    EXPECT_EQ(rows, CallRows("network address list", {{"interface", "inside"}}));
  });
}

TEST(NetworkAddressListTest, FiltersChooseAmongTheAddresses) {
  IN_OWN_NETWORK([] {
    MakeNetwork();
    MakeAddresses();
    const auto all = CallRows("network address list");
    const auto expect = [&all](const Parameters& parameters,
                               const std::function<bool(const Row&)>& filter) {
      const auto expected = Filter(all, filter);
      EXPECT_THAT(expected, Not(IsEmpty()));
      EXPECT_LT(expected.size(), all.size());
      EXPECT_EQ(CallRows("network address list", parameters), expected);
    };
    expect({{"family", "4"}}, [](const Row& row) { return row.at("Family") == "4"; });
    expect({{"f", "6"}}, [](const Row& row) { return row.at("Family") == "6"; });
    expect({{"interface", "lo"}, {"interface", "inside"}}, [](const Row& row) {
      return row.at("Interface") == "lo" || row.at("Interface") == "inside";
    });
    expect({{"scope", "host"}, {"scope", "site"}},
           [](const Row& row) { return row.at("Scope") == "host" || row.at("Scope") == "site"; });
    expect({{"prefix-length", "24"}},
           [](const Row& row) { return row.at("Prefix Length") == "24"; });
    expect({{"p", "128"}, {"f", "6"}},
           [](const Row& row) { return row.at("Prefix Length") == "128"; });
    expect({{"scope", "SITE"}}, [](const Row& row) { return row.at("Scope") == "site"; });
    expect({{"scope", "200"}}, [](const Row& row) { return row.at("Scope") == "site"; });
    expect({{"interface", "*side"}},
           [](const Row& row) { return row.at("Interface") == "inside"; });
    EXPECT_THAT(CallRows("network address list", {{"prefix-length", "0"}}), IsEmpty());
  });
}

TEST(NetworkAddressListTest, RejectsInvalidFamiliesScopesAndLengths) {
  EXPECT_THAT(Call("network address list", {{"family", "5"}}).GetErrors(),
              ElementsAre("Invalid data constraint for parameter 'family'. Expected a single value "
                          "from the set [4, 6]"));
  EXPECT_THAT(Call("network address list", {{"family", "ipv4"}}).GetErrors(),
              ElementsAre("Invalid data 'ipv4' for parameter family expected type Integer"));
  EXPECT_THAT(Call("network address list", {{"prefix-length", "129"}}).GetErrors(),
              ElementsAre("Invalid data constraint for parameter 'prefix-length'. Expected integer "
                          "in the range 0-128"));
  const std::string refusal = RunWithEtc({}, [] {
    EXPECT_THAT(Call("network address list", {{"scope", "world"}}).GetErrors(),
                ElementsAre("There is no such scope: 'world'; --scope is a number or one of: "
                            "global, site, link, host, nowhere"));
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

// ---- network route list

std::string TableNumber(const std::string& name) {
  const std::map<std::string, std::string> numbers = {
      {"", "254"}, {"main", "254"}, {"default", "253"}, {"local", "255"}, {"vpn", "1000"}};
  const auto found = numbers.find(name);
  return found == numbers.end() ? name : found->second;
}

std::string IpGateway(const Json& hop) {
  return MemberText(hop, "gateway", hop.get<std::string>("via.host", ""));
}

std::string OrNone(const std::string& text) { return text.empty() ? "none" : text; }

std::vector<Row> IpNextHops(const Json& route) {
  std::vector<Row> hops;
  const auto list = route.find("nexthops");
  if (list == route.not_found()) {
    if (route.find("dev") != route.not_found() || !IpGateway(route).empty()) {
      hops.push_back({{"Gateway", OrNone(IpGateway(route))},
                      {"Interface", MemberText(route, "dev")},
                      {"Weight", "1"}});
    }
    return hops;
  }
  for (const Json& hop : Entries(list->second)) {
    hops.push_back({{"Gateway", OrNone(IpGateway(hop))},
                    {"Interface", MemberText(hop, "dev")},
                    {"Weight", MemberText(hop, "weight", "1")}});
  }
  return hops;
}

std::string TextOfHops(const std::vector<Row>& hops) {
  std::string text;
  for (const Row& hop : hops) {
    text += hop.at("Gateway") + " " + hop.at("Interface") + " " + hop.at("Weight") + "; ";
  }
  return text;
}

// Returns the words that ip prints for the next hops.
std::string ViaOfHops(const std::vector<Row>& hops) {
  std::string text;
  for (const Row& hop : hops) {
    text += text.empty() ? "" : ", ";
    text += hop.at("Gateway") == "none" ? "" : hop.at("Gateway") + " ";
    text += "dev " + hop.at("Interface");
    text += hops.size() == 1 ? "" : " weight " + hop.at("Weight");
  }
  return OrNone(text);
}

Row IpRouteRow(const Json& route, bool isVersion6) {
  const std::string destination = MemberText(route, "dst");
  const std::string length = PrefixLength(isVersion6, destination);
  const bool hasLength = destination == "default" || destination.find('/') != std::string::npos;
  const auto hops = IpNextHops(route);
  return {{"Destination", hasLength ? destination : destination + "/" + length},
          {"Family", isVersion6 ? "6" : "4"},
          {"Prefix Length", length},
          {"Via", ViaOfHops(hops)},
          {"Gateway", hops.empty() ? "none" : hops.front().at("Gateway")},
          {"Interface", hops.empty() ? "none" : hops.front().at("Interface")},
          {"Next Hops", TextOfHops(hops)},
          {"Protocol", MemberText(route, "protocol")},
          {"Scope", MemberText(route, "scope")},
          {"Type", MemberText(route, "type")},
          {"Source", MemberText(route, "prefsrc", "none")},
          {"Metric", MemberText(route, "metric", "0")},
          {"Table", MemberText(route, "table", "main")},
          {"Table Number", TableNumber(MemberText(route, "table"))}};
}

std::vector<Row> IpRouteRows() {
  std::vector<Row> rows;
  for (const bool isVersion6 : {false, true}) {
    const std::string family = isVersion6 ? "-6" : "-4";
    for (const Json& route :
         Entries(JsonWitness("ip " + family + " -json -details route show table all"))) {
      rows.push_back(IpRouteRow(route, isVersion6));
    }
  }
  return rows;
}

std::vector<Row> RouteRows(const Parameters& parameters) {
  std::vector<Row> rows;
  for (const auto& record : Call("network route list", parameters).GetStructs()) {
    Row row = ToRow(*record);
    std::vector<Row> hops;
    const auto list = std::dynamic_pointer_cast<MetaObj::MetaList>(record->GetField("Next Hops"));
    for (const auto& hop : list->GetObjects()) {
      hops.push_back(ToRow(dynamic_cast<const MetaStruct&>(*hop)));
    }
    row["Next Hops"] = TextOfHops(hops);
    rows.push_back(row);
  }
  return rows;
}

std::vector<Row> SortedRows(std::vector<Row> rows) {
  std::sort(rows.begin(), rows.end());
  return rows;
}

void ExpectRoutesAsIpSays() {
  const Agreement agreement = Compare(
      [] {
        return SortedRows(RouteRows({{"all", ""}}));
      },
      [] { return SortedRows(IpRouteRows()); });
  EXPECT_EQ(agreement.command, agreement.witness);
}

TEST(NetworkRouteListTest, AgreesWithIp) { ExpectRoutesAsIpSays(); }

TEST(NetworkRouteListTest, AgreesWithIpInItsOwnNetwork) {
  IN_OWN_NETWORK([] {
    MakeNetwork();
    MakeAddresses();
    MakeRoutes();
    ExpectRoutesAsIpSays();
    const auto destinations = CallColumn("network route list", "Destination");
    EXPECT_THAT(destinations, Contains("default"));
    EXPECT_THAT(destinations, Contains("10.2.0.0/16"));
    EXPECT_THAT(destinations, Not(Contains("10.3.0.7/32")));
  });
}

TEST(NetworkRouteListTest, FiltersChooseAmongTheRoutes) {
  IN_OWN_NETWORK([] {
    MakeNetwork();
    MakeAddresses();
    MakeRoutes();
    const auto all = RouteRows({{"all", ""}});
    const auto expect = [&all](const Parameters& parameters,
                               const std::function<bool(const Row&)>& filter) {
      const auto expected = Filter(all, filter);
      EXPECT_THAT(expected, Not(IsEmpty()));
      EXPECT_LT(expected.size(), all.size());
      EXPECT_EQ(RouteRows(parameters), expected);
    };
    const auto isMain = [](const Row& row) { return row.at("Table") == "main"; };
    const auto isLocal = [](const Row& row) { return row.at("Table") == "local"; };
    expect({}, isMain);
    expect({{"table", "1000"}}, [](const Row& row) { return row.at("Table") == "1000"; });
    expect({{"t", "1000"}, {"t", "254"}},
           [&](const Row& row) { return row.at("Table") == "1000" || isMain(row); });
    expect({{"table", "local"}}, isLocal);
    expect({{"table", "255"}}, isLocal);
    expect({{"table", "0xFF"}}, isLocal);
    expect({{"table", "Local"}, {"table", "MAIN"}},
           [&](const Row& row) { return isLocal(row) || isMain(row); });
    expect({{"all", ""}, {"type", "Blackhole"}, {"type", "7"}}, [](const Row& row) {
      return row.at("Type") == "blackhole" || row.at("Type") == "unreachable";
    });
    expect({{"family", "6"}},
           [isMain](const Row& row) { return isMain(row) && row.at("Family") == "6"; });
    // A route with several next hops matches each of their interfaces.
    expect({{"interface", "bridge0"}}, [isMain](const Row& row) {
      return isMain(row) && row.at("Next Hops").find(" bridge0 ") != std::string::npos;
    });
    expect({{"interface", "br*0"}}, [isMain](const Row& row) {
      return isMain(row) && row.at("Next Hops").find(" bridge0 ") != std::string::npos;
    });
    EXPECT_THAT(RouteRows({{"interface", "none"}}), IsEmpty());
    EXPECT_THAT(RouteRows({{"table", "4294967295"}}), IsEmpty());
  });
}

TEST(NetworkRouteListTest, RejectsUnknownTablesAndTypes) {
  const std::string refusal = RunWithEtc({}, [] {
    const std::string tables = "--table is a number or one of: unspec, default, main, local";
    EXPECT_THAT(Call("network route list", {{"table", "mine"}, {"type", "wrong"}}).GetErrors(),
                ElementsAre("There is no such type: 'wrong'; --type is one of: none, unicast, "
                            "local, broadcast, anycast, multicast, blackhole, unreachable, "
                            "prohibit, throw, nat, xresolve",
                            "There is no such table: 'mine'; " + tables));
    EXPECT_THAT(Call("network route list", {{"table", "4294967296"}, {"table", "-1"}}).GetErrors(),
                ElementsAre("There is no such table: '4294967296'; " + tables,
                            "There is no such table: '-1'; " + tables));
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

// ip reads these files only when it finds a number for which it has no name, so only such numbers
// have new names here.
TEST(NetworkRouteListTest, UsesTheNamesOfTheAdministratorAsIpDoes) {
  IN_OWN_NETWORK([] {
    MakeNetwork();
    MakeAddresses();
    MakeRoutes();
    Configure("ip route add 10.9.0.0/16 dev inside scope 9");
    const Files names = {
        {"iproute2/rt_tables", "254 main\n255 local\n# 1000 wrong\n1000 vpn # office\n"},
        {"iproute2/rt_tables.d/more.conf", "2 rest\n"},
        {"iproute2/rt_protos", "0xC8 carrier\n"},
        {"iproute2/rt_scopes", "9 nearby\n"}};
    EXPECT_EQ(RunWithEtc(
                  names,
                  [] {
                    ExpectRoutesAsIpSays();
                    EXPECT_THAT(CallColumn("network route list", "Destination", {{"table", "VPN"}}),
                                ElementsAre("10.3.0.7/32"));
                    EXPECT_THAT(CallColumn("network route list", "Protocol"), Contains("carrier"));
                    EXPECT_THAT(CallColumn("network route list", "Scope"), Contains("nearby"));
                  }),
              "");
  });
}

TEST(NetworkRouteListTest, EscapesControlCharactersInNames) {
  IN_OWN_NETWORK([] {
    Configure("ip link set lo up");
    EXPECT_EQ(RunWithEtc({{"iproute2/rt_tables", "255 lo\x1b[31mcal\n"}},
                         [] {
                           EXPECT_THAT(
                               CallColumn("network route list", "Table", {{"table", "255"}}),
                               Contains("lo\\x1b[31mcal"));
                         }),
              "");
  });
}

// ---- network neighbor list

std::string LowerCase(std::string text) {
  for (char& letter : text) {
    letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
  }
  return text;
}

std::vector<Row> IpNeighborRows(const std::string& arguments) {
  std::vector<Row> rows;
  for (const Json& neighbor : Entries(JsonWitness("ip -json neighbor show " + arguments))) {
    const std::string address = MemberText(neighbor, "dst");
    const auto states = MemberTexts(neighbor, "state");
    rows.push_back(
        {{"Address", address},
         {"Family", address.find(':') == std::string::npos ? "4" : "6"},
         {"Interface", MemberText(neighbor, "dev", "none")},
         {"MAC Address", MemberText(neighbor, "lladdr", "unknown")},
         {"State", states.empty() ? "none" : LowerCase(states.front())},
         {"Router", neighbor.find("router") == neighbor.not_found() ? "false" : "true"}});
  }
  return SortedRows(rows);
}

void ExpectNeighborsAsIpSays() {
  const Agreement all = Compare(
      [] {
        return SortedRows(CallRows("network neighbor list", {{"all", ""}}));
      },
      [] { return IpNeighborRows("nud all"); });
  EXPECT_EQ(all.command, all.witness);
  const Agreement some = Compare([] { return SortedRows(CallRows("network neighbor list")); },
                                 [] { return IpNeighborRows(""); });
  EXPECT_EQ(some.command, some.witness);
}

TEST(NetworkNeighborListTest, AgreesWithIp) { ExpectNeighborsAsIpSays(); }

TEST(NetworkNeighborListTest, AgreesWithIpInItsOwnNetwork) {
  IN_OWN_NETWORK([] {
    MakeNetwork();
    MakeAddresses();
    MakeNeighbors();
    ExpectNeighborsAsIpSays();
  });
}

TEST(NetworkNeighborListTest, FiltersChooseAmongTheNeighbors) {
  IN_OWN_NETWORK([] {
    MakeNetwork();
    MakeAddresses();
    MakeNeighbors();
    const auto addresses = [](Parameters parameters) {
      parameters.emplace_back("interface", "inside");
      return Sorted(CallColumn("network neighbor list", "Address", parameters));
    };
    EXPECT_THAT(addresses({{"state", "permanent"}}), ElementsAre("192.0.2.77", "2001:db8::77"));
    EXPECT_THAT(addresses({{"state", "permanent"}, {"family", "4"}}), ElementsAre("192.0.2.77"));
    EXPECT_THAT(addresses({{"state", "noarp"}, {"f", "4"}}), Contains("192.0.2.78"));
    EXPECT_THAT(addresses({{"s", "stale"}}), Contains("192.0.2.79"));
    EXPECT_EQ(addresses({{"state", "PERMANENT"}}), addresses({{"state", "permanent"}}));
    EXPECT_EQ(addresses({{"state", "128"}}), addresses({{"state", "permanent"}}));
    EXPECT_THAT(addresses({}), Not(Contains("192.0.2.78")));
    EXPECT_THAT(addresses({{"all", ""}}), Contains("192.0.2.78"));
    EXPECT_THAT(CallRows("network neighbor list", {{"interface", "none"}}), IsEmpty());
  });
}

TEST(NetworkNeighborListTest, RejectsUnknownStates) {
  EXPECT_THAT(Call("network neighbor list", {{"state", "lost"}}).GetErrors(),
              ElementsAre("There is no such state: 'lost'; --state is one of: none, incomplete, "
                          "reachable, stale, delay, probe, failed, noarp, permanent"));
}

// ---- where the kernel does not answer

TEST(NetworkRefusalTest, ReportsAMissingPermission) {
  const std::string refusal = RunInNamespaces(0, [] {
    Call("network interface list");
    Forbid(SYS_socket, AF_NETLINK, EPERM);
    const std::map<std::string, std::string> things = {{"address", "network interfaces"},
                                                       {"counter", "network interfaces"},
                                                       {"interface", "network addresses"},
                                                       {"neighbor", "network interfaces"},
                                                       {"route", "network interfaces"}};
    for (const auto& [object, thing] : things) {
      const std::string path = "network " + object + " list";
      EXPECT_THAT(Call(path).GetErrors(), ElementsAre("Unable to ask the kernel for its " + thing +
                                                      ": Operation not permitted"));
    }
  });
  EXPECT_EQ(refusal, "");
}

TEST(NetworkRefusalTest, AKernelThatDoesNotRespondIsReported) {
  const std::string refusal = RunInNamespaces(0, [] {
    Forbid(SYS_sendto, -1, 0);
    EXPECT_THAT(
        [] { Host::DumpRoutingNetlink(RTM_GETLINK, "wishes", std::chrono::milliseconds(100)); },
        ThrowsMessage<KestrelException>(
            "Unable to ask the kernel for its wishes: Connection timed out"));
  });
  EXPECT_EQ(refusal, "");
}

TEST(NetworkRefusalTest, TheFolderSysIsNotNeeded) {
  const std::string refusal = RunInNamespaces(CLONE_NEWNS, [] {
    const auto before = CallColumn("network interface list", "Name");
    ASSERT_EQ(::mount("none", "/sys", "tmpfs", 0, nullptr), 0);
    EXPECT_EQ(CallColumn("network interface list", "Name"), before);
    EXPECT_EQ(CallColumn("network counter list", "Interface"), before);
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

}  // namespace
}  // namespace Kestrel::Testing
