// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/Hundredths.h"

#include <gtest/gtest.h>

#include <limits>

namespace Kestrel::Host {
namespace {

TEST(HundredthsTest, AreWrittenAsADecimalFraction) {
  EXPECT_EQ(FormatHundredths(0), "0.00");
  EXPECT_EQ(FormatHundredths(5), "0.05");
  EXPECT_EQ(FormatHundredths(46), "0.46");
  EXPECT_EQ(FormatHundredths(100), "1.00");
  EXPECT_EQ(FormatHundredths(123456), "1234.56");
  EXPECT_EQ(FormatHundredths(-5), "-0.05");
  EXPECT_EQ(FormatHundredths(std::numeric_limits<long>::max()), "92233720368547758.07");
  EXPECT_EQ(FormatHundredths(std::numeric_limits<long>::min()), "-92233720368547758.08");
}

TEST(HundredthsTest, AreParsedFromADecimalFraction) {
  EXPECT_EQ(ParseHundredths("0.46"), 46);
  EXPECT_EQ(ParseHundredths("12.00"), 1200);
  EXPECT_EQ(ParseHundredths("7"), 700);
  EXPECT_EQ(ParseHundredths("7.5"), 750);
  EXPECT_EQ(ParseHundredths("7.999"), 799) << "further digits are cut off";
  EXPECT_EQ(ParseHundredths("00.01"), 1);
  EXPECT_EQ(ParseHundredths("92233720368547758.07"), std::numeric_limits<long>::max());
}

TEST(HundredthsTest, RejectAnyOtherString) {
  for (const char* const text : {"", ".", "1.", ".5", "-1", "+1", "1,5", "1.2.3", " 1", "1 ", "x",
                                 "1.x", "1e3", "92233720368547758.08", "99999999999999999999"}) {
    EXPECT_EQ(ParseHundredths(text), std::nullopt) << text;
  }
}

TEST(HundredthsTest, AreParsedAsTheyAreWritten) {
  for (const long hundredths : {0L, 1L, 99L, 100L, 101L, 98765L}) {
    EXPECT_EQ(ParseHundredths(FormatHundredths(hundredths)), hundredths);
  }
}

}  // namespace
}  // namespace Kestrel::Host
