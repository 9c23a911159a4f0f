// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Host {

/// One end of a socket: the address and port of a TCP or UDP socket.
struct SocketEndpoint {
  std::string address;  ///< IPv4 or IPv6; empty for a Unix socket, which has no address.
  long port = 0;

  /// Formats the endpoint as "127.0.0.1:80" or "[::1]:80"; the port 0 is "*". Empty without an
  /// address.
  std::string ToString() const;
};

/// A socket.
struct Socket {
  std::string protocol;  ///< "tcp", "udp" or "unix".
  std::string type;      ///< "stream", "datagram" or "seqpacket".
  std::string state;     ///< "listen", "established", ...
  long family = 0;       ///< 4 or 6; 0 for a Unix socket.
  SocketEndpoint local;
  SocketEndpoint remote;
  std::string path;        ///< The path of a Unix socket; "@" precedes an abstract name.
  std::string remotePath;  ///< The path of the socket that a Unix socket is connected to.
  long receiveQueue = 0;   ///< In bytes; for a listening socket, the number of waiting connections.
  long sendQueue = 0;  ///< In bytes; for a listening Unix socket, the limit of waiting connections.
  long userId = -1;    ///< -1 if the kernel does not report it.
  long inode = 0;      ///< 0 if no process has the socket open.
};

/// Returns a socket with this protocol ("tcp" or "udp"), the type that belongs to it, and this
/// address family (4 or 6). All other members have their default values.
Socket NewInternetSocket(const std::string& protocol, long family);

/// Returns the name of the state that the kernel reports as the number `state` for a socket of this
/// protocol ("tcp" or "udp"); "unknown" if the number has no name.
std::string InternetStateName(const std::string& protocol, unsigned state);

/// Parses a table in the format of /proc/net/tcp for a protocol ("tcp" or "udp") and an address
/// family (4 or 6). Skips the heading and damaged lines.
std::vector<Socket> ParseInternetSockets(std::string_view table, const std::string& protocol,
                                         long family);

}  // namespace Kestrel::Host
