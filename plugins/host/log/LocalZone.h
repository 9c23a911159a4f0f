// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <limits>
#include <string>

namespace Kestrel::Host {

/// A date and a time of day as a calendar and a clock show them, in whatever zone.
struct CivilTime {
  int year = 1970;
  int month = 1;  ///< 1 to 12
  int day = 1;    ///< 1 to 31
  int hour = 0;
  int minute = 0;
  int second = 0;  ///< 60 is a leap second
};

/// Whether a calendar has that day and a clock that time.
bool IsValid(const CivilTime& time);

/// The seconds since the epoch at which clocks that run on UTC show `time`.
std::int64_t UtcSeconds(const CivilTime& time);

/// What clocks that run on UTC show at that second since the epoch.
CivilTime UtcTime(std::int64_t seconds);

/// The time zone of the machine: that of the variable TZ, else of /etc/localtime.
///
/// Converts without a look at the file for each time, and remembers the last offset: times of a log
/// are close to each other. Offsets are taken to change at full quarters of an hour only.
class LocalZone {
 public:
  /// Which of two moments is meant when the clock shows a time twice, at the end of summer time.
  enum class Repeated { Earlier, Later };

  LocalZone();

  /// The seconds since the epoch at which clocks of the zone show `time`. A time that they skip is
  /// read with the offset before the jump.
  std::int64_t ToSeconds(const CivilTime& time, Repeated repeated) const;

  /// What clocks of the zone show at that second since the epoch.
  CivilTime ToCivil(std::int64_t seconds) const;

  /// The same as text: "2031-01-02 03:04:05".
  std::string ToText(std::int64_t seconds) const;

 private:
  /// The offset of a quarter of an hour, in seconds east of Greenwich.
  struct KnownOffset {
    std::int64_t quarter = std::numeric_limits<std::int64_t>::min();
    std::int64_t offset = 0;
  };

  std::int64_t OffsetAt(std::int64_t seconds) const;

  mutable KnownOffset byUtc_;
  mutable KnownOffset byClock_[2];  // for each value of Repeated
};

}  // namespace Kestrel::Host
