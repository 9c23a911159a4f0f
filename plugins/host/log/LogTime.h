// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "plugins/host/log/LocalZone.h"
#include "plugins/host/log/WrittenTime.h"

namespace Kestrel::Host {

/// Returns the present time in seconds since the epoch.
std::int64_t CurrentSeconds();

/// Returns when the machine started, in microseconds since the epoch, according to its present
/// clock.
std::int64_t BootMicroseconds();

/// Recognizes the times that programs write at the start of a line:
/// - both formats of syslog, as in "Nov 22 10:00:00" and "2026-11-22T10:00:00Z", with or without a
///   priority before them,
/// - ISO 8601 and similar forms, including those in brackets, after a label such as `time=`, or
///   after a weekday or the word for a level,
/// - the common log format, even further inside the line,
/// - the output of date(1),
/// - a letter for the level, then month, day and time, as in "E1122 10:00:00.123456",
/// - seconds since the start of the machine.
///
/// A time without an offset is in the machine's time zone. A time without a year is in the latest
/// year in which it is not more than an hour in the future; the hour allows for clocks that differ.
class LogTimeReader {
 public:
  using Clock = std::int64_t (*)();

  explicit LogTimeReader(const LocalZone& zone, Clock now = CurrentSeconds,
                         Clock boot = BootMicroseconds);

  /// Returns the time in seconds since the epoch; nothing if the line has no time.
  std::optional<std::int64_t> Read(std::string_view line);

 private:
  std::optional<std::int64_t> InLatestYear(WrittenTime written);
  std::int64_t ToSeconds(const WrittenTime& written) const;
  bool IsInFuture(std::int64_t seconds);

  const LocalZone& zone_;
  Clock clock_;
  std::int64_t now_;
  std::int64_t bootMicroseconds_;
};

}  // namespace Kestrel::Host
