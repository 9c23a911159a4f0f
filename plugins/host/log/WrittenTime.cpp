// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/log/WrittenTime.h"

#include <algorithm>

namespace Kestrel::Host {
namespace {

constexpr std::string_view kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                        "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
constexpr std::string_view kWeekdays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
// The length of the longest zone name that date(1) prints.
constexpr std::size_t kMaxZoneLetters = 5;
constexpr int kMaxOffsetHours = 15;
// Used as the year of a time without a year, because a leap year contains every date.
constexpr int kLeapYear = 2000;

bool IsDigit(char letter) { return letter >= '0' && letter <= '9'; }
bool IsUpper(char letter) { return letter >= 'A' && letter <= 'Z'; }
bool IsLetter(char letter) { return IsUpper(letter) || (letter >= 'a' && letter <= 'z'); }

bool StartsWithDigit(std::string_view text) { return !text.empty() && IsDigit(text[0]); }

// Whether a letter or digit follows where a number or a word has to end.
bool GoesOn(std::string_view text) {
  return !text.empty() && (IsDigit(text[0]) || IsLetter(text[0]));
}

bool Take(std::string_view& text, char letter) {
  if (text.empty() || text[0] != letter) {
    return false;
  }
  text.remove_prefix(1);
  return true;
}

bool Take(std::string_view& text, std::string_view word) {
  if (text.substr(0, word.size()) != word) {
    return false;
  }
  text.remove_prefix(word.size());
  return true;
}

bool TakeSpaces(std::string_view& text) {
  const std::size_t count = std::min(text.find_first_not_of(' '), text.size());
  text.remove_prefix(count);
  return count > 0;
}

// The count is known at compile time, because taking digits is most of the work for each line of a
// log.
template <std::size_t kCount>
bool TakeDigits(std::string_view& text, int& number) {
  if (text.size() < kCount) {
    return false;
  }
  int value = 0;
  for (std::size_t index = 0; index < kCount; ++index) {
    if (!IsDigit(text[index])) {
      return false;
    }
    value = 10 * value + (text[index] - '0');
  }
  text.remove_prefix(kCount);
  number = value;
  return true;
}

bool TakeMonthName(std::string_view& text, int& month) {
  for (std::size_t index = 0; index < 12; ++index) {
    if (Take(text, kMonths[index])) {
      month = static_cast<int>(index) + 1;
      return true;
    }
  }
  return false;
}

bool TakeWeekday(std::string_view& text) {
  for (const std::string_view weekday : kWeekdays) {
    if (Take(text, weekday)) {
      return true;
    }
  }
  return false;
}

// Takes a day of one or two digits.
bool TakeShortDay(std::string_view& text, int& day) {
  return TakeDigits<2>(text, day) || TakeDigits<1>(text, day);
}

void TakeFraction(std::string_view& text) {
  if (text.size() > 1 && (text[0] == '.' || text[0] == ',') && IsDigit(text[1])) {
    text.remove_prefix(1);
    while (StartsWithDigit(text)) {
      text.remove_prefix(1);
    }
  }
}

// Takes hours, minutes and seconds, separated by colons.
bool TakeClock(std::string_view& text, CivilTime& time) {
  if (!TakeDigits<2>(text, time.hour) || !Take(text, ':') || !TakeDigits<2>(text, time.minute) ||
      !Take(text, ':') || !TakeDigits<2>(text, time.second)) {
    return false;
  }
  TakeFraction(text);
  return !StartsWithDigit(text);
}

// Like TakeClock, but the seconds are optional.
bool TakeShortClock(std::string_view& text, CivilTime& time) {
  std::string_view rest = text;
  if (TakeClock(rest, time)) {
    text = rest;
    return true;
  }
  time.second = 0;
  return TakeDigits<2>(text, time.hour) && Take(text, ':') && TakeDigits<2>(text, time.minute) &&
         (text.empty() || text[0] != ':') && (!GoesOn(text) || text[0] == 'Z');
}

// Takes a sign, hours and minutes. The minutes are optional unless `needsMinutes` is true.
std::optional<std::int64_t> TakeNumericOffset(std::string_view& text, bool needsMinutes) {
  if (text.empty() || (text[0] != '+' && text[0] != '-')) {
    return std::nullopt;
  }
  std::string_view rest = text.substr(1);
  int hours = 0;
  int minutes = 0;
  if (!TakeDigits<2>(rest, hours)) {
    return std::nullopt;
  }
  const bool hasColon = Take(rest, ':');
  const bool hasMinutes = TakeDigits<2>(rest, minutes);
  if (((hasColon || needsMinutes) && !hasMinutes) || GoesOn(rest)) {
    return std::nullopt;
  }
  if (hours > kMaxOffsetHours || minutes > 59) {
    return std::nullopt;
  }
  const int sign = text[0] == '-' ? -1 : 1;
  text = rest;
  return sign * (hours * 3600 + minutes * 60);
}

// Takes a word for UTC, unless it is the start of another word.
bool TakeUtcWord(std::string_view& text, std::string_view word) {
  std::string_view rest = text;
  if (!Take(rest, word) || GoesOn(rest)) {
    return false;
  }
  text = rest;
  return true;
}

// Takes an offset. After a space, neither "Z" nor a number without minutes is one:
// "10:00:00 -05 degrees".
std::optional<std::int64_t> TakeOffset(std::string_view& text) {
  if (!text.empty() && (text[0] == '+' || text[0] == '-')) {
    return TakeNumericOffset(text, false);  // fast path
  }
  std::string_view rest = text;
  const bool isApart = Take(rest, ' ');
  const bool isUtc = TakeUtcWord(rest, "UTC") || TakeUtcWord(rest, "GMT") ||
                     (!isApart && (TakeUtcWord(rest, "Z") || TakeUtcWord(rest, "z")));
  const std::optional<std::int64_t> offset = isUtc ? 0 : TakeNumericOffset(rest, isApart);
  if (offset) {
    text = rest;
  }
  return offset;
}

// Takes a date: 2026-11-22 or 2026/11/22.
bool TakeDate(std::string_view& text, CivilTime& time) {
  if (!TakeDigits<4>(text, time.year) || text.empty()) {
    return false;
  }
  const char separator = text[0];
  return (separator == '-' || separator == '/') && Take(text, separator) &&
         TakeDigits<2>(text, time.month) && Take(text, separator) && TakeDigits<2>(text, time.day);
}

// Takes the spaces or the letter between date and time. A digit has to follow.
bool TakeClockStart(std::string_view& text) {
  return (Take(text, 'T') || Take(text, 't') || TakeSpaces(text)) && StartsWithDigit(text);
}

// Takes a date and time: 20261122T100000.
bool TakeBasicTime(std::string_view& text, CivilTime& time) {
  if (!TakeDigits<4>(text, time.year) || !TakeDigits<2>(text, time.month) ||
      !TakeDigits<2>(text, time.day) || !Take(text, 'T') || !TakeDigits<2>(text, time.hour) ||
      !TakeDigits<2>(text, time.minute) || !TakeDigits<2>(text, time.second)) {
    return false;
  }
  TakeFraction(text);
  return !StartsWithDigit(text);
}

// Calls `read`, and leaves `text` unchanged if that fails or if the date or time does not exist.
template <typename Read>
std::optional<WrittenTime> TakeTime(std::string_view& text, Read read) {
  std::string_view rest = text;
  WrittenTime written;
  if (!read(rest, written) || !IsValid(written.time)) {
    return std::nullopt;
  }
  text = rest;
  return written;
}

bool ReadExtendedTime(std::string_view& text, WrittenTime& written) {
  if (!TakeDate(text, written.time)) {
    return false;
  }
  std::string_view rest = text;
  WrittenTime withClock = written;
  if (!TakeClockStart(rest) || !TakeShortClock(rest, withClock.time)) {
    written.hasClock = false;
    return !GoesOn(text) && (text.empty() || (text[0] != '-' && text[0] != '/'));
  }
  withClock.offset = TakeOffset(rest);
  written = withClock;
  text = rest;
  return true;
}

bool ReadSyslogTime(std::string_view& text, WrittenTime& written) {
  CivilTime& time = written.time;
  if (!TakeMonthName(text, time.month) || !TakeSpaces(text) || !TakeShortDay(text, time.day) ||
      !TakeSpaces(text)) {
    return false;
  }
  std::string_view rest = text;
  written.hasYear = TakeDigits<4>(rest, time.year) && TakeSpaces(rest);
  if (written.hasYear) {
    text = rest;
  } else {
    time.year = kLeapYear;
  }
  return TakeClock(text, time);
}

// Takes the name of a zone, if there is one. In the format of date(1), it precedes the year.
bool TakeZoneName(std::string_view& text, WrittenTime& written) {
  std::size_t size = 0;
  while (size < text.size() && IsUpper(text[size])) {
    ++size;
  }
  if (size > kMaxZoneLetters) {
    return false;
  }
  const std::string_view name = text.substr(0, size);
  if (name == "UTC" || name == "GMT") {
    written.offset = 0;
  }
  text.remove_prefix(size);
  return size == 0 || TakeSpaces(text);
}

bool ReadDateTime(std::string_view& text, WrittenTime& written) {
  CivilTime& time = written.time;
  return TakeWeekday(text) && TakeSpaces(text) && TakeMonthName(text, time.month) &&
         TakeSpaces(text) && TakeShortDay(text, time.day) && TakeSpaces(text) &&
         TakeClock(text, time) && TakeSpaces(text) && TakeZoneName(text, written) &&
         TakeDigits<4>(text, time.year) && !GoesOn(text);
}

bool ReadCommonLogTime(std::string_view& text, WrittenTime& written) {
  CivilTime& time = written.time;
  if (!TakeDigits<2>(text, time.day) || !Take(text, '/') || !TakeMonthName(text, time.month) ||
      !Take(text, '/') || !TakeDigits<4>(text, time.year) || !Take(text, ':') ||
      !TakeClock(text, time)) {
    return false;
  }
  written.offset = TakeOffset(text);
  return true;
}

bool ReadLetterTime(std::string_view& text, WrittenTime& written) {
  CivilTime& time = written.time;
  written.hasYear = false;
  time.year = kLeapYear;
  if (text.empty() || !IsUpper(text[0])) {
    return false;
  }
  text.remove_prefix(1);
  return TakeDigits<2>(text, time.month) && TakeDigits<2>(text, time.day) && TakeSpaces(text) &&
         TakeClock(text, time);
}

}  // namespace

std::optional<WrittenTime> TakeIsoTime(std::string_view& text) {
  if (const auto written = TakeTime(text, ReadExtendedTime)) {
    return written;
  }
  return TakeTime(text, [](std::string_view& rest, WrittenTime& written) {
    if (!TakeBasicTime(rest, written.time)) {
      return false;
    }
    written.offset = TakeOffset(rest);
    return true;
  });
}

std::optional<WrittenTime> TakeSyslogTime(std::string_view& text) {
  return TakeTime(text, ReadSyslogTime);
}

std::optional<WrittenTime> TakeDateTime(std::string_view& text) {
  return TakeTime(text, ReadDateTime);
}

std::optional<WrittenTime> TakeCommonLogTime(std::string_view& text) {
  return TakeTime(text, ReadCommonLogTime);
}

std::optional<WrittenTime> TakeLetterTime(std::string_view& text) {
  return TakeTime(text, ReadLetterTime);
}

}  // namespace Kestrel::Host
