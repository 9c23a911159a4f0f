// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The tables below /proc/net have a line for each socket:
//
//   0: 0100007F:0050 00000000:0000 0A 00000000:00000000 00:00000000 00000000 0 0 1234 ...
//
// The columns are separated by spaces: number, local endpoint, remote endpoint, state, send and
// receive queue, timer, retransmits, user, probes, inode. An address consists of groups of four
// bytes, each written as a hexadecimal number in the byte order of the host.

#include "plugins/host/network/SocketTables.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <utility>

#include "plugins/host/network/Netlink.h"

namespace Kestrel::Host {
namespace {

template <typename Number>
bool ReadNumber(std::string_view text, int base, Number& number) {
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number, base);
  return !text.empty() && result.ec == std::errc() && result.ptr == end;
}

// Removes and returns the next word. Also removes the spaces before it and one space after it.
std::string_view TakeWord(std::string_view& line) {
  line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
  const std::string_view word = line.substr(0, line.find(' '));
  line.remove_prefix(std::min(word.size() + 1, line.size()));
  return word;
}

// Removes the next line with its line feed, and returns it without the line feed.
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

}  // namespace

std::string SocketEndpoint::ToString() const {
  if (address.empty()) {
    return std::string();
  }
  const std::string portText = port == 0 ? "*" : std::to_string(port);
  const bool isVersion6 = address.find(':') != std::string::npos;
  return (isVersion6 ? "[" + address + "]" : address) + ":" + portText;
}

Socket NewInternetSocket(const std::string& protocol, long family) {
  Socket socket;
  socket.protocol = protocol;
  socket.type = protocol == "tcp" ? "stream" : "datagram";
  socket.family = family;
  return socket;
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

std::vector<Socket> ParseInternetSockets(std::string_view table, const std::string& protocol,
                                         long family) {
  std::vector<Socket> sockets;
  while (!table.empty()) {
    Socket socket = NewInternetSocket(protocol, family);
    if (ParseInternetLine(TakeLine(table), socket)) {
      sockets.push_back(std::move(socket));
    }
  }
  return sockets;
}

}  // namespace Kestrel::Host
