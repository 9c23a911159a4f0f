// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/network/Netlink.h"

#include <arpa/inet.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>

#include "plugins/host/frame/FileDescriptor.h"
#include "plugins/host/frame/HexDigits.h"

namespace Kestrel::Host {
namespace {

// Larger than any datagram of a dump.
constexpr std::size_t kDatagramSize = 1 << 17;
// The maximum number of attempts. Another attempt follows if the table changed during a dump. The
// result of the last attempt is used in any case.
constexpr int kMaxAttempts = 5;

class NetlinkSocket {
 public:
  NetlinkSocket(int protocol, const std::string& what, std::chrono::milliseconds deadline)
      : what_(what), socket_(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, protocol)) {
    if (!socket_.IsOpen()) {
      throw NetlinkError(what_, errno);
    }
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(deadline);
    const std::chrono::microseconds rest = deadline - seconds;
    const timeval limit = {seconds.count(), rest.count()};
    ::setsockopt(socket_.Get(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit));
  }

  void Send(const NetlinkRequest& request, std::uint32_t sequence) const {
    nlmsghdr header = {};
    header.nlmsg_len = static_cast<std::uint32_t>(sizeof(header) + request.body.size());
    header.nlmsg_type = request.type;
    header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    header.nlmsg_seq = sequence;
    std::string message(reinterpret_cast<const char*>(&header), sizeof(header));
    message += request.body;
    if (::send(socket_.Get(), message.data(), message.size(), 0) < 0) {
      throw NetlinkError(what_, errno);
    }
  }

  /// `buffer` has kDatagramSize bytes.
  std::string_view Receive(char* buffer) const {
    ssize_t size = 0;
    do {
      size = ::recv(socket_.Get(), buffer, kDatagramSize, MSG_TRUNC);
    } while (size < 0 && errno == EINTR);
    if (size < 0) {
      throw NetlinkError(what_, errno == EAGAIN ? ETIMEDOUT : errno);
    }
    if (static_cast<std::size_t>(size) > kDatagramSize) {
      throw NetlinkError(what_, EMSGSIZE);
    }
    return std::string_view(buffer, static_cast<std::size_t>(size));
  }

 private:
  const std::string& what_;
  FileDescriptor socket_;
};

std::size_t Align(std::size_t size, std::size_t to) { return (size + to - 1) / to * to; }

// What the datagrams received so far say about the progress of a dump.
struct DumpProgress {
  bool isDone = false;
  bool isInterrupted = false;
};

int ErrorNumber(std::string_view body) {
  std::int32_t error = 0;
  if (body.size() >= sizeof(error)) {
    body.copy(reinterpret_cast<char*>(&error), sizeof(error));
  }
  return std::abs(std::max(error, -std::numeric_limits<std::int32_t>::max()));
}

// The kernel reports in the last message if it could not start or continue the dump.
void RequireWholeDump(std::string_view lastBody, const std::string& what) {
  if (const int error = ErrorNumber(lastBody); error != 0) {
    throw NetlinkError(what, error);
  }
}

void CollectDatagram(std::string_view datagram, std::uint32_t sequence, const std::string& what,
                     std::string& collected, DumpProgress& progress) {
  while (datagram.size() >= sizeof(nlmsghdr)) {
    nlmsghdr header;
    datagram.copy(reinterpret_cast<char*>(&header), sizeof(header));
    if (header.nlmsg_len < sizeof(header) || header.nlmsg_len > datagram.size()) {
      return;
    }
    const std::string_view message = datagram.substr(0, header.nlmsg_len);
    datagram.remove_prefix(std::min(datagram.size(), Align(header.nlmsg_len, NLMSG_ALIGNTO)));
    if (header.nlmsg_seq != sequence) {
      continue;  // belongs to an earlier dump
    }
    progress.isInterrupted |= (header.nlmsg_flags & NLM_F_DUMP_INTR) != 0;
    const std::string_view body = message.substr(sizeof(header));
    if (header.nlmsg_type == NLMSG_DONE) {
      RequireWholeDump(body, what);
      progress.isDone = true;
      return;
    }
    if (header.nlmsg_type == NLMSG_ERROR) {
      throw NetlinkError(what, ErrorNumber(body));
    }
    collected.append(message);
    collected.resize(Align(collected.size(), NLMSG_ALIGNTO));
  }
}

// inet_ntop prints each number with sprintf, which takes eight times as long.
std::string FormatVersion4(std::string_view bytes) {
  std::array<char, INET_ADDRSTRLEN> text = {};
  char* end = text.data();
  for (const char byte : bytes) {
    if (end != text.data()) {
      *end++ = '.';
    }
    end = std::to_chars(end, text.data() + text.size(), static_cast<unsigned char>(byte)).ptr;
  }
  return std::string(text.data(), end);
}

}  // namespace

