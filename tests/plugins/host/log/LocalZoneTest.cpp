// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/log/LocalZone.h"

#include <gtest/gtest.h>

#include <ctime>
#include <string>

#include "support/ScopedEnvironment.h"
#include "support/Witness.h"

namespace Kestrel::Host {
namespace {

using Testing::ScopedEnvironment;
using Testing::Witness;
using Repeated = LocalZone::Repeated;

constexpr CivilTime kSummer = {2026, 7, 1, 12, 0, 0};
constexpr CivilTime kWinter = {2026, 1, 1, 12, 0, 0};
// In Berlin, kRepeated occurs twice, and kSkipped never occurs.
constexpr CivilTime kRepeated = {2026, 10, 25, 2, 30, 0};
constexpr CivilTime kSkipped = {2026, 3, 29, 2, 30, 0};

std::int64_t WitnessSeconds(const std::string& text) {
  return std::stoll(Witness("date -d '" + text + "' +%s"));
}

TEST(CivilTimeTest, CountsSecondsAsTheCLibraryDoes) {
  // A step of a prime number of seconds covers every month, leap days and years before 1970.
  constexpr std::time_t kStep = 1234577;
  for (std::time_t moment = -5000000000; moment < 9000000000; moment += kStep) {
    std::tm parts = {};
    ::gmtime_r(&moment, &parts);
    const CivilTime time = UtcTime(moment);
    ASSERT_EQ(UtcSeconds(time), moment);
    ASSERT_TRUE(IsValid(time));
    ASSERT_EQ(time.year, parts.tm_year + 1900);
    ASSERT_EQ(time.month, parts.tm_mon + 1);
    ASSERT_EQ(time.day, parts.tm_mday);
    ASSERT_EQ(time.hour, parts.tm_hour);
    ASSERT_EQ(time.minute, parts.tm_min);
    ASSERT_EQ(time.second, parts.tm_sec);
  }
}

TEST(CivilTimeTest, KnowsWhichDatesAndTimesExist) {
  EXPECT_TRUE(IsValid({2024, 2, 29, 23, 59, 60}));
  EXPECT_TRUE(IsValid({2000, 2, 29, 0, 0, 0}));
  EXPECT_FALSE(IsValid({2026, 2, 29, 0, 0, 0}));
  EXPECT_FALSE(IsValid({1900, 2, 29, 0, 0, 0}));
  EXPECT_FALSE(IsValid({2026, 0, 1, 0, 0, 0}));
  EXPECT_FALSE(IsValid({2026, 13, 1, 0, 0, 0}));
  EXPECT_FALSE(IsValid({2026, 1, 0, 0, 0, 0}));
  EXPECT_FALSE(IsValid({2026, 4, 31, 0, 0, 0}));
  EXPECT_FALSE(IsValid({2026, 1, 1, 24, 0, 0}));
  EXPECT_FALSE(IsValid({2026, 1, 1, 0, 60, 0}));
  EXPECT_FALSE(IsValid({2026, 1, 1, 0, 0, 61}));
}

TEST(LocalZoneTest, ConvertsAsDateDoes) {
  for (const char* const name : {"UTC", "Europe/Berlin", "Asia/Kolkata", "America/St_Johns"}) {
    const ScopedEnvironment variable("TZ", name);
    const LocalZone zone;
    for (const CivilTime& time : {kSummer, kWinter}) {
      const std::int64_t seconds = zone.ToSeconds(time, Repeated::Later);
      const std::string text = zone.ToText(seconds);
      EXPECT_EQ(seconds, WitnessSeconds(text)) << name;
      EXPECT_EQ(text, time.month == 7 ? "2026-07-01 12:00:00" : "2026-01-01 12:00:00");
    }
  }
}

TEST(LocalZoneTest, EachObjectUsesTheZoneThatTheVariableNamesWhenItIsMade) {
  const ScopedEnvironment variable("TZ", "XYZ-5:30");
  EXPECT_EQ(LocalZone().ToText(1700000000), "2023-11-15 03:43:20");
  const ScopedEnvironment other("TZ", "UTC0");
  EXPECT_EQ(LocalZone().ToText(1700000000), "2023-11-14 22:13:20");
}

TEST(LocalZoneTest, DistinguishesTwoMomentsWithTheSameLocalTime) {
  const ScopedEnvironment variable("TZ", "Europe/Berlin");
  const LocalZone zone;
  const std::int64_t earlier = zone.ToSeconds(kRepeated, Repeated::Earlier);
  EXPECT_EQ(earlier, WitnessSeconds("2026-10-25 02:30:00 +0200"));
  EXPECT_EQ(zone.ToSeconds(kRepeated, Repeated::Later), earlier + 3600);
  EXPECT_EQ(zone.ToText(earlier), zone.ToText(earlier + 3600));
}

TEST(LocalZoneTest, ReadsASkippedTimeWithTheOffsetBeforeTheJump) {
  const ScopedEnvironment variable("TZ", "Europe/Berlin");
  const LocalZone zone;
  const std::int64_t seconds = zone.ToSeconds(kSkipped, Repeated::Later);
  EXPECT_EQ(zone.ToText(seconds), "2026-03-29 03:30:00");
}

TEST(LocalZoneTest, ConvertsTimesInAnyOrder) {
  const ScopedEnvironment variable("TZ", "Europe/Berlin");
  const LocalZone zone;
  const std::int64_t start = WitnessSeconds("2026-10-24 12:00:00");
  // Alternates between times from the start and from the end of 24 hours in which summer time ends.
  for (std::int64_t distance = 0; distance < 86400; distance += 600) {
    for (const std::int64_t seconds : {start + distance, start + 86400 - distance}) {
      const std::time_t moment = seconds;
      std::tm parts = {};
      ::localtime_r(&moment, &parts);
      char expected[32];
      std::strftime(expected, sizeof(expected), "%Y-%m-%d %H:%M:%S", &parts);
      ASSERT_EQ(zone.ToText(seconds), expected);
    }
  }
}

}  // namespace
}  // namespace Kestrel::Host
