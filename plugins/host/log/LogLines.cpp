// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/log/LogLines.h"

#include <kestrel/KestrelException.h>

#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Host {
namespace {

using UseLine = std::function<void(const FileLine& line)>;

// Selects lines, which are added from the last to the first.
class LastLines {
 public:
  LastLines(const LogFilter& filter, LogTimeReader& times, const UseLine& use)
      : filter_(filter), times_(times), use_(use) {}

  bool IsComplete() const { return count_ >= filter_.lines || olderRun_ >= kMaxOlderRun; }

  void Add(std::string_view line) {
    if (!filter_.since) {
      if (const auto level = LevelIfWanted(line)) {
        Use({times_.Read(line), *level, line});
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

  // Whether lines were added and none of them has a time.
  bool LacksTimes() const { return hasLines_ && !hasTimes_; }

 private:
  struct UntimedLine {
    int level;
    std::string text;
  };

  void Use(const FileLine& line) {
    use_(line);
    ++count_;
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
    for (const UntimedLine& each : pending_) {
      Use({std::nullopt, each.level, each.text});
    }
    pending_.clear();
    const auto level = LevelIfWanted(line);
    if (level && count_ < filter_.lines) {
      Use({time, *level, line});
    }
  }

  // Keeps a line without a time until the nearest earlier line with a time decides whether it
  // passes. Keeps no more lines than requested.
  void AddUntimed(std::string_view line) {
    if (count_ + pending_.size() >= filter_.lines) {
      return;
    }
    if (const auto level = LevelIfWanted(line)) {
      pending_.push_back({*level, std::string(line)});
    }
  }

  const LogFilter& filter_;
  LogTimeReader& times_;
  const UseLine& use_;
  std::size_t count_ = 0;             // of the lines that were used
  std::vector<UntimedLine> pending_;  // that wait for a line with a time
  std::size_t olderRun_ = 0;
  bool hasLines_ = false;
  bool hasTimes_ = false;
};

}  // namespace

void ForEachLastLine(LogFile& file, const LogFilter& filter, LogTimeReader& times,
                     const UseLine& use) {
  LastLines lines(filter, times, use);
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
}

}  // namespace Kestrel::Host