NetlinkError::NetlinkError(const std::string& what, int number)
    : KestrelException("Unable to ask the kernel for its " + what + ": " + std::strerror(number)),
      number_(number) {}

NetlinkAttributes::NetlinkAttributes(std::string_view bytes) {
  while (bytes.size() >= sizeof(nlattr)) {
    nlattr header;
    bytes.copy(reinterpret_cast<char*>(&header), sizeof(header));
    if (header.nla_len < sizeof(header) || header.nla_len > bytes.size()) {
      return;
    }
    attributes_.emplace_back(header.nla_type & NLA_TYPE_MASK,
                             bytes.substr(sizeof(header), header.nla_len - sizeof(header)));
    bytes.remove_prefix(std::min(bytes.size(), Align(header.nla_len, NLA_ALIGNTO)));
  }
}

bool NetlinkAttributes::Has(unsigned type) const {
  return std::any_of(attributes_.begin(), attributes_.end(),
                     [type](const auto& attribute) { return attribute.first == type; });
}

std::string_view NetlinkAttributes::Get(unsigned type) const {
  const auto found =
      std::find_if(attributes_.rbegin(), attributes_.rend(),
                   [type](const auto& attribute) { return attribute.first == type; });
  return found == attributes_.rend() ? std::string_view() : found->second;
}

std::uint32_t NetlinkAttributes::GetNumber(unsigned type) const {
  std::uint32_t number = 0;
  const std::string_view bytes = Get(type);
  if (bytes.size() >= sizeof(number)) {
    bytes.copy(reinterpret_cast<char*>(&number), sizeof(number));
  }
  return number;
}

std::string NetlinkAttributes::GetString(unsigned type) const {
  const std::string_view bytes = Get(type);
  return std::string(bytes.substr(0, bytes.find('\0')));
}

NetlinkAttributes NetlinkMessage::GetAttributes(std::size_t fixedSize) const {
  return NetlinkAttributes(body.substr(std::min(body.size(), Align(fixedSize, NLMSG_ALIGNTO))));
}

void ForEachNetlinkMessage(std::string_view bytes,
                           const std::function<void(const NetlinkMessage&)>& visit) {
  while (bytes.size() >= sizeof(nlmsghdr)) {
    nlmsghdr header;
    bytes.copy(reinterpret_cast<char*>(&header), sizeof(header));
    if (header.nlmsg_len < sizeof(header) || header.nlmsg_len > bytes.size()) {
      return;
    }
    visit({header.nlmsg_type, bytes.substr(sizeof(header), header.nlmsg_len - sizeof(header))});
    bytes.remove_prefix(std::min(bytes.size(), Align(header.nlmsg_len, NLMSG_ALIGNTO)));
  }
}

std::string DumpNetlink(const NetlinkRequest& request, const std::string& what,
                        std::chrono::milliseconds deadline) {
  const NetlinkSocket socket(request.protocol, what, deadline);
  // Without initial values, so that only the pages that datagrams reach are allocated.
  const std::unique_ptr<char[]> buffer(new char[kDatagramSize]);
  std::string collected;
  for (std::uint32_t attempt = 1; attempt <= kMaxAttempts; ++attempt) {
    collected.clear();
    DumpProgress progress;
    socket.Send(request, attempt);
    while (!progress.isDone) {
      CollectDatagram(socket.Receive(buffer.get()), attempt, what, collected, progress);
    }
    if (!progress.isInterrupted) {
      break;
    }
  }
  return collected;
}

std::string DumpRoutingNetlink(std::uint16_t type, const std::string& what,
                               std::chrono::milliseconds deadline) {
  rtgenmsg family = {};
  family.rtgen_family = AF_UNSPEC;
  const std::string body(reinterpret_cast<const char*>(&family), sizeof(family));
  return DumpNetlink({NETLINK_ROUTE, type, body}, what, deadline);
}

std::string FormatAddress(std::string_view bytes) {
  if (bytes.size() == 4) {
    return FormatVersion4(bytes);
  }
  std::array<char, INET6_ADDRSTRLEN> text = {};
  if (bytes.size() == 16) {
    ::inet_ntop(AF_INET6, bytes.data(), text.data(), text.size());
  }
  return text.data();
}

std::string FormatLinkAddress(std::string_view bytes) {
  std::string text;
  for (const char byte : bytes) {
    if (!text.empty()) {
      text += ':';
    }
    AppendHexDigits(static_cast<unsigned char>(byte), text);
  }
  return text;
}

long FamilyNumber(unsigned family) {
  if (family == AF_INET) {
    return 4;
  }
  return family == AF_INET6 ? 6 : 0;
}

}  // namespace Kestrel::Host
