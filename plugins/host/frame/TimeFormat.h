// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <ctime>
#include <string>

namespace Kestrel::Host {

/// Formats a time in the machine's time zone, as in "2031-01-02 03:04:05". Returns "unknown" if
/// the system cannot convert the time.
std::string FormatTimestamp(std::time_t time);

/// Formats a duration as "03:04:05", or with days as "12-03:04:05". Treats a negative duration as
/// 0.
std::string FormatDuration(long seconds);

}  // namespace Kestrel::Host
