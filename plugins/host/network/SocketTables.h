// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Host {

/// One end of a TCP or UDP connection.
struct SocketEndpoint {
  std::string address;  ///< IPv4 or IPv6; empty for a local (Unix) socket.
  long port = 0;

  /// The end as "127.0.0.1:80" or "[::1]:80", with "*" for the port 0; empty without address.
  std::string ToText() const;
};

/// One socket of the host.
struct Socket {
  std::string protocol;  ///< "tcp", "udp" or "unix".
  std::string type;      ///< "stream", "datagram" or "seqpacket".
  std::string state;     ///< "listen", "established", ...
  long family = 0;       ///< 4 or 6; 0 for a local socket.
  SocketEndpoint local;
  SocketEndpoint remote;
  std::string path;       ///< Of a local socket; one in the abstract name space begins with '@'.
  long receiveQueue = 0;  ///< In bytes; of a listening socket, connections that wait.
  long sendQueue = 0;     ///< In bytes.
  long userId = -1;       ///< -1 where the kernel does not tell.
  long inode = 0;         ///< 0 once no process holds it any more.
};

/// The sockets in a table in the form of /proc/net/tcp, with that protocol ("tcp" or "udp") and
/// address family (4 or 6). Lines that are no sockets are left out.
std::vector<Socket> ParseInternetSockets(std::string_view table, const std::string& protocol,
                                         long family);
/// The sockets in a table in the form of /proc/net/unix.
std::vector<Socket> ParseUnixSockets(std::string_view table);

/// The sockets of every table in the folder, normally "/proc/net": tcp, tcp6, udp, udp6, unix. A
/// table that is missing adds none. Throws KestrelException when there is no table at all.
std::vector<Socket> ReadSockets(const std::string& folder);

/// The processes that hold each socket, by the socket's inode, found below `procFolder`. Processes
/// that went away or that the caller may not look into are left out.
std::map<long, std::vector<long>> ReadSocketOwners(const std::string& procFolder);

}  // namespace Kestrel::Host
