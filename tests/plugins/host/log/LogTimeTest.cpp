// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/log/LogTime.h"

#include <gtest/gtest.h>

#include <string>

#include "support/ScopedEnvironment.h"
#include "support/Witness.h"

namespace Kestrel::Host {
namespace {

using Testing::ScopedEnvironment;
using Testing::Witness;

// 2026-11-22 10:00:00 in UTC. The machine has been running for a day and half a second.
std::int64_t Now() { return 1795341600; }
std::int64_t Boot() { return (Now() - 86400) * 1000000 - 500000; }

constexpr char kNone[] = "none";

struct LineCase {
  const char* name;
  const char* line;
  const char* time;  // in UTC
};

void PrintTo(const LineCase& lineCase, std::ostream* out) { *out << lineCase.line; }

// Returns the time of a line in a time zone.
std::string TimeIn(const char* zoneName, const std::string& line) {
  const ScopedEnvironment variable("TZ", zoneName);
  const LocalZone zone;
  LogTimeReader reader(zone, Now, Boot);
  const auto seconds = reader.Read(line);
  return seconds ? zone.ToText(*seconds) : kNone;
}

class LogTimeLineTest : public ::testing::TestWithParam<LineCase> {};

TEST_P(LogTimeLineTest, IsRead) { EXPECT_EQ(TimeIn("UTC", GetParam().line), GetParam().time); }

std::string CaseName(const ::testing::TestParamInfo<LineCase>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(
    Syslog, LogTimeLineTest,
    ::testing::Values(
        LineCase{"Old", "Nov 22 09:59:59 host sshd[1]: text", "2026-11-22 09:59:59"},
        LineCase{"DayPadded", "Nov  2 10:00:00 host text", "2026-11-02 10:00:00"},
        LineCase{"DayWithZero", "Nov 02 10:00:00 host text", "2026-11-02 10:00:00"},
        LineCase{"DayShort", "Nov 2 10:00:00 host text", "2026-11-02 10:00:00"},
        LineCase{"Fraction", "Nov 22 09:00:00.123456 host text", "2026-11-22 09:00:00"},
        LineCase{"Year", "Nov 22 2019 10:00:00: %ASA", "2019-11-22 10:00:00"},
        LineCase{"Now", "Nov 22 10:00:00 host text", "2026-11-22 10:00:00"},
        LineCase{"ASecondAhead", "Nov 22 10:00:01 host text", "2026-11-22 10:00:01"},
        LineCase{"AnHourAhead", "Nov 22 11:00:00 host text", "2026-11-22 11:00:00"},
        LineCase{"MoreThanAnHourAhead", "Nov 22 11:00:01 host text", "2025-11-22 11:00:01"},
        LineCase{"LastYear", "Dec 31 23:59:59 host text", "2025-12-31 23:59:59"},
        LineCase{"LeapDay", "Feb 29 10:00:00 host text", "2024-02-29 10:00:00"},
        LineCase{"Priority", "<34>Nov 22 09:00:00 host su: text", "2026-11-22 09:00:00"},
        LineCase{"New", "2026-11-22T10:00:00.123456+00:00 host sshd[1]: text",
                 "2026-11-22 10:00:00"},
        LineCase{"Protocol", "<165>1 2026-11-22T10:00:00.003Z host app 1 ID47 - text",
                 "2026-11-22 10:00:00"},
        LineCase{"NoSuchDay", "Nov 31 10:00:00 host text", kNone},
        LineCase{"NoSuchHour", "Nov 22 24:00:00 host text", kNone},
        LineCase{"NoSuchMonth", "Nof 22 10:00:00 host text", kNone},
        LineCase{"NoSeconds", "Nov 22 10:00 host text", kNone}),
    CaseName);

INSTANTIATE_TEST_SUITE_P(
    Iso, LogTimeLineTest,
    ::testing::Values(
        LineCase{"Day", "2026-11-22 text", "2026-11-22 00:00:00"},
        LineCase{"DayAlone", "2026-11-22", "2026-11-22 00:00:00"},
        LineCase{"DayAndANumber", "2026-11-22 12 apples", "2026-11-22 00:00:00"},
        LineCase{"Minutes", "2026-11-22 10:11 text", "2026-11-22 10:11:00"},
        LineCase{"Seconds", "2026-11-22 10:11:12 text", "2026-11-22 10:11:12"},
        LineCase{"SecondsAlone", "2026-11-22 10:11:12", "2026-11-22 10:11:12"},
        LineCase{"T", "2026-11-22T10:11:12 text", "2026-11-22 10:11:12"},
        LineCase{"Point", "2026-11-22 10:11:12.9 text", "2026-11-22 10:11:12"},
        LineCase{"Comma", "2026-11-22 10:11:12,987 text", "2026-11-22 10:11:12"},
        LineCase{"Z", "2026-11-22T10:11:12Z text", "2026-11-22 10:11:12"},
        LineCase{"FractionAndZ", "2026-11-22T10:11:12.5Z text", "2026-11-22 10:11:12"},
        LineCase{"Offset", "2026-11-22T10:00:00+05:00 text", "2026-11-22 05:00:00"},
        LineCase{"OffsetWithoutColon", "2026-11-22T10:00:00-0530 text", "2026-11-22 15:30:00"},
        LineCase{"OffsetOfHours", "2026-11-22 10:00:00+02 text", "2026-11-22 08:00:00"},
        LineCase{"OffsetOverADay", "2026-11-22T01:00:00+14:00 text", "2026-11-21 11:00:00"},
        LineCase{"CommaAndOffset", "2026-11-22T10:00:00,25+01:00 text", "2026-11-22 09:00:00"},
        LineCase{"OffsetApart", "2026-11-22 10:00:00 +0500 text", "2026-11-22 05:00:00"},
        LineCase{"ZoneApart", "2026-11-22 10:00:00.123 UTC [7] LOG:  text", "2026-11-22 10:00:00"},
        LineCase{"MinutesAndOffset", "2026-11-22T10:00+05:00 text", "2026-11-22 05:00:00"},
        LineCase{"NoOffset", "2026-11-22 10:00:00 -5 degrees", "2026-11-22 10:00:00"},
        LineCase{"HugeOffset", "2026-11-22T10:00:00+99:00 text", "2026-11-22 10:00:00"},
        LineCase{"Basic", "20261122T101112Z text", "2026-11-22 10:11:12"},
        LineCase{"Brackets", "[2026-11-22 10:11:12,123] text", "2026-11-22 10:11:12"},
        LineCase{"BracketsAndOffset", "[2026-11-22 10:11:12 +0100] [7] [INFO] text",
                 "2026-11-22 09:11:12"},
        LineCase{"LeapSecond", "2016-12-31T23:59:60Z text", "2017-01-01 00:00:00"},
        LineCase{"Slashes", "2026/11/22 10:00:00 [error] 7#7: *1 text", "2026-11-22 10:00:00"},
        LineCase{"Dpkg", "2026-11-22 10:00:00 status installed x:all 1", "2026-11-22 10:00:00"},
        LineCase{"NoSuchMonth", "2026-13-22 10:00:00 text", kNone},
        LineCase{"MonthZero", "2026-00-22 10:00:00 text", kNone},
        LineCase{"NoSuchDay", "2026-02-29 10:00:00 text", kNone},
        LineCase{"NoSuchHour", "2026-11-22 25:00:00 text", kNone},
        LineCase{"NoSuchSecond", "2026-11-22 10:00:61 text", kNone},
        LineCase{"OneDigitMore", "2026-11-221 text", kNone},
        LineCase{"PartOfAWord", "2026-11-22-backup done", kNone},
        LineCase{"PartOfAPath", "2026/11/22/file is gone", kNone},
        LineCase{"Mixed", "2026-11/22 10:00:00 text", kNone},
        LineCase{"Short", "2026-1-2 10:00:00 text", kNone}),
    CaseName);

INSTANTIATE_TEST_SUITE_P(
    Inside, LogTimeLineTest,
    ::testing::Values(
        LineCase{"Common", "192.0.2.7 - - [22/Nov/2026:10:00:00 +0000] \"GET / HTTP/1.1\" 200 5",
                 "2026-11-22 10:00:00"},
        LineCase{"CommonWithOffset", "h - anna [22/Nov/2026:10:00:00 -0500] \"GET /\" 200 5",
                 "2026-11-22 15:00:00"},
        LineCase{"CommonAfterABracket", "host [::1] - - [22/Nov/2026:10:00:00 +0000] \"GET /\" 5",
                 "2026-11-22 10:00:00"},
        LineCase{"CommonFirst", "[22/Nov/2026:10:00:00 +0000] text", "2026-11-22 10:00:00"},
        LineCase{"CommonWithoutOffset", "a [22/Nov/2026:10:00:00] text", "2026-11-22 10:00:00"},
        LineCase{"LevelFirst", "[INFO] 2026-11-22 10:00:00 text", "2026-11-22 10:00:00"},
        LineCase{"LevelPadded", "WARNING:   2026-11-22 10:00:00 text", "2026-11-22 10:00:00"},
        LineCase{"WeekdayFirst", "Sun 2026-11-22 10:00:00 UTC host text", "2026-11-22 10:00:00"},
        LineCase{"Label", "time=\"2026-11-22T10:00:00Z\" level=info", "2026-11-22 10:00:00"},
        LineCase{"ShortLabel", "ts=2026-11-22T10:00:00.1Z level=info", "2026-11-22 10:00:00"},
        LineCase{"Alternatives", "update-alternatives 2026-11-22 10:00:00: run with --x",
                 "2026-11-22 10:00:00"},
        LineCase{"History", "Start-Date: 2026-11-22  10:00:00", "2026-11-22 10:00:00"},
        LineCase{"Terminal", "Log started: 2026-11-22  10:00:00", "2026-11-22 10:00:00"},
        LineCase{"OtherDay", "Expires: 2020-01-01 00:00:00", kNone},
        LineCase{"OtherTime", "backup of 2020-01-01 00:00:00 is done", kNone},
        LineCase{"LevelAndADay", "error 2020-01-01 is no day", kNone},
        LineCase{"BracketsOnly", "a [b] [22/Foo/2026:10:00:00 +0000]", kNone}),
    CaseName);

INSTANTIATE_TEST_SUITE_P(
    Other, LogTimeLineTest,
    ::testing::Values(
        LineCase{"Date", "Sun Nov 22 10:00:00 UTC 2026: text", "2026-11-22 10:00:00"},
        LineCase{"DateWithoutZone", "Sun Nov 22 10:00:00 2026 text", "2026-11-22 10:00:00"},
        LineCase{"WebServer", "[Sun Nov 22 10:00:00.123456 2026] [core:error] text",
                 "2026-11-22 10:00:00"},
        LineCase{"Letter", "E1122 09:00:00.123456    7 file.go:12] text", "2026-11-22 09:00:00"},
        // The machine started at 09:59:59.5 on the previous day.
        LineCase{"Kernel", "[12345.678901] text", "2026-11-21 13:25:45"},
        LineCase{"KernelStart", "[    0.000000] text", "2026-11-21 09:59:59"},
        LineCase{"KernelFraction", "[    0.500000] text", "2026-11-21 10:00:00"},
        LineCase{"KernelThree", "[    1.500] text", "2026-11-21 10:00:01"},
        LineCase{"KernelPriority", "<6>[    1.500000] text", "2026-11-21 10:00:01"},
        LineCase{"NoKernelPoint", "[12345] text", kNone},
        LineCase{"NoKernelEnd", "[12345.678901", kNone},
        LineCase{"NoKernelDigits", "[.5] text", kNone},
        LineCase{"HugeKernel", "[123456789012345678901234567890.678901] text", kNone}),
    CaseName);

INSTANTIATE_TEST_SUITE_P(
    Untimed, LogTimeLineTest,
    ::testing::Values(LineCase{"Empty", "", kNone}, LineCase{"Text", "some text", kNone},
                      LineCase{"Upper", "Traceback (most recent call last):", kNone},
                      LineCase{"Indented", "  2026-11-22 10:00:00 is in a block", kNone},
                      LineCase{"Tab", "\tat java.lang.Object", kNone},
                      LineCase{"Bracket", "[", kNone}, LineCase{"Priority", "<3>", kNone},
                      LineCase{"Digits", "12345", kNone}, LineCase{"Address", "192.0.2.7", kNone},
                      LineCase{"NotUtf8", "\xFF\xFE", kNone}),
    CaseName);

TEST(LogTimeReaderTest, ConvertsToTheZoneOfTheMachine) {
  EXPECT_EQ(TimeIn("Asia/Kolkata", "2026-11-22T10:00:00+05:00 text"), "2026-11-22 10:30:00");
  EXPECT_EQ(TimeIn("America/New_York", "a - - [22/Nov/2026:10:00:00 +0000] text"),
            "2026-11-22 05:00:00");
  EXPECT_EQ(TimeIn("America/New_York", "2026-11-22 10:00:00 UTC text"), "2026-11-22 05:00:00");
}

TEST(LogTimeReaderTest, LeavesATimeWithoutAnOffsetUnchanged) {
  for (const char* const line : {"2026-07-01 10:00:00 a", "2026/07/01 10:00:00 a",
                                 "Jul  1 10:00:00 a", "Wed Jul  1 10:00:00 CEST 2026 a"}) {
    EXPECT_EQ(TimeIn("Europe/Berlin", line), "2026-07-01 10:00:00") << line;
  }
}

TEST(LogTimeReaderTest, ChoosesTheYearByTheClockOfTheZone) {
  // It is 10:00 in UTC, 15:30 in Kolkata and 05:00 in New York.
  EXPECT_EQ(TimeIn("Asia/Kolkata", "Nov 22 15:30:00 a"), "2026-11-22 15:30:00");
  EXPECT_EQ(TimeIn("America/New_York", "Nov 22 06:00:01 a"), "2025-11-22 06:00:01");
}

TEST(LogTimeReaderTest, ReadsTheClockAgainForALineThatIsNewer) {
  static std::int64_t now = 0;
  now = Now();
  const ScopedEnvironment variable("TZ", "UTC");
  const LocalZone zone;
  LogTimeReader reader(
      zone, [] { return now; }, Boot);
  now += 7200;
  EXPECT_EQ(reader.Read("Nov 22 12:00:00 host text"), Now() + 7200);
}

TEST(LogTimeReaderTest, ReadsWhatDatePrints) {
  const ScopedEnvironment variable("TZ", "Asia/Kathmandu");
  const LocalZone zone;
  LogTimeReader reader(zone);
  for (const char* const moment : {"now", "4 months ago", "11 months ago"}) {
    const std::int64_t seconds = std::stoll(Witness(std::string("date -d '") + moment + "' +%s"));
    for (const char* const format :
         {"'+%b %e %H:%M:%S a'", "'+%FT%T%:z a'", "'+%F %T a'", "'+%FT%T%z a'", "'+%FT%T.%N%:z a'",
          "'+%Y/%m/%d %T [a]'", "'+a [%d/%b/%Y:%T %z] a'", "+%c", "-u", "--iso-8601=seconds",
          "--rfc-3339=ns"}) {
      const std::string line =
          Witness("date -d @" + std::to_string(seconds) + " " + std::string(format));
      EXPECT_EQ(reader.Read(line), seconds) << line;
    }
  }
}

TEST(LogTimeReaderTest, CountsKernelTimesFromTheStartOfThisMachine) {
  const LocalZone zone;
  LogTimeReader reader(zone);
  const double uptime = std::stod(Witness("cut -d' ' -f1 /proc/uptime"));
  const auto seconds = reader.Read("[" + std::to_string(uptime) + "] text");
  EXPECT_NEAR(static_cast<double>(seconds.value_or(0)), static_cast<double>(CurrentSeconds()), 2);
}

}  // namespace
}  // namespace Kestrel::Host
