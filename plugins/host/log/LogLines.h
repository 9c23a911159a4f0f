// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include "plugins/host/frame/Regex.h"
#include "plugins/host/log/LogFile.h"
#include "plugins/host/log/LogLevel.h"
#include "plugins/host/log/LogTime.h"

namespace Kestrel::Host {

/// A line of the journal.
struct LogLine {
  std::optional<std::int64_t> time;  ///< in seconds since the epoch
  int level = kInfoLevel;
  std::string source;  ///< the program that wrote it; may be empty
  std::string text;
};

/// A line of a log file.
struct FileLine {
  std::optional<std::int64_t> time;  ///< in seconds since the epoch
  int level;
  std::string_view text;
};

/// Means that the number of lines is not limited.
constexpr std::size_t kAllLines = std::numeric_limits<std::size_t>::max();

/// Which lines of a log are listed.
struct LogFilter {
  std::size_t lines = 0;  ///< list at most this many, the last ones; or kAllLines
  int level = kLowestLevel;
  std::optional<std::int64_t> since;
  const Regex* match = nullptr;  ///< not owned
};

/// Calls `use` with the last lines of a file that pass the filter, from the last to the first.
///
/// With `since`, a line without a time is as old as the nearest earlier line with a time, and too
/// old if there is none. The file is read from its end until there are enough lines, or until
/// kMaxOlderRun successive lines with times are too old; the lines of a log are in order, with rare
/// exceptions. Throws KestrelException if the file cannot be read, or if `since` is given and the
/// file has lines but none with a time.
void ForEachLastLine(LogFile& file, const LogFilter& filter, LogTimeReader& times,
                     const std::function<void(const FileLine& line)>& use);

/// The number of successive lines with times that must be too old before the search ends. It
/// exceeds the number of lines that a machine writes while its clock is still wrong after the
/// start.
constexpr std::size_t kMaxOlderRun = 100000;

}  // namespace Kestrel::Host
