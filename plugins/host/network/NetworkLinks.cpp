// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/network/NetworkLinks.h"

#include <linux/if.h>
#include <linux/if_addr.h>
#include <linux/if_arp.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstdint>
#include <limits>

#include "plugins/host/network/Netlink.h"
#include "plugins/host/network/NumberNames.h"

namespace Kestrel::Host {
namespace {

constexpr NumberName kLinkFlags[] = {
    {IFF_UP, "UP"},
    {IFF_BROADCAST, "BROADCAST"},
    {IFF_DEBUG, "DEBUG"},
    {IFF_LOOPBACK, "LOOPBACK"},
    {IFF_POINTOPOINT, "POINTOPOINT"},
    {IFF_NOTRAILERS, "NOTRAILERS"},
    {IFF_RUNNING, "RUNNING"},
    {IFF_NOARP, "NOARP"},
    {IFF_PROMISC, "PROMISC"},
    {IFF_ALLMULTI, "ALLMULTI"},
    {IFF_MASTER, "MASTER"},
    {IFF_SLAVE, "SLAVE"},
    {IFF_MULTICAST, "MULTICAST"},
    {IFF_PORTSEL, "PORTSEL"},
    {IFF_AUTOMEDIA, "AUTOMEDIA"},
    {IFF_DYNAMIC, "DYNAMIC"},
    {IFF_LOWER_UP, "LOWER_UP"},
    {IFF_DORMANT, "DORMANT"},
    {IFF_ECHO, "ECHO"},
};

constexpr NumberName kAddressFlags[] = {
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

constexpr NumberName kLinkTypes[] = {
    {ARPHRD_ETHER, "ether"}, {ARPHRD_LOOPBACK, "loopback"},
    {ARPHRD_PPP, "ppp"},     {ARPHRD_INFINIBAND, "infiniband"},
    {ARPHRD_TUNNEL, "ipip"}, {ARPHRD_TUNNEL6, "tunnel6"},
    {ARPHRD_SIT, "sit"},     {ARPHRD_IPGRE, "gre"},
    {ARPHRD_NONE, "none"},
};

constexpr NumberName kOperationalStates[] = {
    {IF_OPER_UNKNOWN, "UNKNOWN"}, {IF_OPER_NOTPRESENT, "NOTPRESENT"},
    {IF_OPER_DOWN, "DOWN"},       {IF_OPER_LOWERLAYERDOWN, "LOWERLAYERDOWN"},
    {IF_OPER_TESTING, "TESTING"}, {IF_OPER_DORMANT, "DORMANT"},
    {IF_OPER_UP, "UP"},
};

std::string OperationalState(std::string_view attribute) {
  return NameOf(kOperationalStates,
                attribute.empty() ? 0 : static_cast<unsigned char>(attribute[0]));
}

// The kernel's counters are unsigned. A value too large for a long becomes the largest long.
long CounterValue(std::uint64_t count) {
  constexpr std::uint64_t kMax = std::numeric_limits<long>::max();
  return static_cast<long>(std::min(count, kMax));
}

void ReadTraffic(std::string_view attribute, NetworkLink& link) {
  // Newer kernels append fields. Those that an older kernel does not send remain 0.
  rtnl_link_stats64 counters = {};
  attribute.copy(reinterpret_cast<char*>(&counters), sizeof(counters));
  link.received = {CounterValue(counters.rx_bytes), CounterValue(counters.rx_packets),
                   CounterValue(counters.rx_errors), CounterValue(counters.rx_dropped)};
  link.transmitted = {CounterValue(counters.tx_bytes), CounterValue(counters.tx_packets),
                      CounterValue(counters.tx_errors), CounterValue(counters.tx_dropped)};
}

// The link-layer addresses of IP tunnels are IP addresses.
std::string LinkAddress(unsigned type, std::string_view bytes) {
  const bool isTunnel =
      type == ARPHRD_TUNNEL || type == ARPHRD_TUNNEL6 || type == ARPHRD_SIT || type == ARPHRD_IPGRE;
  return isTunnel ? FormatAddress(bytes) : FormatLinkAddress(bytes);
}

NetworkLink ParseLink(const ifinfomsg& fixed, const NetlinkAttributes& attributes) {
  NetworkLink link;
  link.index = fixed.ifi_index;
  link.masterIndex = attributes.GetNumber(IFLA_MASTER);
  link.mtu = attributes.GetNumber(IFLA_MTU);
  link.queueLength = attributes.GetNumber(IFLA_TXQLEN);
  link.flags = fixed.ifi_flags;
  link.name = attributes.GetString(IFLA_IFNAME);
  link.type = NameOf(kLinkTypes, fixed.ifi_type);
  link.kind = NetlinkAttributes(attributes.Get(IFLA_LINKINFO)).GetString(IFLA_INFO_KIND);
  link.state = OperationalState(attributes.Get(IFLA_OPERSTATE));
  link.address = LinkAddress(fixed.ifi_type, attributes.Get(IFLA_ADDRESS));
  link.broadcast = LinkAddress(fixed.ifi_type, attributes.Get(IFLA_BROADCAST));
  link.queueing = attributes.GetString(IFLA_QDISC);
  link.alias = attributes.GetString(IFLA_IFALIAS);
  ReadTraffic(attributes.Get(IFLA_STATS64), link);
  return link;
}

long LifetimeSeconds(std::uint32_t seconds) {
  return seconds == std::numeric_limits<std::uint32_t>::max() ? -1 : static_cast<long>(seconds);
}

// The same bit means "temporary" for IPv6 and "secondary" for IPv4.
std::vector<std::string> AddressFlagNames(long family, unsigned flags) {
  std::vector<std::string> names = NamesOfBits(kAddressFlags, flags);
  if ((flags & IFA_F_SECONDARY) != 0) {
    names.emplace_back(family == 6 ? "temporary" : "secondary");
  }
  if ((flags & IFA_F_PERMANENT) == 0) {
    names.emplace_back("dynamic");
  }
  return names;
}

NetworkAddress ParseAddress(const ifaddrmsg& fixed, const NetlinkAttributes& attributes) {
  NetworkAddress address;
  address.interfaceIndex = fixed.ifa_index;
  address.family = FamilyNumber(fixed.ifa_family);
  address.prefixLength = fixed.ifa_prefixlen;
  address.scope = fixed.ifa_scope;
  address.label = attributes.GetString(IFA_LABEL);
  address.broadcast = FormatAddress(attributes.Get(IFA_BROADCAST));
  const std::string other = FormatAddress(attributes.Get(IFA_ADDRESS));
  const std::string local = FormatAddress(attributes.Get(IFA_LOCAL));
  address.address = local.empty() ? other : local;
  address.peer = address.address == other ? std::string() : other;
  ifa_cacheinfo lifetimes = {};
  const std::string_view bytes = attributes.Get(IFA_CACHEINFO);
  if (bytes.size() >= sizeof(lifetimes)) {
    bytes.copy(reinterpret_cast<char*>(&lifetimes), sizeof(lifetimes));
    address.validSeconds = LifetimeSeconds(lifetimes.ifa_valid);
    address.preferredSeconds = LifetimeSeconds(lifetimes.ifa_prefered);
  }
  const unsigned flags =
      attributes.Has(IFA_FLAGS) ? attributes.GetNumber(IFA_FLAGS) : fixed.ifa_flags;
  address.flags = AddressFlagNames(address.family, flags);
  return address;
}

}  // namespace

std::vector<NetworkLink> ParseLinks(std::string_view answer) {
  std::vector<NetworkLink> links;
  ForEachNetlinkMessage(answer, [&links](const NetlinkMessage& message) {
    ifinfomsg fixed;
    if (message.type == RTM_NEWLINK && message.Read(fixed)) {
      links.push_back(ParseLink(fixed, message.GetAttributes(sizeof(fixed))));
    }
  });
  return links;
}

std::vector<NetworkAddress> ParseAddresses(std::string_view answer) {
  std::vector<NetworkAddress> addresses;
  ForEachNetlinkMessage(answer, [&addresses](const NetlinkMessage& message) {
    ifaddrmsg fixed;
    if (message.type == RTM_NEWADDR && message.Read(fixed) && FamilyNumber(fixed.ifa_family) != 0) {
      addresses.push_back(ParseAddress(fixed, message.GetAttributes(sizeof(fixed))));
    }
  });
  return addresses;
}

std::vector<NetworkLink> ReadLinks() {
  std::vector<NetworkLink> links =
      ParseLinks(DumpRoutingNetlink(RTM_GETLINK, "network interfaces"));
  std::sort(links.begin(), links.end(), [](const NetworkLink& left, const NetworkLink& right) {
    return left.index < right.index;
  });
  return links;
}

std::vector<NetworkAddress> ReadAddresses() {
  std::vector<NetworkAddress> addresses =
      ParseAddresses(DumpRoutingNetlink(RTM_GETADDR, "network addresses"));
  std::stable_sort(addresses.begin(), addresses.end(),
                   [](const NetworkAddress& left, const NetworkAddress& right) {
                     return left.interfaceIndex < right.interfaceIndex;
                   });
  return addresses;
}

std::vector<std::string> LinkFlagNames(unsigned flags) { return NamesOfBits(kLinkFlags, flags); }

const WordSet& LinkStateWords() {
  static const WordSet words = WordSet().Numbered(kOperationalStates);
  return words;
}

std::map<long, std::string> LinkNames(const std::vector<NetworkLink>& links) {
  std::map<long, std::string> names;
  for (const NetworkLink& link : links) {
    names[link.index] = link.name;
  }
  return names;
}

std::string LinkName(const std::map<long, std::string>& names, long index) {
  if (index == 0) {
    return "none";
  }
  const auto found = names.find(index);
  return found == names.end() ? "#" + std::to_string(index) : found->second;
}

}  // namespace Kestrel::Host
