// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

namespace Kestrel::Host {

/// The last lines that a service logged.
struct ServiceLog {
  std::vector<std::string> lines;  ///< the oldest first, each with its time in the machine's zone
  std::string problem;             ///< why lines may be missing; empty if none are
};

/// Runs journalctl, found in PATH, to get the last lines of a unit. If the journal is missing or
/// this user may not read it, `problem` says so and nothing is thrown, because the service is known
/// anyway.
ServiceLog ReadServiceLog(const std::string& unit);

}  // namespace Kestrel::Host
