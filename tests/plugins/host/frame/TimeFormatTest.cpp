// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/TimeFormat.h"

#include <gtest/gtest.h>

#include <ctime>
#include <limits>
#include <memory>
#include <string>

#include "support/ScopedEnvironment.h"

namespace Kestrel::Host {
namespace {

struct TimestampCase {
  const char* name;
  const char* zone;
  std::time_t time;
  const char* text;
};

const TimestampCase kTimestamps[] = {
    {"Epoch", "UTC0", 0, "1970-01-01 00:00:00"},
    {"BeforeTheEpoch", "UTC0", -1, "1969-12-31 23:59:59"},
    {"EastOfGreenwich", "XYZ-5:30", 1700000000, "2023-11-15 03:43:20"},
    {"WestOfGreenwich", "XYZ8", 1700000000, "2023-11-14 14:13:20"},
    {"LeapDay", "UTC0", 1709210096, "2024-02-29 12:34:56"},
    {"BeyondTheYear2038", "UTC0", 2147483648, "2038-01-19 03:14:08"},
    // Summer time starts on the last Sunday in March and ends on the last Sunday in October.
    {"BeforeSummerTime", "CET-1CEST,M3.5.0,M10.5.0/3", 1711846799, "2024-03-31 01:59:59"},
    {"SummerTime", "CET-1CEST,M3.5.0,M10.5.0/3", 1711846800, "2024-03-31 03:00:00"},
    {"FirstTwoOClock", "CET-1CEST,M3.5.0,M10.5.0/3", 1729987200, "2024-10-27 02:00:00"},
    {"SecondTwoOClock", "CET-1CEST,M3.5.0,M10.5.0/3", 1729990800, "2024-10-27 02:00:00"},
    // Times that the system cannot convert.
    {"LargestTime", "UTC0", std::numeric_limits<std::time_t>::max(), "unknown"},
    {"SmallestTime", "UTC0", std::numeric_limits<std::time_t>::min(), "unknown"},
};

class FormatTimestampTest : public ::testing::TestWithParam<TimestampCase> {
 protected:
  ~FormatTimestampTest() override {
    zone_.reset();
    ::tzset();
  }

  std::unique_ptr<Testing::ScopedEnvironment> zone_ =
      std::make_unique<Testing::ScopedEnvironment>("TZ", GetParam().zone);
};

TEST_P(FormatTimestampTest, UsesTheZoneOfTheMachine) {
  ::tzset();
  EXPECT_EQ(FormatTimestamp(GetParam().time), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Times, FormatTimestampTest, ::testing::ValuesIn(kTimestamps),
                         [](const auto& test) { return test.param.name; });

TEST(TimeFormatTest, WritesDurationsWithDaysInFront) {
  EXPECT_EQ(FormatDuration(0), "00:00:00");
  EXPECT_EQ(FormatDuration(59), "00:00:59");
  EXPECT_EQ(FormatDuration(3661), "01:01:01");
  EXPECT_EQ(FormatDuration(86399), "23:59:59");
  EXPECT_EQ(FormatDuration(86400), "1-00:00:00");
  EXPECT_EQ(FormatDuration(1000 * 86400 + 5), "1000-00:00:05");
  EXPECT_EQ(FormatDuration(-1), "00:00:00");
  EXPECT_EQ(FormatDuration(std::numeric_limits<long>::min()), "00:00:00");
  EXPECT_EQ(FormatDuration(std::numeric_limits<long>::max()), "106751991167300-15:30:07");
}

}  // namespace
}  // namespace Kestrel::Host
