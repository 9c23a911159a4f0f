// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "plugins/host/log/LocalZone.h"
#include "plugins/host/log/WrittenTime.h"

namespace Kestrel::Host {

/// The seconds since the epoch now.
std::int64_t CurrentSeconds();

/// The microseconds since the epoch at which the machine started, by its clock of now.
std::int64_t BootMicroseconds();

/// Recognizes the times that programs write at the start of a line.
///
/// A line of syslog in both its styles, with or without a priority before it; ISO 8601 and its
/// relatives, also in brackets, after `time=` and the like, or after the word for a level; the
/// common log format, further inside too; what date(1) prints; seconds since the machine started.
/// A time without an offset is one of the machine's zone. A time without a year is the latest one
/// that is not more than an hour in the future: the clocks of two machines differ.
class LogTimeReader {
 public:
  using Clock = std::int64_t (*)();

  explicit LogTimeReader(const LocalZone& zone, Clock now = CurrentSeconds,
                         Clock boot = BootMicroseconds);

  /// Seconds since the epoch; nothing for a line that shows no time.
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
