// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <ctime>
#include <string>

namespace Kestrel::Host {

/// A time in the machine's time zone, as in "2031-01-02 03:04:05"; empty when the year is beyond
/// what the system can convert.
std::string FormatTimestamp(std::time_t time);

/// A duration as "03:04:05" or, from one day on, "12-03:04:05". A negative one counts as 0.
std::string FormatDuration(long seconds);

}  // namespace Kestrel::Host
