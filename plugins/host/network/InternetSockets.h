// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "plugins/host/network/SocketTables.h"

namespace Kestrel::Host {

/// Parses the TCP or UDP sockets in an answer to SOCK_DIAG_BY_FAMILY, for a protocol ("tcp" or
/// "udp"). Keeps its order.
std::vector<Socket> ParseInternetDiagnosis(std::string_view answer, const std::string& protocol);

/// Returns the sockets of a protocol ("tcp" or "udp") and an address family (4 or 6). If the kernel
/// does not answer such requests, or does not answer this process, the sockets are read from a
/// table in a folder, usually "/proc/net". Both sources have the same content. Throws
/// KestrelException if neither has the sockets, or if the request fails for another reason.
std::vector<Socket> ReadInternetSockets(const std::string& folder, const std::string& protocol,
                                        long family);

}  // namespace Kestrel::Host
