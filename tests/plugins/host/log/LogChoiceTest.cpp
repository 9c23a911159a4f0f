// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "plugins/host/log/LocalZone.h"
#include "plugins/host/log/LogLevel.h"
#include "plugins/host/log/LogLines.h"
#include "plugins/host/log/SinceTime.h"
#include "support/ScopedEnvironment.h"
#include "support/ScopedTempDir.h"

// Compares the selection of lines with that of a simple reader that reads a log from its start.
// Also checks the forms of --since, and the levels that lines indicate.
namespace Kestrel::Host {
namespace {

using ::testing::ElementsAreArray;
using Testing::ScopedEnvironment;

constexpr std::int64_t kStart = 1704164645;  // 2024-01-02 03:04:05 in UTC

/// Makes logs that are the same in each run. Most lines have a time, which mostly increases.
class LogMaker {
 public:
  explicit LogMaker(unsigned seed) : state_(seed) {}

  struct Line {
    std::optional<std::int64_t> time;
    int level = kInfoLevel;
    std::string text;
  };

  std::vector<Line> Make(const LocalZone& zone) {
    static const char* const kWords[] = {"error", "warning", "fine", "debug", "alert"};
    static const int kLevels[] = {3, 4, 6, 7, 1};
    std::vector<Line> lines(Random(40));
    std::int64_t now = kStart;
    for (Line& line : lines) {
      const unsigned word = Random(5);
      line.level = kLevels[word];
      now += static_cast<std::int64_t>(Random(20)) - 4;
      const bool isTimed = Random(3) > 0;
      line.time = isTimed ? std::make_optional(now) : std::nullopt;
      line.text = (isTimed ? zone.ToText(now) + " " : std::string(Random(3), ' ')) + kWords[word];
    }
    return lines;
  }

  unsigned Random(unsigned bound) {
    state_ = state_ * 1664525u + 1013904223u;
    return (state_ >> 16) % bound;
  }

