// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Kestrel::Testing {

/// The bytes of a number or structure in memory.
template <typename Value>
std::string Bytes(const Value& value) {
  return std::string(reinterpret_cast<const char*>(&value), sizeof(value));
}

/// A netlink attribute with that content, padded to its alignment.
std::string Attribute(std::uint16_t type, std::string_view content);

/// A netlink message with that content, padded to its alignment.
std::string Message(std::uint16_t type, std::string_view content);

/// The bytes of an IPv4 or IPv6 address.
std::string AddressBytes(const std::string& address);

}  // namespace Kestrel::Testing
