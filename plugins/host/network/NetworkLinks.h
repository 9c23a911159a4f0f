// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Host {

/// What an interface has carried since it came up, in one direction.
struct LinkTraffic {
  long bytes = 0;
  long packets = 0;
  long errors = 0;
  long dropped = 0;
};

/// One network interface as the kernel describes it.
struct NetworkLink {
  long index = 0;
  long masterIndex = 0;  ///< The bridge or bond that it belongs to, 0 for none.
  long mtu = 0;          ///< In bytes.
  long queueLength = 0;  ///< In packets.
  unsigned flags = 0;    ///< IFF_ bits.
  std::string name;
  std::string type;   ///< Of its link layer: "ether", "loopback", ... or a number.
  std::string kind;   ///< Of a virtual interface: "veth", "bridge", ...; empty for a device.
  std::string state;  ///< "UP", "DOWN", "UNKNOWN", "LOWERLAYERDOWN", "DORMANT", ...
  std::string address;
  std::string broadcast;
  std::string queueing;  ///< The name of its queueing discipline.
  std::string alias;
  LinkTraffic received;
  LinkTraffic transmitted;
};

/// One IPv4 or IPv6 address of an interface.
struct NetworkAddress {
  long interfaceIndex = 0;
  long family = 0;  ///< 4 or 6.
  long prefixLength = 0;
  std::string address;
  std::string peer;  ///< The other end of a point-to-point link; empty for none.
  std::string broadcast;
  std::string scope;
  std::string label;
  long validSeconds = -1;      ///< -1 when it does not expire.
  long preferredSeconds = -1;  ///< -1 when it stays preferred.
  std::vector<std::string> flags;
};

/// The interfaces in an answer to RTM_GETLINK, in the order of the answer.
std::vector<NetworkLink> ParseLinks(std::string_view answer);
/// The IPv4 and IPv6 addresses in an answer to RTM_GETADDR.
std::vector<NetworkAddress> ParseAddresses(std::string_view answer);

/// The host's interfaces, ascending by index. Throws KestrelException when the kernel refuses.
std::vector<NetworkLink> ReadLinks();
/// The host's addresses, ascending by the index of their interface. Throws KestrelException when
/// the kernel refuses.
std::vector<NetworkAddress> ReadAddresses();

/// The names of an interface's flags, such as "UP" and "BROADCAST", in the order of their bits.
std::vector<std::string> LinkFlagNames(unsigned flags);

/// The names of the interfaces by index.
std::map<long, std::string> LinkNames(const std::vector<NetworkLink>& links);
/// The name of the interface of that index: "#7" for one that went away, empty for index 0.
std::string LinkName(const std::map<long, std::string>& names, long index);

/// The name of an address's or a route's scope: "global", "site", "link", "host", "nowhere" or a
/// number.
std::string ScopeName(unsigned scope);

}  // namespace Kestrel::Host
