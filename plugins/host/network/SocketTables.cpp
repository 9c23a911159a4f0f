// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The tables below /proc/net have a line for each socket, whose columns are separated by spaces.
//
//   tcp, udp:  "0: 0100007F:0050 00000000:0000 0A 00000000:00000000 00:00000000 00000000 0 0 1234
//   ..."
//              number, local endpoint, remote endpoint, state, send and receive queue, timer,
//              retransmits, user, probes, inode. An address consists of groups of four bytes, each
//              written as a hexadecimal number in the byte order of the host.
//   unix:      "0000000000000000: 00000002 00000000 00010000 0001 01 1234 /run/path"
//              address, references, protocol, flags, type, state, inode, path. The path follows the
//              inode and one space; it may contain spaces and line feeds.

#include "plugins/host/network/SocketTables.h"

#include <kestrel/KestrelException.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <utility>

#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/TextParsing.h"
#include "plugins/host/network/Netlink.h"

namespace Kestrel::Host {
namespace {

template <typename Number>
bool ReadNumber(std::string_view text, int base, Number& number) {
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number, base);
  return !text.empty() && result.ec == std::errc() && result.ptr == end;
}

// Removes the next word and one space after it.
std::string_view TakeWord(std::string_view& line) {
  line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
  const std::string_view word = line.substr(0, line.find(' '));
  line.remove_prefix(std::min(word.size() + 1, line.size()));
  return word;
}

// Removes the next line with its line feed.
std::string_view TakeLine(std::string_view& table) {
  const std::string_view line = table.substr(0, table.find('\n'));
  table.remove_prefix(std::min(line.size() + 1, table.size()));
  return line;
}

bool ReadPair(std::string_view word, std::string_view& first, std::string_view& second) {
  const std::size_t colon = word.find(':');
  if (colon == std::string_view::npos) {
    return false;
  }
  first = word.substr(0, colon);
  second = word.substr(colon + 1);
  return true;
}

bool ReadAddress(std::string_view digits, std::string& address) {
  constexpr std::size_t kGroupDigits = 8;
  if (digits.size() != kGroupDigits && digits.size() != 4 * kGroupDigits) {
    return false;
  }
  std::string bytes;
  for (; !digits.empty(); digits.remove_prefix(kGroupDigits)) {
    std::uint32_t group = 0;
    if (!ReadNumber(digits.substr(0, kGroupDigits), 16, group)) {
      return false;
    }
    std::array<char, sizeof(group)> raw;
    std::memcpy(raw.data(), &group, sizeof(group));
    bytes.append(raw.data(), raw.size());
  }
  address = FormatAddress(bytes);
  return true;
}

bool ReadEnd(std::string_view word, SocketEndpoint& end) {
  std::string_view address;
  std::string_view port;
  return ReadPair(word, address, port) && ReadAddress(address, end.address) &&
         ReadNumber(port, 16, end.port);
}

std::string InternetStateName(const std::string& protocol, unsigned state) {
  static constexpr const char* kStates[] = {
      "unknown",    "established", "syn-sent",    "syn-received", "fin-wait-1",
      "fin-wait-2", "time-wait",   "closed",      "close-wait",   "last-ack",
      "listen",     "closing",     "syn-received"};
  constexpr unsigned kClosed = 7;
  if (protocol == "udp" && state == kClosed) {
    return "unconnected";
  }
  return state < std::size(kStates) ? kStates[state] : kStates[0];
}

bool ParseInternetLine(std::string_view line, Socket& socket) {
  TakeWord(line);
  if (!ReadEnd(TakeWord(line), socket.local) || !ReadEnd(TakeWord(line), socket.remote)) {
    return false;
  }
  unsigned state = 0;
  std::string_view sendQueue;
  std::string_view receiveQueue;
  if (!ReadNumber(TakeWord(line), 16, state) ||
      !ReadPair(TakeWord(line), sendQueue, receiveQueue) ||
      !ReadNumber(sendQueue, 16, socket.sendQueue) ||
      !ReadNumber(receiveQueue, 16, socket.receiveQueue)) {
    return false;
  }
  socket.state = InternetStateName(socket.protocol, state);
  TakeWord(line);  // timer
  TakeWord(line);  // retransmits
  const std::string_view user = TakeWord(line);
  TakeWord(line);  // probes
  return ReadNumber(user, 10, socket.userId) && ReadNumber(TakeWord(line), 10, socket.inode);
}

std::string UnixTypeName(unsigned type) {
  switch (type) {
    case 1:
      return "stream";
    case 2:
      return "datagram";
    case 5:
      return "seqpacket";
    default:
      return std::to_string(type);
  }
}

std::string UnixStateName(unsigned flags, unsigned state) {
  static constexpr const char* kStates[] = {"unknown", "unconnected", "connecting", "connected",
                                            "disconnecting"};
  constexpr unsigned kListens = 0x10000;
  if ((flags & kListens) != 0) {
    return "listen";
  }
  return state < std::size(kStates) ? kStates[state] : kStates[0];
}

bool ParseUnixLine(std::string_view line, Socket& socket) {
  const std::string_view address = TakeWord(line);
  if (address.empty() || address.back() != ':') {
    return false;
  }
  std::uint64_t place = 0;
  unsigned count = 0;
  unsigned flags = 0;
  unsigned type = 0;
  unsigned state = 0;
  if (!ReadNumber(address.substr(0, address.size() - 1), 16, place) ||
      !ReadNumber(TakeWord(line), 16, count) || !ReadNumber(TakeWord(line), 16, count) ||
      !ReadNumber(TakeWord(line), 16, flags) || !ReadNumber(TakeWord(line), 16, type) ||
      !ReadNumber(TakeWord(line), 16, state) || !ReadNumber(TakeWord(line), 10, socket.inode)) {
    return false;
  }
  socket.protocol = "unix";
  socket.type = UnixTypeName(type);
  socket.state = UnixStateName(flags, state);
  socket.path = line;
  return true;
}

struct InternetTable {
  const char* name;
  const char* protocol;
  long family;
};

constexpr InternetTable kInternetTables[] = {
    {"tcp", "tcp", 4}, {"tcp6", "tcp", 6}, {"udp", "udp", 4}, {"udp6", "udp", 6}};

void Append(std::vector<Socket>&& more, std::vector<Socket>& sockets) {
  std::move(more.begin(), more.end(), std::back_inserter(sockets));
}

// Parses the inode in the target of a link to a socket, "socket:[1234]".
bool ReadSocketInode(std::string_view target, long& inode) {
  constexpr std::string_view kPrefix = "socket:[";
  return StartsWith(target, kPrefix) && target.size() > kPrefix.size() && target.back() == ']' &&
         ReadNumber(target.substr(kPrefix.size(), target.size() - kPrefix.size() - 1), 10, inode);
}

void CollectOwnedSockets(const std::string& folder, long processId,
                         std::map<long, std::vector<long>>& owners) {
  for (const std::string& name : ListFolder(folder)) {
    const auto target = ReadLink(folder + "/" + name);
    long inode = 0;
    if (!target || !ReadSocketInode(*target, inode)) {
      continue;
    }
    std::vector<long>& processes = owners[inode];
    if (processes.empty() || processes.back() != processId) {
      processes.push_back(processId);
    }
  }
}

}  // namespace

