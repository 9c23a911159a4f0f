// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/log/LogTime.h"

#include <algorithm>
#include <ctime>
#include <iterator>

#include "plugins/host/frame/TextParsing.h"
#include "plugins/host/log/LogLevel.h"

namespace Kestrel::Host {
namespace {

constexpr std::int64_t kMicroseconds = 1000000;
// No kernel counts seconds since the start with more digits.
constexpr std::size_t kMaxKernelDigits = 10;
constexpr std::size_t kMaxFractionDigits = 6;
constexpr std::string_view kDigits = "0123456789";
// The number of bytes at the start of a line in which the common log format is searched for.
constexpr std::size_t kMaxFieldsSize = 4096;
// The clock of the machine that wrote a line may be up to this number of seconds ahead of this
// machine's clock.
constexpr std::int64_t kMaxAhead = 3600;
// Two successive leap years are at most eight years apart.
constexpr int kMaxYearsBack = 8;

// Labels that may precede an ISO time at the start of a line.
constexpr std::string_view kTimeLabels[] = {"time=\"",
                                            "time=",
                                            "ts=\"",
                                            "ts=",
                                            "t=",
                                            "timestamp=",
                                            "Start-Date: ",
                                            "End-Date: ",
                                            "Log started: ",
                                            "Log ended: ",
                                            "update-alternatives "};
constexpr std::string_view kWeekdays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};

bool IsDigit(char letter) { return letter >= '0' && letter <= '9'; }

bool IsWeekday(std::string_view word) {
  return std::find(std::begin(kWeekdays), std::end(kWeekdays), word) != std::end(kWeekdays);
}

// Converts a number of seconds, given as the digits before and after the point, to microseconds.
// Returns nothing if either part has no digits or too many.
std::optional<std::int64_t> Microseconds(std::string_view seconds, std::string_view fraction) {
  if (seconds.empty() || seconds.size() > kMaxKernelDigits || fraction.empty() ||
      fraction.size() > kMaxFractionDigits) {
    return std::nullopt;
  }
  std::int64_t microseconds = 0;
  for (const char digit : seconds) {
    microseconds = 10 * microseconds + (digit - '0');
  }
  for (std::size_t index = 0; index < kMaxFractionDigits; ++index) {
    microseconds = 10 * microseconds + (index < fraction.size() ? fraction[index] - '0' : 0);
  }
  return microseconds;
}

std::int64_t ReadClock(clockid_t clock) {
  timespec time = {};
  ::clock_gettime(clock, &time);
  return time.tv_sec * kMicroseconds + time.tv_nsec / 1000;
}

// Removes the priority and the version of the message format that may follow it.
std::string_view WithoutPriority(std::string_view line) {
  const auto priority = ReadPriority(line);
  if (!priority) {
    return line;
  }
  line.remove_prefix(priority->size);
  return StartsWith(line, "1 ") ? line.substr(2) : line;
}

// Returns the text after the first word if that word is a weekday or names a level, such as
// "[INFO]" or "warning:"; otherwise an empty string.
std::string_view AfterLeadingWord(std::string_view text) {
  constexpr std::string_view kMarks = "[]():";
  const std::size_t size = std::min(text.find(' '), text.size());
  std::string_view word = text.substr(0, size);
  word.remove_prefix(std::min(word.find_first_not_of(kMarks), word.size()));
  word = word.substr(0, word.find_last_not_of(kMarks) + 1);
  const bool isLead = word.size() > 1 && (ParseLevel(word) || IsWeekday(word));
  return isLead ? text.substr(std::min(text.find_first_not_of(' ', size), text.size()))
                : std::string_view();
}

std::string_view AfterLabel(std::string_view text) {
  for (const std::string_view label : kTimeLabels) {
    if (StartsWith(text, label)) {
      return text.substr(label.size());
    }
  }
  return AfterLeadingWord(text);
}

// Reads an ISO time after a label or a leading word. There, a date without a time is not enough.
std::optional<WrittenTime> TakeLabelledTime(std::string_view text) {
  std::string_view rest = AfterLabel(text);
  const auto written = TakeIsoTime(rest);
  return written && written->hasClock ? written : std::nullopt;
}

std::optional<WrittenTime> FindCommonLogTime(std::string_view line) {
  const std::string_view fields = line.substr(0, kMaxFieldsSize);
  std::size_t bracket = fields.find('[');
  while (bracket != std::string_view::npos) {
    std::string_view rest = fields.substr(bracket + 1);
    if (const auto written = TakeCommonLogTime(rest)) {
      return written;
    }
    bracket = fields.find('[', bracket + 1);
  }
  return std::nullopt;
}

// Reads a time at the start of `text`, which is a line without the bracket that may open it.
std::optional<WrittenTime> TakeStart(std::string_view text) {
  if (text.empty()) {
    return std::nullopt;
  }
  if (IsDigit(text[0])) {
    return TakeIsoTime(text);
  }
  if (text[0] < 'A' || text[0] > 'Z') {
    return std::nullopt;
  }
  if (const auto written = TakeSyslogTime(text)) {
    return written;
  }
  const auto written = TakeDateTime(text);
  return written ? written : TakeLetterTime(text);
}

// Finds a time at the start of the line, after a label or a leading word, or in the common log
// format further inside.
std::optional<WrittenTime> FindTime(std::string_view text) {
  if (const auto written = TakeStart(text[0] == '[' ? text.substr(1) : text)) {
    return written;
  }
  const auto written = TakeLabelledTime(text);
  return written ? written : FindCommonLogTime(text);
}

// Reads the microseconds since the start of the machine from "[12345.678901] text", in which spaces
// may precede the number.
std::optional<std::int64_t> ReadKernelTime(std::string_view text) {
  const std::size_t first = std::min(text.find_first_not_of(' ', 1), text.size());
  const std::size_t point = text.find_first_not_of(kDigits, first);
  if (text[0] != '[' || point == std::string_view::npos || text[point] != '.') {
    return std::nullopt;
  }
  const std::size_t end = text.find_first_not_of(kDigits, point + 1);
  if (end == std::string_view::npos || text[end] != ']') {
    return std::nullopt;
  }
  return Microseconds(text.substr(first, point - first), text.substr(point + 1, end - point - 1));
}

}  // namespace

