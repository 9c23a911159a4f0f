// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The sockets are requested through netlink. In /proc/net/unix, a line feed in the name of a socket
// would start another line, which could look like another socket.

#include "plugins/host/network/UnixSockets.h"

#include <linux/netlink.h>
#include <linux/sock_diag.h>
#include <linux/unix_diag.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <map>
#include <string>

#include "plugins/host/network/Netlink.h"
#include "plugins/host/network/NumberNames.h"

namespace Kestrel::Host {
namespace {

// Missing in the headers of older kernels.
constexpr unsigned kUidAttribute = UNIX_DIAG_SHUTDOWN + 1;
constexpr std::uint32_t kShowUid = 0x40;

constexpr NumberName kTypes[] = {
    {SOCK_STREAM, "stream"}, {SOCK_DGRAM, "datagram"}, {SOCK_SEQPACKET, "seqpacket"}};

// The kernel uses the states of TCP for Unix sockets too.
constexpr NumberName kStates[] = {
    {TCP_ESTABLISHED, "connected"}, {TCP_CLOSE, "unconnected"}, {TCP_LISTEN, "listen"}};

// Formats a name. An abstract name starts with NUL; the name of a file may end with one.
std::string NameText(std::string_view name) {
  if (name.empty() || name[0] != '\0') {
    return std::string(name.substr(0, name.find('\0')));
  }
  return "@" + std::string(name.substr(1));
}

void ReadQueues(std::string_view attribute, Socket& socket) {
  unix_diag_rqlen queues = {};
  attribute.copy(reinterpret_cast<char*>(&queues), sizeof(queues));
  socket.receiveQueue = queues.udiag_rqueue;
  socket.sendQueue = queues.udiag_wqueue;
}

Socket ParseSocket(const unix_diag_msg& fixed, const NetlinkAttributes& attributes) {
  Socket socket;
  socket.protocol = "unix";
  socket.type = NameOf(kTypes, fixed.udiag_type);
  socket.state = NameOf(kStates, fixed.udiag_state);
  socket.path = NameText(attributes.Get(UNIX_DIAG_NAME));
  socket.inode = fixed.udiag_ino;
  ReadQueues(attributes.Get(UNIX_DIAG_RQLEN), socket);
  if (attributes.Has(kUidAttribute)) {
    socket.userId = attributes.GetNumber(kUidAttribute);
  }
  return socket;
}

}  // namespace

std::vector<Socket> ParseUnixSockets(std::string_view answer) {
  std::vector<Socket> sockets;
  std::vector<long> remoteInodes;
  std::map<long, std::string> paths;
  ForEachNetlinkMessage(answer, [&](const NetlinkMessage& message) {
    unix_diag_msg fixed;
    if (message.type == SOCK_DIAG_BY_FAMILY && message.Read(fixed) &&
        fixed.udiag_family == AF_UNIX) {
      const NetlinkAttributes attributes = message.GetAttributes(sizeof(fixed));
      sockets.push_back(ParseSocket(fixed, attributes));
      remoteInodes.push_back(attributes.GetNumber(UNIX_DIAG_PEER));
      paths[sockets.back().inode] = sockets.back().path;
    }
  });
  for (std::size_t index = 0; index < sockets.size(); ++index) {
    const auto remote = paths.find(remoteInodes[index]);
    sockets[index].remotePath = remote == paths.end() ? std::string() : remote->second;
  }
  return sockets;
}

std::vector<Socket> ReadUnixSockets() {
  unix_diag_req request = {};
  request.sdiag_family = AF_UNIX;
  request.udiag_states = ~std::uint32_t{0};
  request.udiag_show = UDIAG_SHOW_NAME | UDIAG_SHOW_PEER | UDIAG_SHOW_RQLEN | kShowUid;
  const std::string body(reinterpret_cast<const char*>(&request), sizeof(request));
  return ParseUnixSockets(
      DumpNetlink({NETLINK_SOCK_DIAG, SOCK_DIAG_BY_FAMILY, body}, "Unix sockets"));
}

}  // namespace Kestrel::Host
