// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "plugins/host/frame/Regex.h"
#include "plugins/host/log/LogFile.h"
#include "plugins/host/log/LogLevel.h"
#include "plugins/host/log/LogTime.h"

namespace Kestrel::Host {

/// One line of a log, wherever it came from.
struct LogLine {
  std::optional<std::int64_t> time;  ///< in seconds since the epoch
  int level = kInfoLevel;
  std::string source;  ///< who wrote it; may be empty
  std::string text;
};

/// A number of lines that no log has.
constexpr std::size_t kAllLines = std::numeric_limits<std::size_t>::max();

/// Which lines of a log are wanted.
struct LogFilter {
  std::size_t lines = 0;  ///< how many at most, of those that pass the last ones; or kAllLines
  int level = kLowestLevel;
  std::optional<std::int64_t> since;
  const Regex* match = nullptr;  ///< not owned
};

/// The last lines of a file that pass the filter, in the file's order, without a source.
///
/// With `since`, a line without a time passes when the last line before it that has one does. The
/// file is read from its end, until there are enough lines or, as logs are in order but for
/// disturbances, kMaxOlderRun lines in a row are too old. Throws KestrelException when the file
/// cannot be read, and when `since` is given and no line of a file with lines has a time.
std::vector<LogLine> ReadLastLines(LogFile& file, const LogFilter& filter, LogTimeReader& times);

/// A machine that starts with a wrong clock writes fewer lines before it is set.
constexpr std::size_t kMaxOlderRun = 100000;

}  // namespace Kestrel::Host
