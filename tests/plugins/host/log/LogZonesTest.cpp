// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <string>
#include <vector>

#include "plugins/host/log/LocalZone.h"
#include "plugins/host/log/LogTime.h"
#include "plugins/host/log/SinceTime.h"
#include "support/ScopedEnvironment.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

// Compares times in many zones with the output of date(1), mostly around changes of the zones'
// offsets. A list of times is converted by a single call of date(1).
namespace Kestrel::Host {
namespace {

using Testing::ScopedEnvironment;
using Testing::ScopedTempDir;
using Testing::WitnessLines;
using Repeated = LocalZone::Repeated;

constexpr std::int64_t kHour = 3600;
constexpr std::int64_t kDay = 24 * kHour;

// A time zone and a moment. The offsets of most of these zones change at that moment.
struct ZoneChange {
  const char* zone;
  const char* moment;
};

const ZoneChange kChanges[] = {
    {"UTC", "2026-06-30 00:00:00 UTC"},
    {"Europe/Berlin", "2026-03-29 01:00:00 UTC"},
    {"Europe/Berlin", "2026-10-25 01:00:00 UTC"},
    {"Europe/London", "2026-03-29 01:00:00 UTC"},
    {"Europe/Dublin", "2026-10-25 01:00:00 UTC"},
    {"Europe/Istanbul", "2016-09-07 00:00:00 UTC"},
    {"Europe/Moscow", "2014-10-25 22:00:00 UTC"},
    {"Africa/Casablanca", "2026-02-15 02:00:00 UTC"},
    {"Africa/Cairo", "2023-04-27 22:00:00 UTC"},
    {"America/New_York", "2026-03-08 07:00:00 UTC"},
    {"America/New_York", "2026-11-01 06:00:00 UTC"},
    {"America/St_Johns", "2026-03-08 05:30:00 UTC"},
    {"America/St_Johns", "2026-11-01 04:30:00 UTC"},
    {"America/Sao_Paulo", "2018-11-04 03:00:00 UTC"},
    {"America/Sao_Paulo", "2019-02-17 02:00:00 UTC"},
    {"America/Caracas", "2016-05-01 07:00:00 UTC"},
    {"America/Havana", "2026-11-01 05:00:00 UTC"},
    {"Antarctica/Troll", "2026-03-29 01:00:00 UTC"},
    {"Antarctica/Troll", "2026-10-25 01:00:00 UTC"},
    {"Asia/Kathmandu", "1985-12-31 18:30:00 UTC"},
    {"Asia/Kolkata", "2026-11-22 18:30:00 UTC"},
    {"Asia/Pyongyang", "2018-05-04 15:00:00 UTC"},
    {"Asia/Tehran", "2022-09-21 19:30:00 UTC"},
    {"Australia/Lord_Howe", "2026-04-04 15:00:00 UTC"},
    {"Australia/Lord_Howe", "2026-10-03 15:30:00 UTC"},
    {"Australia/Sydney", "2026-10-03 16:00:00 UTC"},
    {"Pacific/Chatham", "2026-04-04 14:00:00 UTC"},
    {"Pacific/Kiritimati", "2026-11-22 10:00:00 UTC"},
    {"<+0330>-3:30", "2026-11-22 20:30:00 UTC"},
};

std::string NameOf(const ::testing::TestParamInfo<ZoneChange>& info) {
  std::string name;
  for (const char letter : std::string(info.param.zone) + info.param.moment) {
    name += std::isalnum(static_cast<unsigned char>(letter)) != 0 ? std::string(1, letter) : "";
  }
  return name;
}

class ZoneChangeTest : public ::testing::TestWithParam<ZoneChange> {
 protected:
  ZoneChangeTest() : zone_("TZ", std::string(GetParam().zone)) {
    const std::int64_t change =
        std::stoll(WitnessLines(std::string("date +%s -d '") + GetParam().moment + "'").front());
    // Every ten minutes of the hours around the moment, some moments days before and after it, and
    // some within a minute of it.
    for (std::int64_t distance = -4 * kHour; distance <= 4 * kHour; distance += 600) {
      moments_.push_back(change + distance);
    }
    for (const std::int64_t distance :
         {-kDay - 1, -kDay, kDay, kDay + 1, 100 * kDay, -100 * kDay}) {
      moments_.push_back(change + distance);
    }
    moments_.insert(moments_.end(), {change - 1, change + 1, change - 59, change + 59});
  }

