// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <ctime>
#include <string>

namespace Kestrel::Host {

/// A moment in the time zone of the machine, like "2031-01-02 03:04:05".
std::string MomentText(std::time_t moment);

/// A span of time like "03:04:05" or "12-03:04:05", the days in front; less than 0 counts as 0.
std::string SpanText(long seconds);

}  // namespace Kestrel::Host
