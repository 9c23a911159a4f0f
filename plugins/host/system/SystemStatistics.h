// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace Kestrel::Host {

/// How long the machine has been up.
struct Uptime {
  long seconds = 0;      ///< Since the start, without parts of a second.
  long idleSeconds = 0;  ///< Spent idle, summed over all processors.
};

/// How busy the machine is. The averages are texts, as the kernel writes them: there are no
/// fractions among the values.
struct Load {
  std::string oneMinute;
  std::string fiveMinutes;
  std::string fifteenMinutes;
  long running = 0;  ///< Tasks that run or wait for a processor.
  long tasks = 0;    ///< All tasks, each thread one.
};

/// The machine's memory in KiB.
struct Memory {
  long total = 0;
  long free = 0;
  long available = 0;  ///< What a program can have before others are pushed out.
  long shared = 0;
  long buffers = 0;
  long cached = 0;
  long swapTotal = 0;
  long swapFree = 0;

  /// What is not available.
  long GetUsed() const;
  long GetSwapUsed() const;
};

// Each reads a file in `proc`, the folder in which the kernel shows its data, and throws
// KestrelException when that is not there or makes no sense.
Uptime ReadUptime(const std::string& proc);
Load ReadLoad(const std::string& proc);
Memory ReadMemory(const std::string& proc);

/// When the machine started, in seconds since 1970.
long ReadStartTime(const std::string& proc);

}  // namespace Kestrel::Host
