// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/DeviceNumber.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include "support/Witness.h"

namespace Kestrel::Host {
namespace {

using ::testing::Optional;
using Testing::Witness;

TEST(DeviceNumberTest, IsReadFromMajorAndMinorNumber) {
  EXPECT_THAT(ParseDeviceNumber("0:0"), Optional(makedev(0, 0)));
  EXPECT_THAT(ParseDeviceNumber("8:1"), Optional(makedev(8, 1)));
  EXPECT_THAT(ParseDeviceNumber("259:1048575"), Optional(makedev(259, 1048575)));
}

TEST(DeviceNumberTest, RejectsAnyOtherString) {
  for (const char* const text : {"", ":", "8", "8:", ":1", "8:1:2", "8,1", "a:1", "8:b", "8:1x",
                                 "99999999999999999999:1", "8:99999999999999999999"}) {
    EXPECT_EQ(ParseDeviceNumber(text), std::nullopt) << text;
  }
}

TEST(DeviceNumberTest, HasNoSignsSpacesOrLeadingZeros) {
  for (const char* const text : {"-1:2", "1:-2", "+8:1", "8:+1", "-0:1", "08:1", "8:01"}) {
    EXPECT_EQ(ParseDeviceNumber(text), std::nullopt) << text;
  }
  for (const char* const text : {" 8:1", "8 :1", "8: 1", "8:1 ", "8:1\n"}) {
    EXPECT_EQ(ParseDeviceNumber(text), std::nullopt) << text;
  }
}

TEST(DeviceNumberTest, HasNumbersOfAtMost32Bits) {
  EXPECT_THAT(ParseDeviceNumber("8:4294967295"), Optional(makedev(8, 4294967295u)));
  for (const char* const text : {"4294967304:1", "8:4294967296", "8:4294967297"}) {
    EXPECT_EQ(ParseDeviceNumber(text), std::nullopt) << text;
  }
}

TEST(DeviceNumberTest, IsFormattedAsItIsParsed) {
  for (const char* const text : {"0:0", "8:1", "253:7", "4095:1048575"}) {
    EXPECT_EQ(FormatDeviceNumber(*ParseDeviceNumber(text)), text);
  }
}

TEST(DeviceNumberTest, AgreesWithStat) {
  struct stat status = {};
  ASSERT_EQ(::stat("/dev/null", &status), 0);
  EXPECT_EQ(FormatDeviceNumber(status.st_rdev) + "\n", Witness("stat -c '%Hr:%Lr' /dev/null"));
}

}  // namespace
}  // namespace Kestrel::Host
