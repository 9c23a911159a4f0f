// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "plugins/host/network/WordFilter.h"

namespace Kestrel::Host {

/// A next hop of a route.
struct NextHop {
  std::string gateway;  ///< Empty if the destination is on the link.
  long interfaceIndex = 0;
  long weight = 1;
};

/// An entry of a routing table.
struct NetworkRoute {
  long family = 0;          ///< 4 or 6.
  std::string destination;  ///< "default", or an address without its prefix length.
  long prefixLength = 0;
  std::string source;     ///< The preferred local address; may be empty.
  unsigned protocol = 0;  ///< RTPROT_...
  unsigned scope = 0;     ///< RT_SCOPE_...
  unsigned type = 0;      ///< RTN_...
  unsigned table = 0;     ///< RT_TABLE_..., or the number of another table.
  long metric = 0;
  std::vector<NextHop> nextHops;  ///< Empty for a route with neither gateway nor interface.
};

/// Returns the word for a type of route: "unicast", "local", "broadcast", "blackhole", ... or its
/// number.
std::string RouteTypeName(unsigned type);
/// Returns the words that a user may write for a type of route.
const WordSet& RouteTypeWords();

/// Parses the IPv4 and IPv6 routes in an answer to RTM_GETROUTE. Skips cached routes.
std::vector<NetworkRoute> ParseRoutes(std::string_view answer);
/// Returns the routes of all tables. Throws KestrelException if the request to the kernel fails.
std::vector<NetworkRoute> ReadRoutes();

/// An entry of the neighbor table, which maps addresses to link-layer addresses.
struct NetworkNeighbor {
  long family = 0;  ///< 4 or 6.
  long interfaceIndex = 0;
  std::string address;
  std::string linkAddress;  ///< Empty while it is unknown.
  std::string state;        ///< "reachable", "stale", ...
  bool isRouter = false;
};

/// Returns the words that a user may write for the state of a neighbor.
const WordSet& NeighborStateWords();

/// Parses the IPv4 and IPv6 neighbors in an answer to RTM_GETNEIGH.
std::vector<NetworkNeighbor> ParseNeighbors(std::string_view answer);
/// Returns the neighbors. Throws KestrelException if the request to the kernel fails.
std::vector<NetworkNeighbor> ReadNeighbors();

}  // namespace Kestrel::Host
