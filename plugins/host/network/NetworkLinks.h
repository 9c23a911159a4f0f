// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "plugins/host/network/WordFilter.h"

namespace Kestrel::Host {

/// Traffic of an interface in one direction.
struct LinkTraffic {
  long bytes = 0;
  long packets = 0;
  long errors = 0;
  long dropped = 0;
};

/// A network interface as described by the kernel.
struct NetworkLink {
  long index = 0;
  long masterIndex = 0;  ///< The index of its bridge or bond; 0 if there is none.
  long mtu = 0;          ///< In bytes.
  long queueLength = 0;  ///< In packets.
  unsigned flags = 0;    ///< IFF_ bits.
  std::string name;
  std::string type;  ///< The type of its link layer: "ether", "loopback", ... or a number.
  std::string
      kind;  ///< The kind of a virtual interface: "veth", "bridge", ...; empty for hardware.
  std::string state;  ///< "UP", "DOWN", "UNKNOWN", "LOWERLAYERDOWN", "DORMANT", ...
  std::string address;
  std::string broadcast;
  std::string queueing;  ///< The name of its queueing discipline.
  std::string alias;
  LinkTraffic received;
  LinkTraffic transmitted;
};

/// An IPv4 or IPv6 address of an interface.
struct NetworkAddress {
  long interfaceIndex = 0;
  long family = 0;  ///< 4 or 6.
  long prefixLength = 0;
  std::string address;
  std::string peer;  ///< The other end of a point-to-point link; otherwise empty.
  std::string broadcast;
  unsigned scope = 0;  ///< RT_SCOPE_...
  std::string label;
  long validSeconds = -1;      ///< -1 if it never expires.
  long preferredSeconds = -1;  ///< -1 if it is always preferred.
  std::vector<std::string> flags;
};

/// Parses the interfaces in an answer to RTM_GETLINK, in the order of the answer.
std::vector<NetworkLink> ParseLinks(std::string_view answer);
/// Parses the IPv4 and IPv6 addresses in an answer to RTM_GETADDR.
std::vector<NetworkAddress> ParseAddresses(std::string_view answer);

/// Returns the interfaces, sorted by index. Throws KestrelException if the request to the kernel
/// fails.
std::vector<NetworkLink> ReadLinks();
/// Returns the addresses, sorted by the index of their interface. Throws KestrelException if the
/// request to the kernel fails.
std::vector<NetworkAddress> ReadAddresses();

/// Returns the names of the flags, such as "UP" and "BROADCAST", in the order of their bits.
std::vector<std::string> LinkFlagNames(unsigned flags);

/// Returns the words that a user may write for the state of an interface.
const WordSet& LinkStateWords();

/// Maps indexes to names.
std::map<long, std::string> LinkNames(const std::vector<NetworkLink>& links);
/// Returns the name of an interface; "#7" if the interface with index 7 no longer exists; "none"
/// for 0.
std::string LinkName(const std::map<long, std::string>& names, long index);

}  // namespace Kestrel::Host
