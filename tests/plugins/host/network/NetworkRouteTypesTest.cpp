// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "plugins/host/network/MadeUpNetwork.h"
#include "plugins/host/support/HostCall.h"

// Routes of many types, created by ip.
namespace Kestrel::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct RouteCase {
  const char* name;
  const char* family;
  const char* arguments;  // of "ip route add"
  Row row;
};

class RouteOfAKindTest : public ::testing::TestWithParam<RouteCase> {};

TEST_P(RouteOfAKindTest, IsListedWithItsType) {
  IN_OWN_NETWORK([] {
    MakeNetwork();
    MakeAddresses();
    const RouteCase& route = GetParam();
    Configure(std::string("ip -") + route.family + " route add table 77 proto 99 " +
              route.arguments);
    const std::vector<Row> rows =
        CallRows("network route list", {{"table", "77"}, {"family", route.family}});
    ASSERT_EQ(rows.size(), 1u);
    for (const auto& [field, value] : route.row) {
      EXPECT_EQ(rows[0].at(field), value) << field;
    }
    EXPECT_EQ(rows[0].at("Table Number"), "77");
    EXPECT_EQ(rows[0].at("Family"), route.family);
    const Parameters byType = {{"all", ""}, {"type", route.row.at("Type")}};
    EXPECT_THAT(CallColumn("network route list", "Table", byType), ::testing::Contains("77"));
  });
}

const RouteCase kRoutes[] = {
    {"Unicast",
     "4",
     "10.1.0.0/16 via 192.0.2.1 dev inside",
     {{"Type", "unicast"},
      {"Destination", "10.1.0.0/16"},
      {"Via", "192.0.2.1 dev inside"},
      {"Gateway", "192.0.2.1"},
      {"Interface", "inside"},
      {"Prefix Length", "16"}}},
    {"UnicastWithoutAGateway",
     "4",
     "10.1.2.3 dev inside src 192.0.2.6 metric 5",
     {{"Type", "unicast"},
      {"Destination", "10.1.2.3/32"},
      {"Via", "dev inside"},
      {"Gateway", "none"},
      {"Source", "192.0.2.6"},
      {"Metric", "5"}}},
    {"Default",
     "4",
     "default via 192.0.2.1",
     {{"Type", "unicast"}, {"Destination", "default"}, {"Prefix Length", "0"}}},
    {"DefaultOfVersion6",
     "6",
     "default via 2001:db8:1::1 dev bridge0",
     {{"Type", "unicast"}, {"Destination", "default"}, {"Via", "2001:db8:1::1 dev bridge0"}}},
    {"GatewayOfTheOtherFamily",
     "4",
     "10.1.0.0/16 via inet6 2001:db8:1::9 dev bridge0",
     {{"Type", "unicast"}, {"Via", "2001:db8:1::9 dev bridge0"}, {"Gateway", "2001:db8:1::9"}}},
    {"SeveralNextHops",
     "4",
     "10.1.0.0/16 nexthop via 192.0.2.2 weight 3 nexthop dev bridge0 weight 256",
     {{"Type", "unicast"},
      {"Via", "192.0.2.2 dev inside weight 3, dev bridge0 weight 256"},
      {"Gateway", "192.0.2.2"},
      {"Interface", "inside"}}},
    {"SeveralNextHopsOfVersion6",
     "6",
     "2001:db8:8::/48 nexthop via 2001:db8:1::7 dev bridge0 weight 2"
     " nexthop via 2001:db8:1::8 dev bridge0",
     {{"Type", "unicast"},
      {"Via", "2001:db8:1::7 dev bridge0 weight 2, 2001:db8:1::8 dev bridge0 weight 1"}}},
    {"Blackhole",
     "4",
     "blackhole 10.1.0.0/16",
     {{"Type", "blackhole"}, {"Via", "none"}, {"Gateway", "none"}, {"Interface", "none"}}},
    {"Unreachable", "4", "unreachable 10.1.0.0/16", {{"Type", "unreachable"}, {"Via", "none"}}},
    {"Prohibit", "4", "prohibit 10.1.0.0/16", {{"Type", "prohibit"}, {"Via", "none"}}},
    {"Throw", "4", "throw 10.1.0.0/16", {{"Type", "throw"}, {"Via", "none"}}},
    {"BlackholeOfVersion6",
     "6",
     "blackhole 2001:db8:9::/48",
     {{"Type", "blackhole"}, {"Destination", "2001:db8:9::/48"}}},
    {"Local",
     "4",
     "local 10.1.0.0/16 dev lo",
     {{"Type", "local"}, {"Scope", "host"}, {"Via", "dev lo"}}},
    {"Broadcast",
     "4",
     "broadcast 192.0.2.99 dev inside",
     {{"Type", "broadcast"}, {"Scope", "link"}, {"Destination", "192.0.2.99/32"}}},
    {"Multicast",
     "4",
     "multicast 239.1.0.0/16 dev inside",
     {{"Type", "multicast"}, {"Via", "dev inside"}}},
    {"Anycast",
     "6",
     "anycast 2001:db8:9::9 dev lo",
     {{"Type", "anycast"}, {"Destination", "2001:db8:9::9/128"}}},
    {"HighestMetric",
     "4",
     "10.1.0.0/16 dev inside metric 4294967295",
     {{"Type", "unicast"}, {"Metric", "4294967295"}}},
};
INSTANTIATE_TEST_SUITE_P(Kinds, RouteOfAKindTest, ::testing::ValuesIn(kRoutes),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(RouteFilterTest, ChoosesARouteByAnyOfItsNextHops) {
  IN_OWN_NETWORK([] {
    MakeNetwork();
    MakeAddresses();
    Configure("ip route add table 77 10.1.0.0/16 nexthop via 192.0.2.2 nexthop dev bridge0");
    const auto through = [](const char* interface) {
      return CallColumn("network route list", "Destination",
                        {{"table", "77"}, {"interface", interface}});
    };
    EXPECT_THAT(through("inside"), ElementsAre("10.1.0.0/16"));
    EXPECT_THAT(through("bridge0"), ElementsAre("10.1.0.0/16"));
    EXPECT_THAT(through("b*"), ElementsAre("10.1.0.0/16"));
    EXPECT_THAT(through("outside"), IsEmpty());
    EXPECT_THAT(through("none"), IsEmpty());
  });
}

// An interface may be called "none", although the commands show the same word if there is no
// interface.
TEST(RouteFilterTest, ARouteWithoutAnInterfaceDoesNotMatchAnInterfaceCalledNone) {
  IN_OWN_NETWORK([] {
    Configure(
        "ip link add none type veth peer name peer0; ip link set none up;"
        "ip address add 192.0.2.5/24 dev none; ip route add blackhole 10.1.0.0/16");
    EXPECT_THAT(
        CallColumn("network route list", "Destination", {{"interface", "none"}, {"family", "4"}}),
        ElementsAre("192.0.2.0/24"));
  });
}

}  // namespace
}  // namespace Kestrel::Testing
