// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "plugins/host/log/LocalZone.h"

namespace Kestrel::Host {

/// A time as written in a log.
struct WrittenTime {
  CivilTime time;
  bool hasYear = true;
  bool hasClock = true;                ///< otherwise it is only a date, which means midnight
  std::optional<std::int64_t> offset;  ///< in seconds east of Greenwich, if the time has an offset
};

// Each function reads a time at the start of `text` and removes it. Returns nothing, and leaves
// `text` unchanged, if there is no time or if the date or the time of day does not exist.

/// Reads ISO 8601 and similar forms: "2026-11-22", "2026-11-22T10:00", "20261122T100000Z",
/// "2026/11/22 10:00:00", "2026-11-22 10:00:00.123456+05:00". Offsets are UTC, GMT, +0500 and
/// +05:00, also after a space, and Z and +05 directly after the time.
std::optional<WrittenTime> TakeIsoTime(std::string_view& text);

/// Reads the form of syslog: "Nov 22 10:00:00", "Nov  2 10:00:00.123", "Nov 22 2026 10:00:00".
std::optional<WrittenTime> TakeSyslogTime(std::string_view& text);

/// Reads the form of date(1) and ctime(3): "Sun Nov 22 10:00:00 2026",
/// "Sun Nov 22 10:00:00.123 UTC 2026". A zone other than UTC and GMT is assumed to be the
/// machine's.
std::optional<WrittenTime> TakeDateTime(std::string_view& text);

/// Reads the common log format without its brackets: 22/Nov/2026:10:00:00 +0000.
std::optional<WrittenTime> TakeCommonLogTime(std::string_view& text);

/// Reads a time without a year after a letter for the level: E1122 10:00:00.123456 is November 22.
std::optional<WrittenTime> TakeLetterTime(std::string_view& text);

}  // namespace Kestrel::Host