  // Returns the output of date(1) for each moment.
  std::vector<std::string> Dates(const std::string& format) const {
    std::string input;
    for (const std::int64_t moment : moments_) {
      input += "@" + std::to_string(moment) + "\n";
    }
    return WitnessLines("date -f '" + folder_.Write("moments", input) + "' '+" + format + "'");
  }

  const ScopedEnvironment zone_;
  const ScopedTempDir folder_;
  std::vector<std::int64_t> moments_;
};

TEST_P(ZoneChangeTest, ClocksShowWhatDateShows) {
  const LocalZone zone;
  std::vector<std::string> shown;
  for (const std::int64_t moment : moments_) {
    shown.push_back(zone.ToText(moment));
  }
  EXPECT_EQ(shown, Dates("%F %T"));
}

TEST_P(ZoneChangeTest, ALocalTimeIsConvertedToOneOfItsPossibleMoments) {
  const LocalZone zone;
  for (const std::int64_t moment : moments_) {
    const CivilTime shown = zone.ToCivil(moment);
    const std::int64_t earlier = zone.ToSeconds(shown, Repeated::Earlier);
    const std::int64_t later = zone.ToSeconds(shown, Repeated::Later);
    EXPECT_TRUE(moment == earlier || moment == later) << moment;
    EXPECT_LE(earlier, later);
    EXPECT_EQ(zone.ToText(earlier), zone.ToText(later));
  }
}

// A line with an offset is unambiguous, even in a repeated hour.
TEST_P(ZoneChangeTest, LinesWithAnOffsetAreReadExactly) {
  const LocalZone zone;
  LogTimeReader reader(zone);
  for (const char* const format :
       {"%FT%T%:z text", "%F %T%z text", "%F %T.%N %z text", "%FT%T,%3N%:z text",
        "host - - [%d/%b/%Y:%T %z] text", "[%FT%T%:z] text", "time=\"%FT%T%:z\" level=info",
        "<13>1 %FT%T%:z host app - - text", "%Y%m%dT%H%M%S%z text", "[error] %FT%T%:z text"}) {
    const auto lines = Dates(format);
    ASSERT_EQ(lines.size(), moments_.size());
    for (std::size_t index = 0; index < lines.size(); ++index) {
      EXPECT_EQ(reader.Read(lines[index]), moments_[index]) << lines[index];
    }
  }
}

// A line without an offset is read as local time.
TEST_P(ZoneChangeTest, LinesWithoutAnOffsetKeepTheTimeThatTheyShow) {
  const LocalZone zone;
  LogTimeReader reader(zone);
  const auto expected = Dates("%F %T");
  for (const char* const format :
       {"%F %T text", "%FT%T text", "%Y/%m/%d %T [error] text", "%F %T status installed x",
        "%b %d %Y %T: text", "%a %b %e %T %Y text", "[%a %b %d %T.%6N %Y] [core:error] text",
        "Start-Date: %F  %T", "%F %T,%3N INFO text"}) {
    const auto lines = Dates(format);
    ASSERT_EQ(lines.size(), expected.size());
    for (std::size_t index = 0; index < lines.size(); ++index) {
      const auto seconds = reader.Read(lines[index]);
      ASSERT_TRUE(seconds.has_value()) << lines[index];
      EXPECT_EQ(zone.ToText(*seconds), expected[index]) << lines[index];
    }
  }
}

TEST_P(ZoneChangeTest, ADateWithAnOffsetIsAnExactTime) {
  const LocalZone zone;
  const auto dates = Dates("%FT%T%:z");
  for (std::size_t index = 0; index < dates.size(); ++index) {
    EXPECT_EQ(ParseSince(dates[index], zone, 0), moments_[index]) << dates[index];
  }
}

TEST_P(ZoneChangeTest, TodayBeginsOnTheDayThatTheClockShows) {
  const LocalZone zone;
  const auto days = Dates("%F");
  for (std::size_t index = 0; index < days.size(); ++index) {
    const auto today = ParseSince("today", zone, moments_[index]);
    ASSERT_TRUE(today.has_value());
    EXPECT_EQ(zone.ToText(*today).substr(0, 10), days[index]);
    EXPECT_LE(*today, moments_[index]);
    EXPECT_LE(moments_[index] - *today, 26 * kHour);
    // `today` is the first second of the day, so the second before it belongs to the previous day.
    EXPECT_LT(zone.ToText(*today - 1).substr(0, 10), days[index]) << moments_[index];
  }
}

TEST_P(ZoneChangeTest, YesterdayEndsWhereTodayBegins) {
  const LocalZone zone;
  for (const std::int64_t moment : moments_) {
    const auto today = ParseSince("today", zone, moment);
    const auto yesterday = ParseSince("yesterday", zone, moment);
    ASSERT_TRUE(today.has_value() && yesterday.has_value());
    EXPECT_EQ(ParseSince("yesterday", zone, *today), yesterday) << moment;
    EXPECT_EQ(ParseSince("today", zone, *today - 1), yesterday) << moment;
  }
}

INSTANTIATE_TEST_SUITE_P(Zones, ZoneChangeTest, ::testing::ValuesIn(kChanges), NameOf);

// Days on which the clocks change. Two of them have no midnight, and one has two.
struct MidnightCase {
  const char* zone;
  const char* now;
  const char* today;
};

TEST(ZoneMidnightTest, TodayBeginsWithTheFirstTimeThatTheClockShows) {
  const MidnightCase cases[] = {
      {"America/Sao_Paulo", "2018-11-04 15:00:00 UTC", "2018-11-04 01:00:00"},
      {"Africa/Cairo", "2023-04-28 12:00:00 UTC", "2023-04-28 01:00:00"},
      {"America/Sao_Paulo", "2019-02-17 15:00:00 UTC", "2019-02-17 00:00:00"},
      {"America/Havana", "2026-11-01 15:00:00 UTC", "2026-11-01 00:00:00"},
      {"Europe/Berlin", "2026-03-29 12:00:00 UTC", "2026-03-29 00:00:00"},
  };
  for (const MidnightCase& each : cases) {
    const ScopedEnvironment variable("TZ", std::string(each.zone));
    const LocalZone zone;
    const std::int64_t now =
        std::stoll(WitnessLines(std::string("date +%s -d '") + each.now + "'").front());
    EXPECT_EQ(zone.ToText(ParseSince("today", zone, now).value_or(0)), each.today) << each.zone;
  }
}

// ---- the year of a line that has none

struct YearCase {
  const char* name;
  const char* zone;
  const char* now;  // in UTC
  const char* line;
  const char* time;  // in the zone
};

const YearCase kYears[] = {
    {"ThisYear", "UTC", "2026-11-22 10:00:00", "Jan  1 00:00:00 h p: x", "2026-01-01 00:00:00"},
    {"LastYear", "UTC", "2026-01-01 00:00:00", "Dec 31 23:59:59 h p: x", "2025-12-31 23:59:59"},
    {"NewYear", "UTC", "2026-01-01 00:00:00", "Jan  1 00:00:00 h p: x", "2026-01-01 00:00:00"},
    {"TheClockOfTheOtherMachineIsAhead", "UTC", "2025-12-31 23:59:30", "Jan  1 00:00:05 h p: x",
     "2026-01-01 00:00:05"},
    {"AYearAgo", "UTC", "2026-11-22 10:00:00", "Nov 23 10:00:00 h p: x", "2025-11-23 10:00:00"},
    {"TheOldYearInTheEast", "Pacific/Kiritimati", "2025-12-31 11:00:00", "Dec 31 23:00:00 h p: x",
     "2025-12-31 23:00:00"},
    {"TheNewYearInTheEast", "Pacific/Kiritimati", "2025-12-31 11:00:00", "Jan  1 01:00:00 h p: x",
     "2026-01-01 01:00:00"},
    {"TheOldYearInTheWest", "Pacific/Pago_Pago", "2026-01-01 09:00:00", "Dec 31 22:00:00 h p: x",
     "2025-12-31 22:00:00"},
    {"ALeapDayOfThisYear", "UTC", "2028-03-01 00:00:00", "Feb 29 12:00:00 h p: x",
     "2028-02-29 12:00:00"},
    {"ALeapDayOfAnEarlierYear", "UTC", "2027-03-01 00:00:00", "Feb 29 12:00:00 h p: x",
     "2024-02-29 12:00:00"},
    {"ALeapDayThatIsStillToCome", "UTC", "2028-02-28 00:00:00", "Feb 29 12:00:00 h p: x",
     "2024-02-29 12:00:00"},
    {"ALeapDayOverACenturyWithoutOne", "UTC", "2103-06-01 00:00:00", "Feb 29 12:00:00 h p: x",
     "2096-02-29 12:00:00"},
    {"ADayThatNoYearHas", "UTC", "2026-11-22 10:00:00", "Feb 30 12:00:00 h p: x", "none"},
    {"ALetterAndAMonth", "UTC", "2026-01-01 00:00:00", "E1231 23:59:59.5 1 x",
     "2025-12-31 23:59:59"},
    {"InARepeatedHour", "Europe/Berlin", "2026-11-01 00:00:00", "Oct 25 02:30:00 h p: x",
     "2026-10-25 02:30:00"},
    {"InASkippedHour", "Europe/Berlin", "2026-11-01 00:00:00", "Mar 29 02:30:00 h p: x",
     "2026-03-29 03:30:00"},
};

class LineYearTest : public ::testing::TestWithParam<YearCase> {};

std::int64_t lineYearNow = 0;

TEST_P(LineYearTest, IsTheLatestThatIsPossible) {
  const ScopedEnvironment variable("TZ", std::string(GetParam().zone));
  lineYearNow =
      std::stoll(WitnessLines(std::string("date +%s -ud '") + GetParam().now + "'").front());
  const LocalZone zone;
  LogTimeReader reader(
      zone, [] { return lineYearNow; }, [] { return std::int64_t{0}; });
  const auto seconds = reader.Read(GetParam().line);
  EXPECT_EQ(seconds ? zone.ToText(*seconds) : "none", GetParam().time);
}

INSTANTIATE_TEST_SUITE_P(Lines, LineYearTest, ::testing::ValuesIn(kYears),
                         [](const auto& test) { return test.param.name; });

// A log with one line for each of the last 361 days, read on the last of them.
TEST(LineYearSequenceTest, EachLineGetsTheRightYear) {
  const ScopedEnvironment variable("TZ", "Europe/Berlin");
  lineYearNow = 1782900000;  // 2026-07-01
  const LocalZone zone;
  LogTimeReader reader(
      zone, [] { return lineYearNow; }, [] { return std::int64_t{0}; });
  const ScopedTempDir folder;
  std::string input;
  for (std::int64_t day = 360; day >= 0; --day) {
    input += "@" + std::to_string(lineYearNow - day * kDay) + "\n";
  }
  const auto lines =
      WitnessLines("date -f '" + folder.Write("days", input) + "' '+%b %e %T h p[1]: text'");
  ASSERT_EQ(lines.size(), 361u);
  for (std::size_t index = 0; index < lines.size(); ++index) {
    EXPECT_EQ(reader.Read(lines[index]),
              lineYearNow - static_cast<std::int64_t>(360 - index) * kDay)
        << lines[index];
  }
}

}  // namespace
}  // namespace Kestrel::Host
