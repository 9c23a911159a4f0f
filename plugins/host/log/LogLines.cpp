// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/log/LogLines.h"

#include <kestrel/KestrelException.h>

#include <algorithm>
#include <iterator>
#include <string_view>

namespace Kestrel::Host {
namespace {

// Collects matching lines, which are added from the last to the first.
class LastLines {
 public:
  LastLines(const LogFilter& filter, LogTimeReader& times) : filter_(filter), times_(times) {}

  bool IsComplete() const { return kept_.size() >= filter_.lines || olderRun_ >= kMaxOlderRun; }

  void Add(std::string_view line) {
    if (!filter_.since) {
      if (const auto level = LevelIfWanted(line)) {
        kept_.push_back(MakeLine(line, *level, times_.Read(line)));
      }
      return;
    }
    hasLines_ = true;
    const auto time = times_.Read(line);
    if (time) {
      AddTimed(line, *time);
    } else {
      AddUntimed(line);
    }
  }

  // Whether none of the lines has a time.
  bool LacksTimes() const { return hasLines_ && !hasTimes_; }

  // Returns the lines in the order of the file.
  std::vector<LogLine> Take() {
    std::reverse(kept_.begin(), kept_.end());
    return std::move(kept_);
  }

 private:
  static LogLine MakeLine(std::string_view line, int level,
                          const std::optional<std::int64_t>& time) {
    return {time, level, std::string(), std::string(line)};
  }

  // Returns the level of the line if the line passes all filters except the time.
  std::optional<int> LevelIfWanted(std::string_view line) const {
    const int level = GuessLevel(line);
    const bool isWanted = level <= filter_.level &&
                          (filter_.match == nullptr || filter_.match->IsFoundIn(std::string(line)));
    return isWanted ? std::make_optional(level) : std::nullopt;
  }

  void AddTimed(std::string_view line, std::int64_t time) {
    hasTimes_ = true;
    if (time < *filter_.since) {
      pending_.clear();
      ++olderRun_;
      return;
    }
    olderRun_ = 0;
    std::move(pending_.begin(), pending_.end(), std::back_inserter(kept_));
    pending_.clear();
    const auto level = LevelIfWanted(line);
    if (level && kept_.size() < filter_.lines) {
      kept_.push_back(MakeLine(line, *level, time));
    }
  }

  // Keeps a line without a time until the line before it decides whether it passes. Keeps no more
  // lines than requested.
  void AddUntimed(std::string_view line) {
    if (kept_.size() + pending_.size() >= filter_.lines) {
      return;
    }
    if (const auto level = LevelIfWanted(line)) {
      pending_.push_back(MakeLine(line, *level, std::nullopt));
    }
  }

  const LogFilter& filter_;
  LogTimeReader& times_;
  std::vector<LogLine> kept_;
  std::vector<LogLine> pending_;  // lines without a time that wait for a line with one
  std::size_t olderRun_ = 0;
  bool hasLines_ = false;
  bool hasTimes_ = false;
};

}  // namespace

std::vector<LogLine> ReadLastLines(LogFile& file, const LogFilter& filter, LogTimeReader& times) {
  LastLines lines(filter, times);
  while (!lines.IsComplete()) {
    const auto line = file.PreviousLine();
    if (!line) {
      break;
    }
    lines.Add(*line);
  }
  if (lines.LacksTimes()) {
    throw KestrelException("No line has a recognizable time, so lines cannot be selected by time");
  }
  return lines.Take();
}

}  // namespace Kestrel::Host
