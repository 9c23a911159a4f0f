// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

namespace Kestrel::Host {

/// The last lines that a service logged.
struct ServiceLog {
  /// The oldest first. The first line of an entry begins with the entry's time in the machine's
  /// zone.
  std::vector<std::string> lines;
  std::string problem;  ///< why lines may be missing; empty if none are
};

/// Runs journalctl, found in PATH, to get the last lines of a unit. If journalctl or the journal is
/// missing, if this user may not read all of it, or if journalctl takes too long or ends with an
/// error, `problem` says so and nothing is thrown, because the service is known anyway.
ServiceLog ReadServiceLog(const std::string& unit);

}  // namespace Kestrel::Host
