// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string_view>
#include <vector>

#include "plugins/host/network/SocketTables.h"

namespace Kestrel::Host {

/// Parses the Unix sockets in an answer to SOCK_DIAG_BY_FAMILY, in the order of the answer.
std::vector<Socket> ParseUnixSockets(std::string_view answer);

/// Returns the Unix sockets. Throws KestrelException if the request to the kernel fails.
std::vector<Socket> ReadUnixSockets();

}  // namespace Kestrel::Host
