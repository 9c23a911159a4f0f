// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace Kestrel::Host {

/// The time since the machine was started.
struct Uptime {
  long seconds = 0;      ///< Rounded down.
  long idleSeconds = 0;  ///< Idle time, the sum of all processors.
  long hundredths = 0;   ///< The same time as `seconds`, in hundredths of a second.
};

/// How busy the machine is. The averages are hundredths of a task.
struct Load {
  long oneMinute = 0;
  long fiveMinutes = 0;
  long fifteenMinutes = 0;
  long running = 0;  ///< Tasks that run or wait for a processor.
  long tasks = 0;    ///< All tasks; each thread is one.
};

/// The memory of the machine, in bytes.
struct Memory {
  long total = 0;
  long free = 0;
  long available = 0;  ///< The memory that programs can get without swapping.
  long shared = 0;
  long buffers = 0;
  long cached = 0;
  long swapTotal = 0;
  long swapFree = 0;

  /// The memory that is not available.
  long GetUsed() const;
  long GetSwapUsed() const;
};

// Each function reads a file in `proc`, and throws KestrelException if the file cannot be read or
// is damaged.
Uptime ReadUptime(const std::string& proc);
Load ReadLoad(const std::string& proc);
Memory ReadMemory(const std::string& proc);

/// Returns the time of the boot in seconds since 1970.
long ReadStartTime(const std::string& proc);

}  // namespace Kestrel::Host
