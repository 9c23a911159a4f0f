// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

namespace Kestrel::Host {

/// How a processor has spent its time since the boot, in ticks of the kernel.
struct CpuTimes {
  long number = -1;  ///< -1 is the sum of all processors.
  long user = 0;     ///< Programs, including those in virtual machines.
  long nice = 0;     ///< Programs of a lower priority.
  long system = 0;
  long idle = 0;
  long inputWait = 0;  ///< Idle while waiting for input or output.
  long interrupt = 0;
  long softInterrupt = 0;
  long steal = 0;  ///< Other virtual machines had the processor.
  long guest = 0;  ///< Part of user: programs in virtual machines.
};

/// How a processor spent a period of time, as shares in hundredths of a percent; all -1 if they are
/// unknown.
struct CpuUsage {
  long number = -1;  ///< -1 is all processors together.
  long busy = -1;    ///< All time except `idle` and `inputWait`.
  long user = -1;
  long nice = -1;
  long system = -1;
  long idle = -1;
  long inputWait = -1;
  long interrupt = -1;
  long softInterrupt = -1;
  long steal = -1;
  long guest = -1;
};

/// Returns the times of all processors together and of each that is online, in the order of "stat"
/// in `proc`. Throws KestrelException if the file cannot be read or is damaged.
std::vector<CpuTimes> ReadCpuTimes(const std::string& proc);

/// Returns the shares between the two samples for each processor in `after`, in that order. They
/// are unknown for a processor that is not in `before`, or if no time passed. A time that the
/// kernel lowered counts as 0.
std::vector<CpuUsage> CompareCpuTimes(const std::vector<CpuTimes>& before,
                                      const std::vector<CpuTimes>& after);

}  // namespace Kestrel::Host
