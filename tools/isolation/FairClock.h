// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/types.h>

#include <chrono>
#include <vector>

namespace Kestrel::Isolation {

/// Returns the processes whose parent is `parent`.
std::vector<pid_t> ListChildren(pid_t parent);

/// Measures the time in which the processes below this one slept or had a processor.
///
/// While one of them is ready to run, only their processor time is counted, so a process is not
/// called slow because the machine is busy. A process that waits for a disk is treated like one
/// that waits for a processor.
class FairClock {
 public:
  using milliseconds = std::chrono::milliseconds;

  /// The interval at which the processes are looked at. `Now` must be called at least this often.
  static constexpr milliseconds kStep{100};

  /// Returns the time measured since the construction. Looks at the processes if the last look was
  /// at least `kStep` ago; otherwise, all of the time since the last look is included.
  milliseconds Now();

 private:
  std::chrono::steady_clock::time_point looked_ = std::chrono::steady_clock::now();
  milliseconds counted_{0};
  milliseconds processorTime_{0};
};

/// A point in time on a FairClock. It is also reached when a multiple of `patience` has passed on
/// an ordinary clock, so that the wait ends on a machine that is busy forever.
class FairDeadline {
 public:
  FairDeadline(FairClock& clock, std::chrono::milliseconds patience);

  /// Returns the time that is left, 0 or more.
  std::chrono::milliseconds GetTimeLeft();

 private:
  FairClock& clock_;
  const std::chrono::milliseconds end_;
  const std::chrono::steady_clock::time_point latest_;
};

}  // namespace Kestrel::Isolation
