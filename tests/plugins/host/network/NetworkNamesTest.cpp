// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/if.h>
#include <linux/if_addr.h>
#include <linux/if_arp.h>
#include <linux/if_link.h>
#include <linux/neighbour.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <string>
#include <vector>

#include "plugins/host/network/NetlinkMessages.h"
#include "plugins/host/network/NetworkLinks.h"
#include "plugins/host/network/NetworkRoutes.h"
#include "plugins/host/network/RoutingNames.h"

// Every entry of the tables of names, and some numbers that are not in them.
namespace Kestrel::Host {
namespace {

using Testing::Attribute;
using Testing::Bytes;
using ::testing::ElementsAre;
using Testing::Message;

struct Named {
  unsigned number;
  const char* name;
};

std::string NameOf(const ::testing::TestParamInfo<Named>& row) {
  std::string name = std::to_string(row.param.number) + "_";
  for (const char letter : std::string(row.param.name)) {
    name += letter == '-' ? '_' : letter;
  }
  return name;
}

class RouteProtocolTest : public ::testing::TestWithParam<Named> {};

TEST_P(RouteProtocolTest, IsNamed) {
  EXPECT_EQ(BuiltInRoutingNames().protocols.NameOf(GetParam().number), GetParam().name);
}

const Named kProtocols[] = {
    {0, "none"},     {1, "redirect"},    {2, "kernel"},  {3, "boot"},  {4, "static"},
    {5, "5"},        {8, "gated"},       {9, "ra"},      {10, "mrt"},  {11, "zebra"},
    {12, "bird"},    {13, "dnrouted"},   {14, "xorp"},   {15, "ntk"},  {16, "dhcp"},
    {17, "mrouted"}, {18, "keepalived"}, {42, "babel"},  {186, "bgp"}, {187, "isis"},
    {188, "ospf"},   {189, "rip"},       {192, "eigrp"}, {255, "255"},
};
INSTANTIATE_TEST_SUITE_P(Numbers, RouteProtocolTest, ::testing::ValuesIn(kProtocols), NameOf);

class RouteTypeTest : public ::testing::TestWithParam<Named> {};

TEST_P(RouteTypeTest, IsNamed) {
  EXPECT_EQ(RouteTypeName(GetParam().number), GetParam().name);
  const std::string word = RouteTypeWords().Find(std::to_string(GetParam().number)).value_or("");
  EXPECT_EQ(word, GetParam().number > RTN_XRESOLVE ? "" : GetParam().name);
}

const Named kRouteTypes[] = {
    {RTN_UNSPEC, "none"},
    {RTN_UNICAST, "unicast"},
    {RTN_LOCAL, "local"},
    {RTN_BROADCAST, "broadcast"},
    {RTN_ANYCAST, "anycast"},
    {RTN_MULTICAST, "multicast"},
    {RTN_BLACKHOLE, "blackhole"},
    {RTN_UNREACHABLE, "unreachable"},
    {RTN_PROHIBIT, "prohibit"},
    {RTN_THROW, "throw"},
    {RTN_NAT, "nat"},
    {RTN_XRESOLVE, "xresolve"},
    {RTN_XRESOLVE + 1, "12"},
};
INSTANTIATE_TEST_SUITE_P(Numbers, RouteTypeTest, ::testing::ValuesIn(kRouteTypes), NameOf);

class RouteScopeTest : public ::testing::TestWithParam<Named> {};

TEST_P(RouteScopeTest, IsNamed) {
  EXPECT_EQ(BuiltInRoutingNames().scopes.NameOf(GetParam().number), GetParam().name);
}

const Named kScopes[] = {
    {RT_SCOPE_UNIVERSE, "global"},
    {1, "1"},
    {199, "199"},
    {RT_SCOPE_SITE, "site"},
    {RT_SCOPE_LINK, "link"},
    {RT_SCOPE_HOST, "host"},
    {RT_SCOPE_NOWHERE, "nowhere"},
};
INSTANTIATE_TEST_SUITE_P(Numbers, RouteScopeTest, ::testing::ValuesIn(kScopes), NameOf);

class LinkStateTest : public ::testing::TestWithParam<Named> {};

TEST_P(LinkStateTest, IsNamed) {
  const std::string state(1, static_cast<char>(GetParam().number));
  const auto links =
      ParseLinks(Message(RTM_NEWLINK, Bytes(ifinfomsg()) + Attribute(IFLA_OPERSTATE, state)));
  ASSERT_EQ(links.size(), 1u);
  EXPECT_EQ(links[0].state, GetParam().name);
}

const Named kLinkStates[] = {
    {0, "UNKNOWN"}, {1, "NOTPRESENT"}, {2, "DOWN"}, {3, "LOWERLAYERDOWN"}, {4, "TESTING"},
    {5, "DORMANT"}, {6, "UP"},         {7, "7"},    {255, "255"},
};
INSTANTIATE_TEST_SUITE_P(Numbers, LinkStateTest, ::testing::ValuesIn(kLinkStates), NameOf);

class LinkFlagTest : public ::testing::TestWithParam<Named> {};

TEST_P(LinkFlagTest, IsNamed) {
  EXPECT_THAT(LinkFlagNames(1u << GetParam().number), ElementsAre(GetParam().name));
}

// Each number is the position of a bit.
const Named kLinkFlags[] = {
    {0, "UP"},         {1, "BROADCAST"}, {2, "DEBUG"},      {3, "LOOPBACK"}, {4, "POINTOPOINT"},
    {5, "NOTRAILERS"}, {6, "RUNNING"},   {7, "NOARP"},      {8, "PROMISC"},  {9, "ALLMULTI"},
    {10, "MASTER"},    {11, "SLAVE"},    {12, "MULTICAST"}, {13, "PORTSEL"}, {14, "AUTOMEDIA"},
    {15, "DYNAMIC"},   {16, "LOWER_UP"}, {17, "DORMANT"},   {18, "ECHO"},
};
INSTANTIATE_TEST_SUITE_P(Bits, LinkFlagTest, ::testing::ValuesIn(kLinkFlags), NameOf);

TEST(LinkFlagTest, ABitOfALaterKernelHasNoName) {
  for (unsigned bit = 19; bit < 32; ++bit) {
    EXPECT_THAT(LinkFlagNames(1u << bit), ::testing::IsEmpty()) << bit;
  }
}

std::vector<std::string> AddressFlags(unsigned char family, unsigned flags) {
  ifaddrmsg fixed = {};
  fixed.ifa_family = family;
  const auto addresses =
      ParseAddresses(Message(RTM_NEWADDR, Bytes(fixed) + Attribute(IFA_FLAGS, Bytes(flags))));
  return addresses.empty() ? std::vector<std::string>{"none parsed"} : addresses[0].flags;
}

class AddressFlagTest : public ::testing::TestWithParam<Named> {};

TEST_P(AddressFlagTest, IsNamed) {
  EXPECT_THAT(AddressFlags(AF_INET6, GetParam().number | IFA_F_PERMANENT),
              ElementsAre(GetParam().name));
}

const Named kAddressFlags[] = {
    {IFA_F_TEMPORARY, "temporary"},
    {IFA_F_NODAD, "nodad"},
    {IFA_F_OPTIMISTIC, "optimistic"},
    {IFA_F_DADFAILED, "dadfailed"},
    {IFA_F_HOMEADDRESS, "home"},
    {IFA_F_DEPRECATED, "deprecated"},
    {IFA_F_TENTATIVE, "tentative"},
    {IFA_F_MANAGETEMPADDR, "mngtmpaddr"},
    {IFA_F_NOPREFIXROUTE, "noprefixroute"},
    {IFA_F_MCAUTOJOIN, "autojoin"},
    {IFA_F_STABLE_PRIVACY, "stable-privacy"},
};
INSTANTIATE_TEST_SUITE_P(Bits, AddressFlagTest, ::testing::ValuesIn(kAddressFlags), NameOf);

TEST(AddressFlagTest, TheBitForTemporaryMeansSecondaryInAnIpv4Address) {
  EXPECT_THAT(AddressFlags(AF_INET, IFA_F_SECONDARY | IFA_F_PERMANENT), ElementsAre("secondary"));
}

TEST(AddressFlagTest, AnAddressThatIsNotPermanentIsDynamic) {
  EXPECT_THAT(AddressFlags(AF_INET, 0), ElementsAre("dynamic"));
  EXPECT_THAT(AddressFlags(AF_INET6, IFA_F_NODAD | IFA_F_DEPRECATED),
              ElementsAre("nodad", "deprecated", "dynamic"));
}

class NeighborStateTest : public ::testing::TestWithParam<Named> {};

TEST_P(NeighborStateTest, IsNamed) {
  ndmsg fixed = {};
  fixed.ndm_family = AF_INET;
  fixed.ndm_state = static_cast<unsigned short>(GetParam().number);
  const auto neighbors = ParseNeighbors(Message(RTM_NEWNEIGH, Bytes(fixed)));
  ASSERT_EQ(neighbors.size(), 1u);
  EXPECT_EQ(neighbors[0].state, GetParam().name);
}

const Named kNeighborStates[] = {
    {0x00, "none"},  {0x01, "incomplete"}, {0x02, "reachable"}, {0x03, "3"},
    {0x04, "stale"}, {0x08, "delay"},      {0x10, "probe"},     {0x20, "failed"},
    {0x40, "noarp"}, {0x80, "permanent"},  {0xff, "255"},
};
INSTANTIATE_TEST_SUITE_P(Numbers, NeighborStateTest, ::testing::ValuesIn(kNeighborStates), NameOf);

// Answers of the kernel that end early must be read safely.
class CutAnswerTest : public ::testing::TestWithParam<unsigned short> {};

TEST_P(CutAnswerTest, HasNoEntryUnlessItIsComplete) {
  std::string attributes;
  for (std::uint16_t type = 0; type < 32; ++type) {
    attributes += Attribute(type, std::string("\x01\x02\x03\x04\x05", type % 6));
  }
  ifaddrmsg fixed = {};
  fixed.ifa_family = AF_INET;
  const std::string whole = Message(GetParam(), Bytes(fixed) + attributes);
  for (std::size_t size = 0; size <= whole.size(); ++size) {
    // A copy, so that a sanitizer detects a read beyond its end.
    const std::string part(whole, 0, size);
    const std::size_t found = ParseLinks(part).size() + ParseAddresses(part).size() +
                              ParseRoutes(part).size() + ParseNeighbors(part).size();
    EXPECT_EQ(found, size == whole.size() ? 1u : 0u) << size;
  }
}

INSTANTIATE_TEST_SUITE_P(Kinds, CutAnswerTest,
                         ::testing::Values(RTM_NEWLINK, RTM_NEWADDR, RTM_NEWROUTE, RTM_NEWNEIGH));

}  // namespace
}  // namespace Kestrel::Host
