// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/network/NetlinkMessages.h"

#include <arpa/inet.h>
#include <linux/netlink.h>

#include <array>

namespace Kestrel::Testing {
namespace {

std::string Padded(std::string bytes) {
  bytes.resize((bytes.size() + 3) / 4 * 4);
  return bytes;
}

}  // namespace

std::string Attribute(std::uint16_t type, std::string_view content) {
  nlattr header = {};
  header.nla_len = static_cast<std::uint16_t>(sizeof(header) + content.size());
  header.nla_type = type;
  return Padded(Bytes(header).append(content));
}

std::string Message(std::uint16_t type, std::string_view content) {
  nlmsghdr header = {};
  header.nlmsg_len = static_cast<std::uint32_t>(sizeof(header) + content.size());
  header.nlmsg_type = type;
  return Padded(Bytes(header).append(content));
}

std::string AddressBytes(const std::string& address) {
  const bool isVersion6 = address.find(':') != std::string::npos;
  std::array<char, 16> bytes = {};
  ::inet_pton(isVersion6 ? AF_INET6 : AF_INET, address.c_str(), bytes.data());
  return std::string(bytes.data(), isVersion6 ? 16 : 4);
}

}  // namespace Kestrel::Testing
