// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "plugins/host/network/SocketTables.h"

namespace Kestrel::Host {

/// Parses the TCP or UDP sockets in an answer to SOCK_DIAG_BY_FAMILY, in the order of the answer.
/// `protocol` is "tcp" or "udp".
std::vector<Socket> ParseInternetDiagnosis(std::string_view answer, const std::string& protocol);

/// Returns the sockets of a protocol ("tcp" or "udp") and an address family (4 or 6). Requests them
/// through netlink. If the kernel does not answer such requests, or not those of this process,
/// reads a table in `folder`, usually "/proc/net"; the result is the same. Throws KestrelException
/// if the request fails for another reason, or if the table cannot be read. A missing table for
/// IPv6 counts as empty.
std::vector<Socket> ReadInternetSockets(const std::string& folder, const std::string& protocol,
                                        long family);

}  // namespace Kestrel::Host
