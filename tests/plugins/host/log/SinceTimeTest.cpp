// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/log/SinceTime.h"

#include <gtest/gtest.h>

#include <string>

#include "support/ScopedEnvironment.h"
#include "support/Witness.h"

namespace Kestrel::Host {
namespace {

using Testing::ScopedEnvironment;
using Testing::Witness;

constexpr std::int64_t kNow = 1795341600;  // 2026-11-22 10:00:00 in UTC

std::string SinceIn(const char* zoneName, const std::string& text, std::int64_t now = kNow) {
  const ScopedEnvironment variable("TZ", zoneName);
  const LocalZone zone;
  const auto seconds = ParseSince(text, zone, now);
  return seconds ? zone.ToText(*seconds) : "none";
}

TEST(SinceTimeTest, MayBeAWord) {
  EXPECT_EQ(SinceIn("UTC", "today"), "2026-11-22 00:00:00");
  EXPECT_EQ(SinceIn("UTC", "Yesterday"), "2026-11-21 00:00:00");
  EXPECT_EQ(SinceIn("UTC", "NOW"), "2026-11-22 10:00:00");
}

TEST(SinceTimeTest, CountsDaysByTheClockOfTheZone) {
  // It is already the next day in Kiritimati, and still the previous day in Pago Pago.
  EXPECT_EQ(SinceIn("Pacific/Auckland", "today"), "2026-11-22 00:00:00");
  EXPECT_EQ(SinceIn("Pacific/Kiritimati", "today"), "2026-11-23 00:00:00");
  EXPECT_EQ(SinceIn("Pacific/Pago_Pago", "today"), "2026-11-21 00:00:00");
}

TEST(SinceTimeTest, KnowsDaysOfMoreOrLessThanTwentyFourHours) {
  const ScopedEnvironment variable("TZ", "Europe/Berlin");
  for (const char* const day : {"2026-10-25", "2026-10-26", "2026-03-29", "2026-03-30"}) {
    for (const char* const clock : {"00:10:00", "12:00:00", "23:50:00"}) {
      const std::string moment = std::string(day) + " " + clock;
      const std::int64_t now = std::stoll(Witness("date -d '" + moment + "' +%s"));
      const std::string before = Witness(std::string("date -d '") + day + " 12:00 1 day ago' +%F");
      EXPECT_EQ(SinceIn("Europe/Berlin", "today", now), std::string(day) + " 00:00:00");
      EXPECT_EQ(SinceIn("Europe/Berlin", "yesterday", now) + "\n",
                before.substr(0, 10) + " 00:00:00\n");
    }
  }
}

TEST(SinceTimeTest, MayBeSomeTimeAgo) {
  EXPECT_EQ(SinceIn("UTC", "-90s"), "2026-11-22 09:58:30");
  EXPECT_EQ(SinceIn("UTC", "-30m"), "2026-11-22 09:30:00");
  EXPECT_EQ(SinceIn("UTC", "-2h"), "2026-11-22 08:00:00");
  EXPECT_EQ(SinceIn("UTC", "-2H"), "2026-11-22 08:00:00");
  EXPECT_EQ(SinceIn("UTC", "-7d"), "2026-11-15 10:00:00");
  EXPECT_EQ(SinceIn("UTC", "-2w"), "2026-11-08 10:00:00");
  EXPECT_EQ(SinceIn("UTC", "-3 hours"), "2026-11-22 07:00:00");
  EXPECT_EQ(SinceIn("UTC", "-0s"), "2026-11-22 10:00:00");
}

TEST(SinceTimeTest, MayBeADate) {
  EXPECT_EQ(SinceIn("Asia/Kolkata", "2026-11-01"), "2026-11-01 00:00:00");
  EXPECT_EQ(SinceIn("Asia/Kolkata", "2026-11-01 10:00"), "2026-11-01 10:00:00");
  EXPECT_EQ(SinceIn("Asia/Kolkata", "2026-11-01T10:00:05"), "2026-11-01 10:00:05");
  EXPECT_EQ(SinceIn("Asia/Kolkata", "2026-11-01T10:00:00Z"), "2026-11-01 15:30:00");
  EXPECT_EQ(SinceIn("Asia/Kolkata", "2026-11-01 10:00:00+05:00"), "2026-11-01 10:30:00");
}

TEST(SinceTimeTest, IsTheEarlierOfTwoMomentsWithTheSameLocalTime) {
  const ScopedEnvironment variable("TZ", "Europe/Berlin");
  const LocalZone zone;
  EXPECT_EQ(ParseSince("2026-10-25 02:30", zone, kNow),
            ParseSince("2026-10-25T00:30Z", zone, kNow));
}

TEST(SinceTimeTest, RejectsAnyOtherString) {
  for (const char* const text : {"",
                                 " ",
                                 "tomorrow",
                                 "todays",
                                 "-",
                                 "2h",
                                 "-h",
                                 "-2",
                                 "-2x",
                                 "--2h",
                                 "-2h ",
                                 "-2 h x",
                                 "-99999999999999999999s",
                                 "-9999999999w",
                                 "10:00",
                                 "2026-13-01",
                                 "2026-00-01",
                                 "2026-02-30",
                                 "2026-01-01 24:00",
                                 "2026-01-01 10:60",
                                 "2026-01-01 10:00:61",
                                 "2026-11-01 10:00 x",
                                 " 2026-11-01",
                                 "2026-11-01\n",
                                 "Nov 1"}) {
    EXPECT_EQ(SinceIn("UTC", text), "none") << text;
  }
}

}  // namespace
}  // namespace Kestrel::Host