std::int64_t CurrentSeconds() { return ReadClock(CLOCK_REALTIME) / kMicroseconds; }

std::int64_t BootMicroseconds() { return ReadClock(CLOCK_REALTIME) - ReadClock(CLOCK_BOOTTIME); }

LogTimeReader::LogTimeReader(const LocalZone& zone, Clock now, Clock boot)
    : zone_(zone), clock_(now), now_(now()), bootMicroseconds_(boot()) {}

std::optional<std::int64_t> LogTimeReader::Read(std::string_view line) {
  const std::string_view text = WithoutPriority(line);
  if (text.empty() || text[0] == ' ' || text[0] == '\t') {
    return std::nullopt;  // such a line continues the one before it
  }
  if (const auto microseconds = ReadKernelTime(text)) {
    return (bootMicroseconds_ + *microseconds) / kMicroseconds;
  }
  const auto written = FindTime(text);
  if (!written) {
    return std::nullopt;
  }
  return written->hasYear ? ToSeconds(*written) : InLatestYear(*written);
}

std::optional<std::int64_t> LogTimeReader::InLatestYear(WrittenTime written) {
  const int year = zone_.ToCivil(now_ + kMaxAhead).year;
  for (int yearsBack = 0; yearsBack <= kMaxYearsBack; ++yearsBack) {
    written.time.year = year - yearsBack;
    if (!IsValid(written.time)) {
      continue;  // a day that exists only in leap years
    }
    const std::int64_t seconds = ToSeconds(written);
    if (!IsInFuture(seconds)) {
      return seconds;
    }
  }
  return std::nullopt;
}

std::int64_t LogTimeReader::ToSeconds(const WrittenTime& written) const {
  // If a local time occurs twice, take the later moment, so that no line is omitted as too old.
  return written.offset ? UtcSeconds(written.time) - *written.offset
                        : zone_.ToSeconds(written.time, LocalZone::Repeated::Later);
}

// Returns true only after reading the clock again, because the line may have been written since the
// clock was last read.
bool LogTimeReader::IsInFuture(std::int64_t seconds) {
  if (seconds > now_ + kMaxAhead) {
    now_ = clock_();
  }
  return seconds > now_ + kMaxAhead;
}

}  // namespace Kestrel::Host
