// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The sockets are requested through netlink (SOCK_DIAG), which takes the kernel about a third of
// the time that it needs to write its tables below /proc/net. Where the answer, called the
// diagnosis here, differs from the tables, the result is that of the tables:
//
// - For a listening socket, the diagnosis reports in the send queue how many connections may wait,
//   and the tables report 0.
// - For a half-open connection, the diagnosis reports the user 0, and the tables report the user of
//   the listening socket. Such a connection is recognized by its lack of a shutdown state: it is
//   not a socket yet.
// - Sockets that are bound, but neither listen nor connect, are only in the diagnosis, with a state
//   of their own.

#include "plugins/host/network/InternetSockets.h"

#include <arpa/inet.h>
#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/sock_diag.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <iterator>
#include <map>
#include <utility>

#include "plugins/host/frame/HostFile.h"
#include "plugins/host/network/Netlink.h"

namespace Kestrel::Host {
namespace {

// The state of a half-open connection. The headers of the C library do not define its number.
constexpr unsigned kNewSynReceived = 12;
constexpr std::uint32_t kStatesOfTables = (2u << kNewSynReceived) - (1u << TCP_ESTABLISHED);

using Bytes = std::string_view;

SocketEndpoint ToEndpoint(unsigned family, const __be32 (&address)[4], __be16 port) {
  const Bytes bytes(reinterpret_cast<const char*>(address), family == AF_INET ? 4 : 16);
  return {FormatAddress(bytes), ntohs(port)};
}

Socket ToSocket(const inet_diag_msg& fixed, const std::string& protocol) {
  Socket socket = NewInternetSocket(protocol, FamilyNumber(fixed.idiag_family));
  socket.state = InternetStateName(protocol, fixed.idiag_state);
  socket.local = ToEndpoint(fixed.idiag_family, fixed.id.idiag_src, fixed.id.idiag_sport);
  socket.remote = ToEndpoint(fixed.idiag_family, fixed.id.idiag_dst, fixed.id.idiag_dport);
  socket.receiveQueue = fixed.idiag_rqueue;
  socket.sendQueue = fixed.idiag_state == TCP_LISTEN ? 0 : fixed.idiag_wqueue;
  socket.userId = fixed.idiag_uid;
  socket.inode = fixed.idiag_inode;
  return socket;
}

// Returns the local addresses at which a listening socket accepts connections to `address`, the
// most specific first.
std::vector<std::string> AcceptingAddresses(long family, const std::string& address) {
  if (family == 4) {
    return {address, "0.0.0.0"};
  }
  constexpr std::string_view kMapped = "::ffff:";
  if (address.compare(0, kMapped.size(), kMapped) == 0) {
    return {address, "::ffff:0.0.0.0", "::"};
  }
  return {address, "::"};
}

/// Finds the user of a half-open connection, which is the user of the listening socket.
class Listeners {
 public:
  void Add(const Socket& socket) {
    users_[{socket.local.port, socket.local.address}] = socket.userId;
  }

  /// Returns -1 if no socket listens on the connection's address and port any more.
  long GetUser(const Socket& halfOpen) const {
    for (const std::string& address : AcceptingAddresses(halfOpen.family, halfOpen.local.address)) {
      const auto found = users_.find({halfOpen.local.port, address});
      if (found != users_.end()) {
        return found->second;
      }
    }
    return -1;
  }

 private:
  std::map<std::pair<long, std::string>, long> users_;
};

bool IsHalfOpen(const inet_diag_msg& fixed, const NetlinkMessage& message) {
  return fixed.idiag_state == TCP_SYN_RECV &&
         !message.GetAttributes(sizeof(fixed)).Has(INET_DIAG_SHUTDOWN);
}

// Whether an error means that the kernel or a sandbox does not answer such requests. Other errors,
// such as too many open files, mean that this request failed.
bool MeansNoDiagnosis(int error) {
  constexpr int kErrors[] = {ENOENT, EPROTONOSUPPORT, EAFNOSUPPORT, ESOCKTNOSUPPORT, EOPNOTSUPP,
                             ENOSYS, ECONNREFUSED,    EINVAL,       EACCES,          EPERM};
  return std::find(std::begin(kErrors), std::end(kErrors), error) != std::end(kErrors);
}

std::vector<Socket> AskKernel(const std::string& protocol, long family) {
  inet_diag_req_v2 request = {};
  request.sdiag_family = family == 4 ? AF_INET : AF_INET6;
  request.sdiag_protocol = protocol == "tcp" ? IPPROTO_TCP : IPPROTO_UDP;
  request.idiag_states = kStatesOfTables;
  const std::string body(reinterpret_cast<const char*>(&request), sizeof(request));
  return ParseInternetDiagnosis(
      DumpNetlink({NETLINK_SOCK_DIAG, SOCK_DIAG_BY_FAMILY, body}, protocol + " sockets"), protocol);
}

// Returns no sockets for IPv6 if the kernel does not support it and so has no table for it.
std::vector<Socket> ReadTable(const std::string& folder, const std::string& protocol, long family) {
  const std::string path = folder + "/" + protocol;
  if (family == 4) {
    return ParseInternetSockets(ReadRequiredFile(path), protocol, family);
  }
  const auto table = ReadOptionalFile(path + "6");
  return table ? ParseInternetSockets(*table, protocol, family) : std::vector<Socket>();
}

}  // namespace

std::vector<Socket> ParseInternetDiagnosis(std::string_view answer, const std::string& protocol) {
  std::vector<Socket> sockets;
  std::vector<std::size_t> halfOpen;
  Listeners listeners;
  ForEachNetlinkMessage(answer, [&](const NetlinkMessage& message) {
    inet_diag_msg fixed;
    if (message.type != SOCK_DIAG_BY_FAMILY || !message.Read(fixed) ||
        FamilyNumber(fixed.idiag_family) == 0) {
      return;
    }
    if (IsHalfOpen(fixed, message)) {
      halfOpen.push_back(sockets.size());
    }
    sockets.push_back(ToSocket(fixed, protocol));
    if (fixed.idiag_state == TCP_LISTEN) {
      listeners.Add(sockets.back());
    }
  });
  for (const std::size_t index : halfOpen) {
    sockets[index].userId = listeners.GetUser(sockets[index]);
  }
  return sockets;
}

std::vector<Socket> ReadInternetSockets(const std::string& folder, const std::string& protocol,
                                        long family) {
  try {
    return AskKernel(protocol, family);
  } catch (const NetlinkError& error) {
    if (!MeansNoDiagnosis(error.GetNumber())) {
      throw;
    }
  }
  return ReadTable(folder, protocol, family);
}

}  // namespace Kestrel::Host
