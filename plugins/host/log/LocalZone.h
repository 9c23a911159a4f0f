// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <limits>
#include <string>

namespace Kestrel::Host {

/// A date and a time of day in some time zone.
struct CivilTime {
  int year = 1970;
  int month = 1;  ///< 1 to 12
  int day = 1;    ///< 1 to 31
  int hour = 0;
  int minute = 0;
  int second = 0;  ///< 60 is a leap second
};

/// Whether the date and the time of day exist.
bool IsValid(const CivilTime& time);

/// Converts a time in UTC to seconds since the epoch.
std::int64_t UtcSeconds(const CivilTime& time);

/// Converts seconds since the epoch to a time in UTC.
CivilTime UtcTime(std::int64_t seconds);

/// The time zone of the machine: that of the variable TZ, otherwise of /etc/localtime.
///
/// Remembers the last offset from UTC instead of asking the C library for each time, because
/// successive times of a log are close together. Assumes that offsets change only at full quarters
/// of an hour.
class LocalZone {
 public:
  /// Which moment is meant by a local time that occurs twice, at the end of summer time.
  enum class Repeated { Earlier, Later };

  LocalZone();

  /// Converts a local time to seconds since the epoch. For a local time that does not exist, the
  /// offset before the change applies.
  std::int64_t ToSeconds(const CivilTime& time, Repeated repeated) const;

  /// Converts seconds since the epoch to a local time.
  CivilTime ToCivil(std::int64_t seconds) const;

  /// Formats seconds since the epoch as local time: "2031-01-02 03:04:05".
  std::string ToText(std::int64_t seconds) const;

 private:
  /// The offset during a quarter of an hour, in seconds east of Greenwich.
  struct KnownOffset {
    std::int64_t quarter = std::numeric_limits<std::int64_t>::min();
    std::int64_t offset = 0;
  };

  std::int64_t OffsetAt(std::int64_t seconds) const;

  mutable KnownOffset byUtc_;
  mutable KnownOffset byClock_[2];  // one for each value of Repeated
};

}  // namespace Kestrel::Host
