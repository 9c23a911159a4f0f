// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <linux/netlink.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Host {

/// The attributes that follow a netlink message's fixed part, or that another attribute holds.
/// Views into the bytes that it was made from, which must outlive it. What does not fit into the
/// bytes is left out.
class NetlinkAttributes {
 public:
  explicit NetlinkAttributes(std::string_view bytes);

  /// Whether an attribute of that type is there.
  bool Has(unsigned type) const;
  /// The attribute's bytes; of several of a type, the last one's. Empty when there is none.
  std::string_view Get(unsigned type) const;
  /// The attribute as a number in the host's byte order; 0 when it is absent or too short.
  std::uint32_t GetNumber(unsigned type) const;
  /// The attribute as a text without its final NUL; empty when it is absent.
  std::string GetText(unsigned type) const;

 private:
  std::vector<std::pair<unsigned, std::string_view>> attributes_;
};

/// One message of an answer: its type and everything behind its header.
struct NetlinkMessage {
  unsigned type;
  std::string_view body;

  /// The message's fixed part at the front of the body; false when the body is too short for it.
  template <typename Fixed>
  bool Read(Fixed& fixed) const {
    if (body.size() < sizeof(Fixed)) {
      return false;
    }
    body.copy(reinterpret_cast<char*>(&fixed), sizeof(Fixed));
    return true;
  }

  /// The attributes behind a fixed part of that size.
  NetlinkAttributes GetAttributes(std::size_t fixedSize) const;
};

/// Calls `visit` for every whole message among `bytes`; a message that is cut short ends the walk.
void ForEachNetlinkMessage(std::string_view bytes,
                           const std::function<void(const NetlinkMessage&)>& visit);

/// Asks the kernel's routing tables for everything of one kind (RTM_GETLINK, RTM_GETADDR, ...) and
/// returns the messages of its answer one after the other. `what` names the things in the plural,
/// for messages. Throws KestrelException when the kernel refuses or keeps silent for `deadline`.
std::string DumpNetlink(std::uint16_t request, const std::string& what,
                        std::chrono::milliseconds deadline = std::chrono::seconds(5));

/// An IPv4 or IPv6 address of 4 or 16 bytes as text; empty for any other number of bytes.
std::string FormatAddress(std::string_view bytes);
/// A link-layer address as pairs of hexadecimal digits joined by ':'; empty for no bytes.
std::string FormatLinkAddress(std::string_view bytes);
/// 4 for AF_INET, 6 for AF_INET6, 0 for every other address family.
long FamilyNumber(unsigned family);

}  // namespace Kestrel::Host
