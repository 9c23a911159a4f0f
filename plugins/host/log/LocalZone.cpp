// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/log/LocalZone.h"

#include <algorithm>
#include <ctime>

namespace Kestrel::Host {
namespace {

constexpr std::int64_t kMinute = 60;
constexpr std::int64_t kQuarter = 15 * kMinute;
constexpr std::int64_t kHour = 60 * kMinute;
constexpr std::int64_t kDay = 24 * kHour;

// The period of the Gregorian calendar, after which dates fall on the same weekdays again.
constexpr std::int64_t kEraYears = 400;
constexpr std::int64_t kEraDays = 146097;
// The number of days from 0000-03-01, where the first era begins, to 1970-01-01.
constexpr std::int64_t kDaysBeforeEpoch = 719468;

std::int64_t DivideDown(std::int64_t number, std::int64_t divisor) {
  return number / divisor - (number % divisor < 0 ? 1 : 0);
}

bool IsLeapYear(int year) { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

int DaysInMonth(int year, int month) {
  constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && IsLeapYear(year) ? 29 : kDays[month - 1];
}

// Years start in March here, so that the leap day is the last day of the year.
std::int64_t DaysSinceEpoch(const CivilTime& time) {
  const std::int64_t year = time.month > 2 ? time.year : time.year - 1;
  const std::int64_t era = DivideDown(year, kEraYears);
  const std::int64_t yearOfEra = year - era * kEraYears;
  const std::int64_t month = time.month > 2 ? time.month - 3 : time.month + 9;
  const std::int64_t dayOfYear = (153 * month + 2) / 5 + time.day - 1;
  const std::int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
  return era * kEraDays + dayOfEra - kDaysBeforeEpoch;
}

void SetDate(std::int64_t daysSinceEpoch, CivilTime& time) {
  const std::int64_t days = daysSinceEpoch + kDaysBeforeEpoch;
  const std::int64_t era = DivideDown(days, kEraDays);
  const std::int64_t dayOfEra = days - era * kEraDays;
  const std::int64_t yearOfEra =
      (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const std::int64_t month = (5 * dayOfYear + 2) / 153;
  time.day = static_cast<int>(dayOfYear - (153 * month + 2) / 5 + 1);
  time.month = static_cast<int>(month < 10 ? month + 3 : month - 9);
  time.year = static_cast<int>(era * kEraYears + yearOfEra + (time.month <= 2 ? 1 : 0));
}

void AppendTwoDigits(char separator, int number, std::string& text) {
  text += separator;
  text += static_cast<char>('0' + number / 10);
  text += static_cast<char>('0' + number % 10);
}

// Returns the offset that the C library computes for a single moment.
std::int64_t LookUpOffset(std::int64_t seconds) {
  const auto moment = static_cast<std::time_t>(seconds);
  std::tm parts = {};
  return ::localtime_r(&moment, &parts) == nullptr ? 0 : parts.tm_gmtoff;
}

// Returns the offset at local time `clock`, given in seconds as if it were UTC. If the offset
// changes nearby, the offsets one day earlier and one day later are those before and after the
// change.
std::int64_t OffsetOfClock(std::int64_t clock, LocalZone::Repeated repeated) {
  const std::int64_t before = LookUpOffset(clock - kDay);
  const std::int64_t after = LookUpOffset(clock + kDay);
  const bool isBefore = LookUpOffset(clock - before) == before;
  const bool isAfter = LookUpOffset(clock - after) == after;
  if (isBefore && isAfter) {
    return repeated == LocalZone::Repeated::Earlier ? std::max(before, after)
                                                    : std::min(before, after);
  }
  return isAfter ? after : before;
}

}  // namespace

bool IsValid(const CivilTime& time) {
  return time.month >= 1 && time.month <= 12 && time.day >= 1 &&
         time.day <= DaysInMonth(time.year, time.month) && time.hour >= 0 && time.hour < 24 &&
         time.minute >= 0 && time.minute < 60 && time.second >= 0 && time.second <= 60;
}

std::int64_t UtcSeconds(const CivilTime& time) {
  return DaysSinceEpoch(time) * kDay + time.hour * kHour + time.minute * kMinute + time.second;
}

CivilTime UtcTime(std::int64_t seconds) {
  const std::int64_t days = DivideDown(seconds, kDay);
  const std::int64_t rest = seconds - days * kDay;
  CivilTime time;
  SetDate(days, time);
  time.hour = static_cast<int>(rest / kHour);
  time.minute = static_cast<int>(rest % kHour / kMinute);
  time.second = static_cast<int>(rest % kMinute);
  return time;
}

LocalZone::LocalZone() { ::tzset(); }  // otherwise only the first conversion in a program reads TZ

std::int64_t LocalZone::ToSeconds(const CivilTime& time, Repeated repeated) const {
  const std::int64_t clock = UtcSeconds(time);
  const std::int64_t quarter = DivideDown(clock, kQuarter);
  KnownOffset& known = byClock_[repeated == Repeated::Earlier ? 0 : 1];
  if (known.quarter != quarter) {
    known = {quarter, OffsetOfClock(clock, repeated)};
  }
  return clock - known.offset;
}

CivilTime LocalZone::ToCivil(std::int64_t seconds) const {
  return UtcTime(seconds + OffsetAt(seconds));
}

std::string LocalZone::ToText(std::int64_t seconds) const {
  const CivilTime time = ToCivil(seconds);
  std::string text = std::to_string(time.year);
  text.insert(0, text.size() < 4 ? 4 - text.size() : 0, '0');
  text.reserve(sizeof("2031-01-02 03:04:05"));
  AppendTwoDigits('-', time.month, text);
  AppendTwoDigits('-', time.day, text);
  AppendTwoDigits(' ', time.hour, text);
  AppendTwoDigits(':', time.minute, text);
  AppendTwoDigits(':', time.second, text);
  return text;
}

std::int64_t LocalZone::OffsetAt(std::int64_t seconds) const {
  const std::int64_t quarter = DivideDown(seconds, kQuarter);
  if (byUtc_.quarter != quarter) {
    byUtc_ = {quarter, LookUpOffset(seconds)};
  }
  return byUtc_.offset;
}

}  // namespace Kestrel::Host
