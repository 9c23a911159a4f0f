// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/TimeFormat.h"

#include <gtest/gtest.h>

#include <ctime>
#include <limits>

#include "support/ScopedEnvironment.h"

namespace Kestrel::Host {
namespace {

TEST(TimeFormatTest, WritesMomentsInTheZoneOfTheMachine) {
  {
    const Testing::ScopedEnvironment zone("TZ", "XYZ-5:30");
    ::tzset();
    EXPECT_EQ(FormatTimestamp(1700000000), "2023-11-15 03:43:20");
  }
  ::tzset();
  {
    const Testing::ScopedEnvironment zone("TZ", "UTC0");
    ::tzset();
    EXPECT_EQ(FormatTimestamp(0), "1970-01-01 00:00:00");
    EXPECT_EQ(FormatTimestamp(std::numeric_limits<std::time_t>::max()), "");
  }
  ::tzset();
}

TEST(TimeFormatTest, WritesSpansWithDaysInFront) {
  EXPECT_EQ(FormatDuration(0), "00:00:00");
  EXPECT_EQ(FormatDuration(59), "00:00:59");
  EXPECT_EQ(FormatDuration(3661), "01:01:01");
  EXPECT_EQ(FormatDuration(86399), "23:59:59");
  EXPECT_EQ(FormatDuration(86400), "1-00:00:00");
  EXPECT_EQ(FormatDuration(1000 * 86400 + 5), "1000-00:00:05");
  EXPECT_EQ(FormatDuration(-1), "00:00:00");
}

}  // namespace
}  // namespace Kestrel::Host
