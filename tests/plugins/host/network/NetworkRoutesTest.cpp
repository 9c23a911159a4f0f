// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/network/NetworkRoutes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/neighbour.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include "plugins/host/network/NetlinkMessages.h"

namespace Kestrel::Host {
namespace {

using Testing::AddressBytes;
using Testing::Attribute;
using Testing::Bytes;
using ::testing::IsEmpty;
using Testing::Message;

std::string Number(std::uint32_t number) { return Bytes(number); }

rtmsg RouteHeader(unsigned char family, unsigned char prefixLength) {
  rtmsg fixed = {};
  fixed.rtm_family = family;
  fixed.rtm_dst_len = prefixLength;
  fixed.rtm_table = RT_TABLE_MAIN;
  fixed.rtm_protocol = RTPROT_KERNEL;
  fixed.rtm_scope = RT_SCOPE_LINK;
  fixed.rtm_type = RTN_UNICAST;
  return fixed;
}

NetworkRoute OnlyRoute(const rtmsg& fixed, const std::string& attributes) {
  const auto routes = ParseRoutes(Message(RTM_NEWROUTE, Bytes(fixed) + attributes));
  EXPECT_EQ(routes.size(), 1u);
  return routes.empty() ? NetworkRoute() : routes.front();
}

TEST(NetworkRoutesTest, ReadsEveryAttribute) {
  const NetworkRoute route = OnlyRoute(
      RouteHeader(AF_INET, 24),
      Attribute(RTA_DST, AddressBytes("192.0.2.0")) + Attribute(RTA_OIF, Number(3)) +
          Attribute(RTA_GATEWAY, AddressBytes("192.0.2.1")) + Attribute(RTA_TABLE, Number(1000)) +
          Attribute(RTA_PREFSRC, AddressBytes("192.0.2.5")) + Attribute(RTA_PRIORITY, Number(100)));
  EXPECT_EQ(route.family, 4);
  EXPECT_EQ(route.destination, "192.0.2.0");
  EXPECT_EQ(route.prefixLength, 24);
  EXPECT_EQ(route.source, "192.0.2.5");
  EXPECT_EQ(route.protocol, RTPROT_KERNEL);
  EXPECT_EQ(route.scope, RT_SCOPE_LINK);
  EXPECT_EQ(route.type, RTN_UNICAST);
  EXPECT_EQ(route.table, 1000u);
  EXPECT_EQ(route.metric, 100);
  ASSERT_EQ(route.nextHops.size(), 1u);
  EXPECT_EQ(route.nextHops[0].gateway, "192.0.2.1");
  EXPECT_EQ(route.nextHops[0].interfaceIndex, 3);
  EXPECT_EQ(route.nextHops[0].weight, 1);
}

TEST(NetworkRoutesTest, TheTableOfAnOlderKernelIsInTheHeader) {
  EXPECT_EQ(OnlyRoute(RouteHeader(AF_INET, 0), "").table, unsigned{RT_TABLE_MAIN});
}

TEST(NetworkRoutesTest, ADestinationWithoutAnAddressIsDefaultOrZeros) {
  EXPECT_EQ(OnlyRoute(RouteHeader(AF_INET6, 0), "").destination, "default");
  EXPECT_EQ(OnlyRoute(RouteHeader(AF_INET, 8), "").destination, "0.0.0.0");
  EXPECT_EQ(OnlyRoute(RouteHeader(AF_INET6, 8), "").destination, "::");
}

TEST(NetworkRoutesTest, ARouteThatDiscardsPacketsHasNoNextHop) {
  rtmsg fixed = RouteHeader(AF_INET, 8);
  fixed.rtm_type = RTN_BLACKHOLE;
  const NetworkRoute route = OnlyRoute(fixed, Attribute(RTA_DST, AddressBytes("10.0.0.0")));
  EXPECT_EQ(route.type, RTN_BLACKHOLE);
  EXPECT_THAT(route.nextHops, IsEmpty());
}

TEST(NetworkRoutesTest, AGatewayMayBeOfAnotherFamily) {
  const std::string via = Bytes(std::uint16_t{AF_INET6}) + AddressBytes("fe80::1");
  const NetworkRoute route = OnlyRoute(RouteHeader(AF_INET, 0), Attribute(RTA_VIA, via));
  ASSERT_EQ(route.nextHops.size(), 1u);
  EXPECT_EQ(route.nextHops[0].gateway, "fe80::1");
}

std::string NextHopBytes(int index, unsigned char hops, const std::string& attributes) {
  rtnexthop fixed = {};
  fixed.rtnh_len = static_cast<unsigned short>(sizeof(fixed) + attributes.size());
  fixed.rtnh_hops = hops;
  fixed.rtnh_ifindex = index;
  return Bytes(fixed) + attributes;
}

TEST(NetworkRoutesTest, ReadsEveryNextHop) {
  const std::string hops = NextHopBytes(3, 9, Attribute(RTA_GATEWAY, AddressBytes("192.0.2.1"))) +
                           NextHopBytes(4, 0, "");
  const NetworkRoute route = OnlyRoute(RouteHeader(AF_INET, 0), Attribute(RTA_MULTIPATH, hops));
  ASSERT_EQ(route.nextHops.size(), 2u);
  EXPECT_EQ(route.nextHops[0].gateway, "192.0.2.1");
  EXPECT_EQ(route.nextHops[0].interfaceIndex, 3);
  EXPECT_EQ(route.nextHops[0].weight, 10);
  EXPECT_EQ(route.nextHops[1].gateway, "");
  EXPECT_EQ(route.nextHops[1].weight, 1);
}

TEST(NetworkRoutesTest, NextHopsThatAreCutShortEndTheList) {
  const std::string hops = NextHopBytes(3, 0, "") + NextHopBytes(4, 0, "");
  for (std::size_t size = 0; size <= hops.size(); ++size) {
    const std::string part(hops, 0, size);
    const NetworkRoute route = OnlyRoute(RouteHeader(AF_INET, 0), Attribute(RTA_MULTIPATH, part));
    EXPECT_EQ(route.nextHops.size(), size / sizeof(rtnexthop)) << size;
  }
}

TEST(NetworkRoutesTest, KeepsTheLargestNumbers) {
  rtmsg fixed = RouteHeader(AF_INET, 0);
  fixed.rtm_protocol = 255;
  fixed.rtm_scope = 255;
  fixed.rtm_type = 255;
  const NetworkRoute route = OnlyRoute(fixed, Attribute(RTA_TABLE, Number(0xffffffff)));
  EXPECT_EQ(route.protocol, 255u);
  EXPECT_EQ(route.scope, 255u);
  EXPECT_EQ(route.type, 255u);
  EXPECT_EQ(route.table, 0xffffffff);
}

TEST(NetworkRoutesTest, CachedRoutesAndOtherMessagesAreSkipped) {
  rtmsg cloned = RouteHeader(AF_INET6, 128);
  cloned.rtm_flags = RTM_F_CLONED;
  EXPECT_THAT(
      ParseRoutes(Message(RTM_NEWROUTE, Bytes(cloned)) +
                  Message(RTM_NEWROUTE, Bytes(RouteHeader(AF_UNIX, 0))) +
                  Message(RTM_NEWROUTE, "short") + Message(RTM_NEWADDR, std::string(64, '\0'))),
      IsEmpty());
}

NetworkNeighbor OnlyNeighbor(unsigned short state, unsigned char flags,
                             const std::string& attributes) {
  ndmsg fixed = {};
  fixed.ndm_family = AF_INET6;
  fixed.ndm_ifindex = 3;
  fixed.ndm_state = state;
  fixed.ndm_flags = flags;
  const auto neighbors = ParseNeighbors(Message(RTM_NEWNEIGH, Bytes(fixed) + attributes));
  EXPECT_EQ(neighbors.size(), 1u);
  return neighbors.empty() ? NetworkNeighbor() : neighbors.front();
}

TEST(NetworkNeighborsTest, ReadsEveryAttribute) {
  const NetworkNeighbor neighbor =
      OnlyNeighbor(NUD_REACHABLE, NTF_ROUTER,
                   Attribute(NDA_DST, AddressBytes("fe80::2")) +
                       Attribute(NDA_LLADDR, std::string("\x02\x00\x00\x00\x00\x09", 6)));
  EXPECT_EQ(neighbor.family, 6);
  EXPECT_EQ(neighbor.interfaceIndex, 3);
  EXPECT_EQ(neighbor.address, "fe80::2");
  EXPECT_EQ(neighbor.linkAddress, "02:00:00:00:00:09");
  EXPECT_EQ(neighbor.state, "reachable");
  EXPECT_TRUE(neighbor.isRouter);
}

TEST(NetworkNeighborsTest, StatesHaveNames) {
  EXPECT_EQ(OnlyNeighbor(NUD_NONE, 0, "").state, "none");
  EXPECT_EQ(OnlyNeighbor(NUD_INCOMPLETE, 0, "").state, "incomplete");
  EXPECT_EQ(OnlyNeighbor(NUD_STALE, 0, "").state, "stale");
  EXPECT_EQ(OnlyNeighbor(NUD_DELAY, 0, "").state, "delay");
  EXPECT_EQ(OnlyNeighbor(NUD_PROBE, 0, "").state, "probe");
  EXPECT_EQ(OnlyNeighbor(NUD_FAILED, 0, "").state, "failed");
  EXPECT_EQ(OnlyNeighbor(NUD_NOARP, 0, "").state, "noarp");
  EXPECT_EQ(OnlyNeighbor(NUD_PERMANENT, 0, "").state, "permanent");
  EXPECT_EQ(OnlyNeighbor(3, 0, "").state, "3");
}

TEST(NetworkNeighborsTest, OtherMessagesAreSkipped) {
  ndmsg other = {};
  other.ndm_family = AF_BRIDGE;
  EXPECT_THAT(ParseNeighbors(Message(RTM_NEWNEIGH, Bytes(other)) + Message(RTM_NEWNEIGH, "x") +
                             Message(RTM_NEWLINK, std::string(64, '\0'))),
              IsEmpty());
}

}  // namespace
}  // namespace Kestrel::Host
