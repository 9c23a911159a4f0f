// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string_view>
#include <vector>

#include "plugins/host/network/SocketTables.h"

namespace Kestrel::Host {

/// Parses the Unix sockets in an answer to SOCK_DIAG_BY_FAMILY. Keeps its order.
std::vector<Socket> ParseUnixSockets(std::string_view answer);

/// Returns the Unix sockets. Throws KestrelException if the kernel rejects the request.
std::vector<Socket> ReadUnixSockets();

}  // namespace Kestrel::Host
