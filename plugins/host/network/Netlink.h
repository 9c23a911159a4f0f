// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/KestrelException.h>
#include <linux/netlink.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Host {

/// The attributes after the fixed part of a netlink message or within another attribute. They are
/// views of the bytes given, which must outlive this object. An attribute that extends beyond the
/// bytes is ignored, as is everything after it.
class NetlinkAttributes {
 public:
  explicit NetlinkAttributes(std::string_view bytes);

  /// Returns whether there is an attribute of that type.
  bool Has(unsigned type) const;
  /// Returns the content of the last attribute of that type; empty if there is none.
  std::string_view Get(unsigned type) const;
  /// Returns the content as a number in the host's byte order; 0 if it is absent or too short.
  std::uint32_t GetNumber(unsigned type) const;
  /// Returns the content up to its first NUL; empty if it is absent.
  std::string GetString(unsigned type) const;

 private:
  std::vector<std::pair<unsigned, std::string_view>> attributes_;
};

/// A message of a dump: its type, and what follows its header.
struct NetlinkMessage {
  unsigned type;
  std::string_view body;

  /// Copies the fixed part at the start of the body. Returns false if the body is too short.
  template <typename Fixed>
  bool Read(Fixed& fixed) const {
    if (body.size() < sizeof(Fixed)) {
      return false;
    }
    body.copy(reinterpret_cast<char*>(&fixed), sizeof(Fixed));
    return true;
  }

  /// Returns the attributes after a fixed part of that size.
  NetlinkAttributes GetAttributes(std::size_t fixedSize) const;
};

/// Calls `visit` for each message in `bytes`, up to the first incomplete one.
void ForEachNetlinkMessage(std::string_view bytes,
                           const std::function<void(const NetlinkMessage&)>& visit);

/// What to ask the kernel for.
struct NetlinkRequest {
  int protocol;        ///< NETLINK_ROUTE, NETLINK_SOCK_DIAG, ...
  std::uint16_t type;  ///< The kind of message: RTM_GETLINK, SOCK_DIAG_BY_FAMILY, ...
  std::string body;    ///< The fixed part of the message.
};

/// Thrown if a request fails, for example because the kernel rejects it or does not respond.
class NetlinkError : public KestrelException {
 public:
  /// `what` is the plural noun that names what is requested; `number` is a value of `errno`.
  NetlinkError(const std::string& what, int number);

  int GetNumber() const { return number_; }

 private:
  int number_;
};

/// Requests a dump from the kernel and returns its messages, one after the other. Error messages
/// name what is requested as `what`, a plural noun. Throws NetlinkError if the request fails: for
/// example, the kernel rejects it, cannot complete the dump, or sends nothing for as long as
/// `deadline`.
std::string DumpNetlink(const NetlinkRequest& request, const std::string& what,
                        std::chrono::milliseconds deadline = std::chrono::seconds(5));

/// Requests a dump of one kind (RTM_GETLINK, RTM_GETADDR, ...) for all address families.
std::string DumpRoutingNetlink(std::uint16_t type, const std::string& what,
                               std::chrono::milliseconds deadline = std::chrono::seconds(5));

/// Formats an IPv4 or IPv6 address of 4 or 16 bytes; empty for any other number of bytes.
std::string FormatAddress(std::string_view bytes);
/// Formats a link-layer address as pairs of hexadecimal digits separated by ":".
std::string FormatLinkAddress(std::string_view bytes);
/// Returns 4 for AF_INET, 6 for AF_INET6, 0 for any other address family.
long FamilyNumber(unsigned family);

}  // namespace Kestrel::Host
