// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Kestrel::Testing {

/// Returns the bytes of a number or structure in memory.
template <typename Value>
std::string Bytes(const Value& value) {
  return std::string(reinterpret_cast<const char*>(&value), sizeof(value));
}

/// Returns a netlink attribute with the content, padded to its alignment.
std::string Attribute(std::uint16_t type, std::string_view content);

/// Returns a netlink message with the content, padded to its alignment.
std::string Message(std::uint16_t type, std::string_view content);

/// Returns the bytes of an IPv4 or IPv6 address.
std::string AddressBytes(const std::string& address);

}  // namespace Kestrel::Testing