std::string SocketEndpoint::ToText() const {
  if (address.empty()) {
    return std::string();
  }
  const std::string portText = port == 0 ? "*" : std::to_string(port);
  const bool isVersion6 = address.find(':') != std::string::npos;
  return (isVersion6 ? "[" + address + "]" : address) + ":" + portText;
}

std::vector<Socket> ParseInternetSockets(std::string_view table, const std::string& protocol,
                                         long family) {
  std::vector<Socket> sockets;
  while (!table.empty()) {
    Socket socket;
    socket.protocol = protocol;
    socket.type = protocol == "tcp" ? "stream" : "datagram";
    socket.family = family;
    if (ParseInternetLine(TakeLine(table), socket)) {
      sockets.push_back(std::move(socket));
    }
  }
  return sockets;
}

std::vector<Socket> ParseUnixSockets(std::string_view table) {
  std::vector<Socket> sockets;
  while (!table.empty()) {
    const std::string_view line = TakeLine(table);
    Socket socket;
    if (ParseUnixLine(line, socket)) {
      sockets.push_back(std::move(socket));
    } else if (!sockets.empty()) {
      // The rest of a path that contains a line feed.
      sockets.back().path.append("\n").append(line);
    }
  }
  return sockets;
}

std::vector<Socket> ReadSockets(const std::string& folder) {
  std::vector<Socket> sockets;
  bool isAnyThere = false;
  for (const InternetTable& table : kInternetTables) {
    if (const auto text = ReadFile(folder + "/" + table.name)) {
      isAnyThere = true;
      Append(ParseInternetSockets(*text, table.protocol, table.family), sockets);
    }
  }
  if (const auto text = ReadFile(folder + "/unix")) {
    isAnyThere = true;
    Append(ParseUnixSockets(*text), sockets);
  }
  if (!isAnyThere) {
    throw KestrelException("Unable to read any table of connections in " + folder);
  }
  return sockets;
}

std::map<long, std::vector<long>> ReadSocketOwners(const std::string& procFolder) {
  std::map<long, std::vector<long>> owners;
  for (const std::string& name : ListFolder(procFolder)) {
    long processId = 0;
    if (ReadNumber(name, 10, processId)) {
      CollectOwnedSockets(procFolder + "/" + name + "/fd", processId, owners);
    }
  }
  for (auto& [inode, processes] : owners) {
    std::sort(processes.begin(), processes.end());
  }
  return owners;
}

}  // namespace Kestrel::Host
