// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

namespace Kestrel::Host {

/// The last lines that a service wrote.
struct ServiceLog {
  std::vector<std::string> lines;  ///< the oldest first, each with its time in the machine's zone
  std::string problem;             ///< why lines may be missing; empty when none are
};

/// Asks journalctl as found in PATH for the last lines of a unit. A journal that is missing or that
/// this user may not read is a problem, not an error: the service is known all the same.
ServiceLog ReadServiceLog(const std::string& unit);

}  // namespace Kestrel::Host
