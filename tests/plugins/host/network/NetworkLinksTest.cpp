// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/network/NetworkLinks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/if.h>
#include <linux/if_addr.h>
#include <linux/if_arp.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <limits>

#include "plugins/host/network/NetlinkMessages.h"

namespace Kestrel::Host {
namespace {

using Testing::AddressBytes;
using Testing::Attribute;
using Testing::Bytes;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Testing::Message;

std::string LinkMessage(unsigned short type, int index, const std::string& attributes) {
  ifinfomsg fixed = {};
  fixed.ifi_type = type;
  fixed.ifi_index = index;
  fixed.ifi_flags = IFF_UP | IFF_BROADCAST;
  return Message(RTM_NEWLINK, Bytes(fixed) + attributes);
}

std::string Number(std::uint32_t number) { return Bytes(number); }

NetworkLink OnlyLink(const std::string& answer) {
  const auto links = ParseLinks(answer);
  EXPECT_EQ(links.size(), 1u);
  return links.empty() ? NetworkLink() : links.front();
}

TEST(NetworkLinksTest, ReadsEveryAttribute) {
  rtnl_link_stats64 counters = {};
  counters.rx_bytes = 1;
  counters.rx_packets = 2;
  counters.rx_errors = 3;
  counters.rx_dropped = 4;
  counters.tx_bytes = 5;
  counters.tx_packets = 6;
  counters.tx_errors = 7;
  counters.tx_dropped = 8;
  const std::string attributes =
      Attribute(IFLA_IFNAME, std::string_view("veth0\0", 6)) + Attribute(IFLA_MASTER, Number(9)) +
      Attribute(IFLA_MTU, Number(1500)) + Attribute(IFLA_TXQLEN, Number(1000)) +
      Attribute(NLA_F_NESTED | IFLA_LINKINFO, Attribute(IFLA_INFO_KIND, "veth")) +
      Attribute(IFLA_OPERSTATE, "\x06") +
      Attribute(IFLA_ADDRESS, std::string("\x02\x00\x00\x00\x00\x01", 6)) +
      Attribute(IFLA_BROADCAST, "\xff\xff\xff\xff\xff\xff") + Attribute(IFLA_QDISC, "fq_codel") +
      Attribute(IFLA_IFALIAS, "to the lab") + Attribute(IFLA_STATS64, Bytes(counters));
  const NetworkLink link = OnlyLink(LinkMessage(ARPHRD_ETHER, 7, attributes));
  EXPECT_EQ(link.index, 7);
  EXPECT_EQ(link.masterIndex, 9);
  EXPECT_EQ(link.mtu, 1500);
  EXPECT_EQ(link.queueLength, 1000);
  EXPECT_EQ(link.name, "veth0");
  EXPECT_EQ(link.type, "ether");
  EXPECT_EQ(link.kind, "veth");
  EXPECT_EQ(link.state, "UP");
  EXPECT_EQ(link.address, "02:00:00:00:00:01");
  EXPECT_EQ(link.broadcast, "ff:ff:ff:ff:ff:ff");
  EXPECT_EQ(link.queueing, "fq_codel");
  EXPECT_EQ(link.alias, "to the lab");
  EXPECT_THAT(LinkFlagNames(link.flags), ElementsAre("UP", "BROADCAST"));
  EXPECT_EQ(link.received.bytes, 1);
  EXPECT_EQ(link.received.packets, 2);
  EXPECT_EQ(link.received.errors, 3);
  EXPECT_EQ(link.received.dropped, 4);
  EXPECT_EQ(link.transmitted.bytes, 5);
  EXPECT_EQ(link.transmitted.packets, 6);
  EXPECT_EQ(link.transmitted.errors, 7);
  EXPECT_EQ(link.transmitted.dropped, 8);
}

TEST(NetworkLinksTest, MissingAttributesAreEmpty) {
  const NetworkLink link = OnlyLink(LinkMessage(ARPHRD_LOOPBACK, 1, ""));
  EXPECT_EQ(link.name, "");
  EXPECT_EQ(link.type, "loopback");
  EXPECT_EQ(link.kind, "");
  EXPECT_EQ(link.state, "UNKNOWN");
  EXPECT_EQ(link.address, "");
  EXPECT_EQ(link.mtu, 0);
  EXPECT_EQ(link.received.bytes, 0);
}

TEST(NetworkLinksTest, ACounterBeyondALongBecomesTheLargestLong) {
  rtnl_link_stats64 counters = {};
  counters.rx_bytes = std::numeric_limits<std::uint64_t>::max();
  const NetworkLink link =
      OnlyLink(LinkMessage(ARPHRD_ETHER, 1, Attribute(IFLA_STATS64, Bytes(counters))));
  EXPECT_EQ(link.received.bytes, std::numeric_limits<long>::max());
}

TEST(NetworkLinksTest, ReadsTheFewerCountersOfAnOlderKernel) {
  const std::string attribute = Attribute(IFLA_STATS64, Bytes(std::uint64_t{5}));
  const NetworkLink link = OnlyLink(LinkMessage(ARPHRD_ETHER, 1, attribute));
  EXPECT_EQ(link.received.packets, 5);
  EXPECT_EQ(link.received.bytes, 0);
}

struct TypeCase {
  const char* name;
  unsigned short number;
};

class LinkTypeTest : public ::testing::TestWithParam<TypeCase> {};

TEST_P(LinkTypeTest, IsNamed) {
  EXPECT_EQ(OnlyLink(LinkMessage(GetParam().number, 1, "")).type, GetParam().name);
}

INSTANTIATE_TEST_SUITE_P(
    Types, LinkTypeTest,
    ::testing::Values(TypeCase{"ether", ARPHRD_ETHER}, TypeCase{"loopback", ARPHRD_LOOPBACK},
                      TypeCase{"ppp", ARPHRD_PPP}, TypeCase{"infiniband", ARPHRD_INFINIBAND},
                      TypeCase{"ipip", ARPHRD_TUNNEL}, TypeCase{"tunnel6", ARPHRD_TUNNEL6},
                      TypeCase{"sit", ARPHRD_SIT}, TypeCase{"gre", ARPHRD_IPGRE},
                      TypeCase{"none", ARPHRD_NONE}, TypeCase{"65535", ARPHRD_VOID}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(NetworkLinksTest, TheLinkAddressOfATunnelIsAnIpAddress) {
  const std::string attribute = Attribute(IFLA_ADDRESS, AddressBytes("192.0.2.1"));
  EXPECT_EQ(OnlyLink(LinkMessage(ARPHRD_TUNNEL, 1, attribute)).address, "192.0.2.1");
}

TEST(NetworkLinksTest, AStateOfALaterKernelIsANumber) {
  const std::string attribute = Attribute(IFLA_OPERSTATE, "\x63");
  EXPECT_EQ(OnlyLink(LinkMessage(ARPHRD_ETHER, 1, attribute)).state, "99");
}

TEST(NetworkLinksTest, OtherAndShortMessagesAreSkipped) {
  EXPECT_THAT(ParseLinks(Message(RTM_NEWADDR, std::string(64, '\0')) +
                         Message(RTM_NEWLINK, std::string(8, '\0'))),
              IsEmpty());
}

TEST(NetworkLinksTest, FlagsAreNamedInTheOrderOfTheirBits) {
  EXPECT_THAT(LinkFlagNames(IFF_LOOPBACK | IFF_RUNNING | IFF_MULTICAST | (1U << 16)),
              ElementsAre("LOOPBACK", "RUNNING", "MULTICAST", "LOWER_UP"));
  EXPECT_THAT(LinkFlagNames(0), IsEmpty());
}

TEST(NetworkLinksTest, AnInterfaceThatNoLongerExistsIsShownByNumber) {
  const std::map<long, std::string> names = {{1, "lo"}};
  EXPECT_EQ(LinkName(names, 1), "lo");
  EXPECT_EQ(LinkName(names, 5), "#5");
  EXPECT_EQ(LinkName(names, 0), "none");
}

std::string AddressMessage(unsigned char family, unsigned char flags,
                           const std::string& attributes) {
  ifaddrmsg fixed = {};
  fixed.ifa_family = family;
  fixed.ifa_prefixlen = 24;
  fixed.ifa_flags = flags;
  fixed.ifa_scope = RT_SCOPE_LINK;
  fixed.ifa_index = 3;
  return Message(RTM_NEWADDR, Bytes(fixed) + attributes);
}

NetworkAddress OnlyAddress(const std::string& answer) {
  const auto addresses = ParseAddresses(answer);
  EXPECT_EQ(addresses.size(), 1u);
  return addresses.empty() ? NetworkAddress() : addresses.front();
}

TEST(NetworkAddressesTest, ReadsEveryAttribute) {
  ifa_cacheinfo lifetimes = {};
  lifetimes.ifa_valid = 3600;
  lifetimes.ifa_prefered = std::numeric_limits<std::uint32_t>::max();
  const NetworkAddress address = OnlyAddress(AddressMessage(
      AF_INET, 0,
      Attribute(IFA_LOCAL, AddressBytes("192.0.2.5")) +
          Attribute(IFA_ADDRESS, AddressBytes("192.0.2.9")) +
          Attribute(IFA_BROADCAST, AddressBytes("192.0.2.255")) + Attribute(IFA_LABEL, "eth0:1") +
          Attribute(IFA_CACHEINFO, Bytes(lifetimes)) +
          Attribute(IFA_FLAGS, Number(IFA_F_NOPREFIXROUTE | IFA_F_SECONDARY))));
  EXPECT_EQ(address.interfaceIndex, 3);
  EXPECT_EQ(address.family, 4);
  EXPECT_EQ(address.prefixLength, 24);
  EXPECT_EQ(address.address, "192.0.2.5");
  EXPECT_EQ(address.peer, "192.0.2.9");
  EXPECT_EQ(address.broadcast, "192.0.2.255");
  EXPECT_EQ(address.scope, unsigned{RT_SCOPE_LINK});
  EXPECT_EQ(address.label, "eth0:1");
  EXPECT_EQ(address.validSeconds, 3600);
  EXPECT_EQ(address.preferredSeconds, -1);
  EXPECT_THAT(address.flags, ElementsAre("noprefixroute", "secondary", "dynamic"));
}

TEST(NetworkAddressesTest, AnAddressWithoutLocalPartHasNoPeer) {
  const NetworkAddress address =
      OnlyAddress(AddressMessage(AF_INET6, IFA_F_PERMANENT | IFA_F_TEMPORARY,
                                 Attribute(IFA_ADDRESS, AddressBytes("fe80::1"))));
  EXPECT_EQ(address.family, 6);
  EXPECT_EQ(address.address, "fe80::1");
  EXPECT_EQ(address.peer, "");
  EXPECT_EQ(address.validSeconds, -1);
  EXPECT_THAT(address.flags, ElementsAre("temporary"));
}

TEST(NetworkAddressesTest, OtherFamiliesAndShortMessagesAreSkipped) {
  EXPECT_THAT(
      ParseAddresses(AddressMessage(AF_UNIX, 0, "") + Message(RTM_NEWADDR, std::string(4, '\0')) +
                     Message(RTM_NEWLINK, std::string(64, '\0'))),
      IsEmpty());
}

}  // namespace
}  // namespace Kestrel::Host
