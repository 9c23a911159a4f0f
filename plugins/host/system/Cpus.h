// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

namespace Kestrel::Host {

/// A logical processor. Unknown numbers are -1 and unknown strings are empty, for example while it
/// is offline.
struct Cpu {
  long number = 0;
  bool isOnline = false;
  long node = -1;
  long socket = -1;
  long core = -1;
  std::vector<long> siblings;  ///< The processors of the same core, including this one.
  std::string vendor;
  std::string model;
  long kilohertz = -1;  ///< Its current frequency.
};

/// Returns the processors that are present, in ascending order, as listed in "devices/system/cpu"
/// below `sys` and in "cpuinfo" in `proc`. If `sys` lists none, as in some containers, the
/// processors in cpuinfo count as present and online. Throws KestrelException if neither lists a
/// processor, or if a file exists but cannot be read.
std::vector<Cpu> ReadCpus(const std::string& proc, const std::string& sys);

}  // namespace Kestrel::Host