 private:
  unsigned state_;
};

// Returns the selected lines by applying the rule directly. A line without a time has the time of
// the last line before it that has one. A line passes if its time is late enough. Of the lines that
// also pass the other filters, the last ones are returned.
std::vector<std::string> Expected(const std::vector<LogMaker::Line>& lines,
                                  const LogFilter& filter) {
  std::vector<std::string> texts;
  bool isLate = false;
  for (const LogMaker::Line& line : lines) {
    isLate = line.time ? *line.time >= filter.since.value_or(0) : isLate;
    const bool isMatch = filter.match == nullptr || filter.match->IsFoundIn(line.text);
    if ((isLate || !filter.since) && line.level <= filter.level && isMatch) {
      texts.push_back(line.text);
    }
  }
  const std::size_t tooMany = texts.size() - std::min(texts.size(), filter.lines);
  texts.erase(texts.begin(), texts.begin() + static_cast<std::ptrdiff_t>(tooMany));
  return texts;
}

bool HasTimes(const std::vector<LogMaker::Line>& lines) {
  return std::any_of(lines.begin(), lines.end(),
                     [](const LogMaker::Line& line) { return line.time.has_value(); });
}

class LogChoiceTest : public ::testing::TestWithParam<unsigned> {};

TEST_P(LogChoiceTest, AgreesWithAReaderThatBeginsAtTheStart) {
  const ScopedEnvironment variable("TZ", "UTC");
  const LocalZone zone;
  const Testing::ScopedTempDir folder;
  const Regex pattern("r");
  LogMaker maker(GetParam());
  for (int round = 0; round < 40; ++round) {
    const auto lines = maker.Make(zone);
    std::string content;
    for (const LogMaker::Line& line : lines) {
      content += line.text + "\n";
    }
    LogFilter filter;
    filter.lines = maker.Random(3) == 0 ? kAllLines : maker.Random(12);
    filter.level = maker.Random(2) == 0 ? kLowestLevel : static_cast<int>(maker.Random(8));
    filter.match = maker.Random(3) == 0 ? &pattern : nullptr;
    if (maker.Random(3) > 0 && HasTimes(lines)) {
      filter.since = kStart + static_cast<std::int64_t>(maker.Random(300));
    }
    LogFile file(folder.Write("log", content));
    LogTimeReader times(zone);
    std::vector<std::string> texts;
    ForEachLastLine(file, filter, times,
                    [&texts](const FileLine& line) { texts.emplace_back(line.text); });
    std::reverse(texts.begin(), texts.end());
    EXPECT_THAT(texts, ElementsAreArray(Expected(lines, filter))) << content;
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, LogChoiceTest, ::testing::Range(1u, 13u));

// ---- the forms of --since

struct SinceCase {
  const char* text;
  const char* time;  // in UTC; "none" if `text` is invalid
};

// 2026-11-22 10:00:00 in UTC.
constexpr std::int64_t kNow = 1795341600;

const SinceCase kSinces[] = {
    {"TODAY", "2026-11-22 00:00:00"},
    {"Today", "2026-11-22 00:00:00"},
    {"yesterday", "2026-11-21 00:00:00"},
    {"YESTERDAY", "2026-11-21 00:00:00"},
    {"-1s", "2026-11-22 09:59:59"},
    {"-1sec", "2026-11-22 09:59:59"},
    {"-2 seconds", "2026-11-22 09:59:58"},
    {"-1m", "2026-11-22 09:59:00"},
    {"-1min", "2026-11-22 09:59:00"},
    {"-90 minutes", "2026-11-22 08:30:00"},
    {"-1h", "2026-11-22 09:00:00"},
    {"-1H", "2026-11-22 09:00:00"},
    {"-1 hour", "2026-11-22 09:00:00"},
    {"-24h", "2026-11-21 10:00:00"},
    {"-1d", "2026-11-21 10:00:00"},
    {"-1 day", "2026-11-21 10:00:00"},
    {"-1w", "2026-11-15 10:00:00"},
    {"-52 weeks", "2025-11-23 10:00:00"},
    {"-007h", "2026-11-22 03:00:00"},
    {"-1000000000s", "1995-03-16 08:13:20"},
    {"2026-11-01", "2026-11-01 00:00:00"},
    {"2026-11-01 10:00", "2026-11-01 10:00:00"},
    {"2026-11-01 10:00:30", "2026-11-01 10:00:30"},
    {"2026-11-01T10:00", "2026-11-01 10:00:00"},
    {"2026-11-01T10:00:30Z", "2026-11-01 10:00:30"},
    {"2026-11-01T10:00:30.999Z", "2026-11-01 10:00:30"},
    {"2026-11-01T10:00:00+02:00", "2026-11-01 08:00:00"},
    {"2026-11-01 10:00:00-0930", "2026-11-01 19:30:00"},
    {"2026/11/01 10:00:00", "2026-11-01 10:00:00"},
    {"20261101T100000Z", "2026-11-01 10:00:00"},
    {"2024-02-29", "2024-02-29 00:00:00"},
    {"1969-12-31 23:59:59", "1969-12-31 23:59:59"},
    {"2999-12-31", "2999-12-31 00:00:00"},
    {"+2h", "none"},
    {"2h", "none"},
    {"-2", "none"},
    {"-h", "none"},
    {"-1.5h", "none"},
    {"-2h30m", "none"},
    {"-2 h 3 m", "none"},
    {"- 2h", "none"},
    {"--2h", "none"},
    {"-2month", "none"},
    {"-2y", "none"},
    {"-1000000001s", "none"},
    {"-18446744073709551616s", "none"},
    {"todayx", "none"},
    {"to day", "none"},
    {"tomorrow", "none"},
    {"10:00", "none"},
    {"2026", "none"},
    {"2026-11", "none"},
    {"2026-11-31", "none"},
    {"2023-02-29", "none"},
    {"2026-1-1", "none"},
    {"01.11.2026", "none"},
    {"11/01/2026", "none"},
    {"2026-11-01 25:00", "none"},
    {"2026-11-01 10", "none"},
    {"2026-11-01T", "none"},
    {"2026-11-01T10:00+99:00", "none"},
    {"2026-11-01 10:00 CET", "none"},
    {"@1700000000", "none"},
    {"1700000000", "none"},
    {"\xff", "none"},
};

TEST(SinceWordTest, EachFormHasOneMeaning) {
  const ScopedEnvironment variable("TZ", "UTC");
  const LocalZone zone;
  for (const SinceCase& each : kSinces) {
    const auto seconds = ParseSince(each.text, zone, kNow);
    EXPECT_EQ(seconds ? zone.ToText(*seconds) : "none", each.time) << each.text;
  }
}

TEST(SinceWordTest, RejectsANulAtTheEnd) {
  const LocalZone zone;
  EXPECT_EQ(ParseSince(std::string("today\0", 6), zone, kNow), std::nullopt);
  EXPECT_EQ(ParseSince(std::string("-2h\0", 4), zone, kNow), std::nullopt);
  EXPECT_EQ(ParseSince(std::string("2026-11-01\0", 11), zone, kNow), std::nullopt);
}

// Each unit has the same length under each of its names.
TEST(SinceWordTest, UnitsHaveTheirLengths) {
  const LocalZone zone;
  const std::vector<std::vector<std::string>> names = {{"s", "sec", "second", "seconds"},
                                                       {"m", "min", "minute", "minutes"},
                                                       {"h", "hour", "hours"},
                                                       {"d", "day", "days"},
                                                       {"w", "week", "weeks"}};
  const std::int64_t lengths[] = {1, 60, 3600, 86400, 604800};
  for (std::size_t unit = 0; unit < names.size(); ++unit) {
    for (const std::string& name : names[unit]) {
      for (const std::int64_t count : {0, 1, 2, 10, 999}) {
        const std::string span = "-" + std::to_string(count);
        const auto expected = std::make_optional(kNow - count * lengths[unit]);
        EXPECT_EQ(ParseSince(span + name, zone, kNow), expected) << span << name;
        EXPECT_EQ(ParseSince(span + " " + name, zone, kNow), expected) << span << name;
        EXPECT_EQ(ParseSince(span + name + "x", zone, kNow), std::nullopt) << span << name;
        EXPECT_EQ(ParseSince(span + name + " ago", zone, kNow), std::nullopt) << span << name;
      }
    }
  }
}

// A date without a time means the same midnight as the word for that day, such as "today".
TEST(SinceWordTest, ADateIsTheMidnightOfItsDay) {
  const ScopedEnvironment variable("TZ", "Europe/Berlin");
  const LocalZone zone;
  for (std::int64_t day = 0; day < 366; ++day) {
    const std::int64_t now = kNow + day * 86400;
    const std::string date = zone.ToText(now).substr(0, 10);
    EXPECT_EQ(ParseSince(date, zone, 0), ParseSince("today", zone, now)) << date;
    EXPECT_EQ(ParseSince(date + " 00:00:00", zone, 0), ParseSince("today", zone, now)) << date;
    EXPECT_EQ(ParseSince(date, zone, 0), ParseSince("yesterday", zone, now + 86400)) << date;
  }
}

// ---- the level that a line indicates

struct LevelLine {
  const char* line;
  int level;
};

const LevelLine kLevelLines[] = {
    {"Nov 22 10:00:00 h kernel: Out of memory: Killed process 1", 6},
    {"Nov 22 10:00:00 h sshd[1]: error: kex_exchange_identification", 3},
    {"Nov 22 10:00:00 h app: ERROR 42", 3},
    {"2026/11/22 10:00:00 [crit] 7#7: *1 connect() failed", 2},
    {"2026/11/22 10:00:00 [warn] 7#7: conflicting server name", 4},
    {"[Sun Nov 22 10:00:00 2026] [core:notice] [pid 1] resuming", 5},
    {"[Sun Nov 22 10:00:00 2026] [ssl:emerg] [pid 1] no key", 0},
    {"time=x level=error msg=y", 3},
    {"time=x level=\"warning\" msg=y", 4},
    {"{\"level\":\"fatal\",\"msg\":\"x\"}", 2},
    {"{\"severity\":\"DEBUG\"}", 7},
    {"INFO: all is well", 6},
    {"W1122 10:00:00.000000 1 x.go:1] text", 6},
    {"systemd[1]: x.service: Failed with result 'exit-code'.", 3},
    {"systemd[1]: x.service: Main process exited, code=exited, status=1/FAILURE", 3},
    {"no failures", 6},
    {"0 errors", 6},
    {"error-free", 3},
    {"/var/log/error.log rotated", 3},
    {"errno=2", 6},
    {"terror", 6},
    {"information", 6},
    {"<3>urgent", 3},
    {"<0>", 0},
    {"<7>error", 7},
    {"<191>x", 7},
    {"<x>error", 3},
    {" <3>fine", 6},
    {"\xff"
     "error\xff",
     3},
    {"ERR", 3},
    {"err", 3},
    {"Err!", 3},
};

TEST(LogLevelLineTest, IsThePriorityOrTheMostUrgentLevelInTheLine) {
  for (const LevelLine& each : kLevelLines) {
    EXPECT_EQ(GuessLevel(each.line), each.level) << each.line;
  }
}

TEST(LogLevelLineTest, IsTheSameAtEveryPlaceOfTheLine) {
  for (const char* const word : {"error", "WARNING", "Debug"}) {
    const int level = GuessLevel(word);
    for (std::size_t distance = 0; distance < 70; ++distance) {
      const std::string before(distance, '-');
      EXPECT_EQ(GuessLevel(before + word), level) << distance;
      EXPECT_EQ(GuessLevel(before + word + before), level) << distance;
      EXPECT_EQ(GuessLevel(before + "x" + word), kInfoLevel) << distance;
      EXPECT_EQ(GuessLevel(before + word + "x"), kInfoLevel) << distance;
    }
  }
}

}  // namespace
}  // namespace Kestrel::Host
