// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "plugins/host/log/LocalZone.h"

namespace Kestrel::Host {

/// A time as it is written in a log.
struct WrittenTime {
  CivilTime time;
  bool hasYear = true;
  bool hasClock = true;                ///< else it is a day alone, from its midnight on
  std::optional<std::int64_t> offset;  ///< in seconds east of Greenwich, when the text names one
};

// Each reads a time at the start of `text` and removes it from there. Returns nothing, with `text`
// unchanged, when none is there or it names a day or a time of day that does not exist.

/// ISO 8601 and what is like it: 2026-11-22, 2026-11-22T10:00, 2026-11-22 10:00:00.123456+05:00,
/// 2026/11/22 10:00:00, 20261122T100000Z. Offsets are Z, +05, +0500 and +05:00, or after a space
/// UTC, GMT and +0500.
std::optional<WrittenTime> TakeIsoTime(std::string_view& text);

/// As syslog writes it: Nov 22 10:00:00, Nov  2 10:00:00.123, Nov 22 2026 10:00:00.
std::optional<WrittenTime> TakeSyslogTime(std::string_view& text);

/// As date(1) and ctime(3) do: Sun Nov 22 10:00:00 2026, Sun Nov 22 10:00:00.123 UTC 2026. A zone
/// but UTC and GMT is taken to be that of the machine.
std::optional<WrittenTime> TakeDateTime(std::string_view& text);

/// The common log format, without its brackets: 22/Nov/2026:10:00:00 +0000.
std::optional<WrittenTime> TakeCommonLogTime(std::string_view& text);

/// A letter for the level, month, day and time: E1122 10:00:00.123456.
std::optional<WrittenTime> TakeLetterTime(std::string_view& text);

}  // namespace Kestrel::Host
