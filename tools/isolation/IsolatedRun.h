// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "tools/isolation/FairClock.h"

namespace Kestrel::Isolation {

/// Sends a line to the process that waits for it. The line must not contain a line feed.
using Send = std::function<void(const std::string& line)>;

/// Work that may crash, hang or start processes, in a child process.
///
/// The standard streams of the child are /dev/null, and it writes no core dump. It ends with this
/// process. When the run ends, all processes below this one are killed, including those that have
/// left the child's process group, so this process must have no other children.
class IsolatedRun {
 public:
  /// Starts the work. Throws KestrelException if the process cannot be created.
  explicit IsolatedRun(const std::function<void(const Send&)>& work);
  IsolatedRun(const IsolatedRun&) = delete;
  IsolatedRun& operator=(const IsolatedRun&) = delete;
  ~IsolatedRun();

  /// Returns the next line of the child, or nothing after the last one. Also returns nothing if no
  /// line is complete within `patience` (see `GetTime`) or a signal interrupts the run; `IsLate` is
  /// then true.
  std::optional<std::string> ReadLine(std::chrono::milliseconds patience);

  /// Returns the time since the start, without that in which the child could not run because the
  /// machine was busy; see `FairClock`.
  std::chrono::milliseconds GetTime() { return clock_.Now(); }

  /// Whether the child did not end in time or was interrupted, and so was killed or will be killed.
  bool IsLate() const { return isLate_; }

  /// Kills the child if it is late or does not end within a second, then kills all processes that
  /// remain below this one. Returns the wait status of the child. If a signal has interrupted the
  /// run (see `KillOnInterrupt`), the signal ends this process afterwards.
  int Wait();

 private:
  void WaitForEnd();

  FairClock clock_;
  int input_ = -1;
  pid_t id_ = -1;
  int status_ = 0;
  bool isLate_ = false;
  std::string buffer_;
};

/// From now on, SIGINT, SIGTERM and SIGHUP end this process only after the current run has been
/// cleaned up.
void KillOnInterrupt();

/// Describes how a process ended, from its wait status: "it is ended by the signal Aborted".
std::string DescribeEnd(int status);

}  // namespace Kestrel::Isolation
