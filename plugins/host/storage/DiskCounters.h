// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

namespace Kestrel::Host {

/// The kernel's counters for one kind of transfer.
struct TransferCounters {
  long count = 0;   ///< Completed requests.
  long merged = 0;  ///< Requests that were merged with another one.
  long bytes = 0;
  long milliseconds = 0;  ///< The sum of the times of all requests.
};

/// The kernel's counters for a block device. Counters that an old kernel lacks are 0.
struct DiskCounters {
  std::string name;  ///< The path below /dev.
  TransferCounters reads;
  TransferCounters writes;
  TransferCounters discards;
  long flushes = 0;
  long flushMilliseconds = 0;
  long inProgress = 0;          ///< Requests in progress.
  long busyMilliseconds = 0;    ///< The time during which there was at least one request.
  long queuedMilliseconds = 0;  ///< That time, weighted by the number of requests in progress.

  /// Whether the device was never used.
  bool IsUnused() const;
};

/// Returns the counters since the start of the machine, from a file in the format of
/// /proc/diskstats, in its order. Throws KestrelException if the file cannot be read or has a line
/// in another format.
std::vector<DiskCounters> ReadDiskCounters(const std::string& path = "/proc/diskstats");

/// Returns the differences between `first` and `second` for each device in `second`. If a device is
/// not in `first`, or if a counter restarted, the value in `second` is returned. `inProgress` is
/// always that of `second`.
std::vector<DiskCounters> CountedBetween(const std::vector<DiskCounters>& first,
                                         const std::vector<DiskCounters>& second);

}  // namespace Kestrel::Host
