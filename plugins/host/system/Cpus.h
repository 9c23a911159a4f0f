// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

namespace Kestrel::Host {

/// One logical processor. What is not known of it, as when it is offline, is -1 or empty.
struct Cpu {
  long number = 0;
  bool isOnline = false;
  long node = -1;
  long socket = -1;
  long core = -1;
  std::vector<long> siblings;  ///< The processors of the same core, itself too.
  std::string vendor;
  std::string model;
  long frequency = -1;  ///< In MHz.
};

/// The processors that are present, ascending, from "devices/system/cpu" in `sys` and "cpuinfo" in
/// `proc`. Where `sys` shows none, as in a closed container, those that cpuinfo names count as
/// online. Throws KestrelException when neither knows any.
std::vector<Cpu> ReadCpus(const std::string& proc, const std::string& sys);

}  // namespace Kestrel::Host
