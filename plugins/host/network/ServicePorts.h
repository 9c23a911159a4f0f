// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Host {

/// A service and the port that is assigned to it.
struct ServicePort {
  long port = 0;
  std::string protocol;  ///< "tcp", "udp", "sctp", ...
  std::string service;
  std::vector<std::string> aliases;
};

/// Parses a table in the format of services(5). Skips lines that lack a service, a valid port
/// or a protocol.
std::vector<ServicePort> ParseServicePorts(std::string_view text);

/// Returns the services in /etc/services of the machine whose root folder is `root`. Throws
/// KestrelException if the file cannot be read.
std::vector<ServicePort> ReadServicePorts(const std::string& root = std::string());

}  // namespace Kestrel::Host
