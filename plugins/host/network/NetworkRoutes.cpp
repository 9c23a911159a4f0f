// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/network/NetworkRoutes.h"

#include <linux/neighbour.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstddef>

#include "plugins/host/network/Netlink.h"
#include "plugins/host/network/NumberNames.h"

namespace Kestrel::Host {
namespace {

constexpr NumberName kTypes[] = {
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
};

constexpr NumberName kStates[] = {
    {NUD_NONE, "none"},     {NUD_INCOMPLETE, "incomplete"}, {NUD_REACHABLE, "reachable"},
    {NUD_STALE, "stale"},   {NUD_DELAY, "delay"},           {NUD_PROBE, "probe"},
    {NUD_FAILED, "failed"}, {NUD_NOARP, "noarp"},           {NUD_PERMANENT, "permanent"},
};

// RTA_GATEWAY has the address family of the route. RTA_VIA begins with the family of its address,
// which may be another one.
std::string GatewayText(const NetlinkAttributes& attributes) {
  if (attributes.Has(RTA_GATEWAY)) {
    return FormatAddress(attributes.Get(RTA_GATEWAY));
  }
  const std::string_view via = attributes.Get(RTA_VIA);
  constexpr std::size_t kFamilySize = sizeof(rtvia::rtvia_family);
  return via.size() > kFamilySize ? FormatAddress(via.substr(kFamilySize)) : std::string();
}

std::vector<NextHop> ParseNextHops(std::string_view bytes) {
  std::vector<NextHop> nextHops;
  while (bytes.size() >= sizeof(rtnexthop)) {
    rtnexthop fixed;
    bytes.copy(reinterpret_cast<char*>(&fixed), sizeof(fixed));
    if (fixed.rtnh_len < sizeof(fixed) || fixed.rtnh_len > bytes.size()) {
      break;
    }
    const NetlinkAttributes attributes(bytes.substr(sizeof(fixed), fixed.rtnh_len - sizeof(fixed)));
    nextHops.push_back({GatewayText(attributes), fixed.rtnh_ifindex, fixed.rtnh_hops + 1L});
    bytes.remove_prefix(std::min<std::size_t>(bytes.size(), RTNH_ALIGN(fixed.rtnh_len)));
  }
  return nextHops;
}

std::vector<NextHop> RouteNextHops(const NetlinkAttributes& attributes) {
  if (attributes.Has(RTA_MULTIPATH)) {
    return ParseNextHops(attributes.Get(RTA_MULTIPATH));
  }
  NextHop only;
  only.gateway = GatewayText(attributes);
  only.interfaceIndex = attributes.GetNumber(RTA_OIF);
  if (only.gateway.empty() && only.interfaceIndex == 0) {
    return {};
  }
  return {only};
}

// An absent address means the address whose bytes are all zero.
std::string DestinationText(const rtmsg& fixed, std::string_view bytes) {
  if (!bytes.empty()) {
    return FormatAddress(bytes);
  }
  if (fixed.rtm_dst_len == 0) {
    return "default";
  }
  return fixed.rtm_family == AF_INET ? "0.0.0.0" : "::";
}

NetworkRoute ParseRoute(const rtmsg& fixed, const NetlinkAttributes& attributes) {
  NetworkRoute route;
  route.family = FamilyNumber(fixed.rtm_family);
  route.destination = DestinationText(fixed, attributes.Get(RTA_DST));
  route.prefixLength = fixed.rtm_dst_len;
  route.source = FormatAddress(attributes.Get(RTA_PREFSRC));
  route.protocol = fixed.rtm_protocol;
  route.scope = fixed.rtm_scope;
  route.type = fixed.rtm_type;
  route.table = attributes.Has(RTA_TABLE) ? attributes.GetNumber(RTA_TABLE) : fixed.rtm_table;
  route.metric = attributes.GetNumber(RTA_PRIORITY);
  route.nextHops = RouteNextHops(attributes);
  return route;
}

NetworkNeighbor ParseNeighbor(const ndmsg& fixed, const NetlinkAttributes& attributes) {
  NetworkNeighbor neighbor;
  neighbor.family = FamilyNumber(fixed.ndm_family);
  neighbor.interfaceIndex = fixed.ndm_ifindex;
  neighbor.address = FormatAddress(attributes.Get(NDA_DST));
  neighbor.linkAddress = FormatLinkAddress(attributes.Get(NDA_LLADDR));
  neighbor.state = NameOf(kStates, fixed.ndm_state);
  neighbor.isRouter = (fixed.ndm_flags & NTF_ROUTER) != 0;
  return neighbor;
}

}  // namespace

std::string RouteTypeName(unsigned type) { return NameOf(kTypes, type); }

const WordSet& RouteTypeWords() {
  static const WordSet words = WordSet().Numbered(kTypes);
  return words;
}

const WordSet& NeighborStateWords() {
  static const WordSet words = WordSet().Numbered(kStates);
  return words;
}

std::vector<NetworkRoute> ParseRoutes(std::string_view answer) {
  std::vector<NetworkRoute> routes;
  ForEachNetlinkMessage(answer, [&routes](const NetlinkMessage& message) {
    rtmsg fixed;
    if (message.type == RTM_NEWROUTE && message.Read(fixed) &&
        FamilyNumber(fixed.rtm_family) != 0 && (fixed.rtm_flags & RTM_F_CLONED) == 0) {
      routes.push_back(ParseRoute(fixed, message.GetAttributes(sizeof(fixed))));
    }
  });
  return routes;
}

std::vector<NetworkRoute> ReadRoutes() {
  return ParseRoutes(DumpRoutingNetlink(RTM_GETROUTE, "network routes"));
}

std::vector<NetworkNeighbor> ParseNeighbors(std::string_view answer) {
  std::vector<NetworkNeighbor> neighbors;
  ForEachNetlinkMessage(answer, [&neighbors](const NetlinkMessage& message) {
    ndmsg fixed;
    if (message.type == RTM_NEWNEIGH && message.Read(fixed) &&
        FamilyNumber(fixed.ndm_family) != 0) {
      neighbors.push_back(ParseNeighbor(fixed, message.GetAttributes(sizeof(fixed))));
    }
  });
  return neighbors;
}

std::vector<NetworkNeighbor> ReadNeighbors() {
  return ParseNeighbors(DumpRoutingNetlink(RTM_GETNEIGH, "network neighbors"));
}

}  // namespace Kestrel::Host
