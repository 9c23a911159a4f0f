// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Host {

/// One way on which a route sends its packets.
struct NextHop {
  std::string gateway;  ///< Empty when the destination is reached without one.
  long interfaceIndex = 0;
  long weight = 1;
};

/// One entry of a routing table.
struct NetworkRoute {
  long family = 0;          ///< 4 or 6.
  std::string destination;  ///< "default", or an address without its prefix length.
  long prefixLength = 0;
  std::string source;  ///< The local address that it prefers; empty for none.
  std::string protocol;
  std::string scope;
  std::string type;  ///< "unicast", "local", "broadcast", "blackhole", ...
  long table = 0;
  long metric = 0;
  std::vector<NextHop> nextHops;  ///< None for a route that leads nowhere.
};

/// The IPv4 and IPv6 routes in an answer to RTM_GETROUTE, without those that the kernel merely
/// keeps for a while.
std::vector<NetworkRoute> ParseRoutes(std::string_view answer);
/// The host's routes of all tables. Throws KestrelException when the kernel refuses.
std::vector<NetworkRoute> ReadRoutes();

/// One entry of the table that tells which link-layer address a neighbor has.
struct NetworkNeighbor {
  long family = 0;  ///< 4 or 6.
  long interfaceIndex = 0;
  std::string address;
  std::string linkAddress;  ///< Empty while it is not known.
  std::string state;        ///< "reachable", "stale", ...
  bool isRouter = false;
};

/// The IPv4 and IPv6 neighbors in an answer to RTM_GETNEIGH.
std::vector<NetworkNeighbor> ParseNeighbors(std::string_view answer);
/// The host's neighbors. Throws KestrelException when the kernel refuses.
std::vector<NetworkNeighbor> ReadNeighbors();

}  // namespace Kestrel::Host
