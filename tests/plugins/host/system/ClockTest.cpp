// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/Clock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "kestrel/KestrelException.h"
#include "plugins/host/support/PlainUser.h"
#include "support/ScopedEnvironment.h"
#include "support/ScopedTempDir.h"

namespace Kestrel::Host {
namespace {

using Testing::PlainUser;
using Testing::ScopedEnvironment;
using Testing::ScopedTempDir;
using ::testing::ThrowsMessage;

struct DisciplineCase {
  const char* name;
  int result;
  int status;
  bool isSynchronized;
};

const DisciplineCase kDisciplines[] = {
    {"Fine", TIME_OK, STA_PLL, true},
    {"WithoutAnyFlag", TIME_OK, 0, true},
    {"BeforeALeapSecond", TIME_INS, STA_PLL | STA_INS, true},
    {"Unsynchronized", TIME_ERROR, STA_UNSYNC, false},
    {"UnsynchronizedBeforeALeapSecond", TIME_INS, STA_UNSYNC | STA_INS, false},
    {"AnError", TIME_ERROR, STA_PPSSIGNAL, false},
};

class ClockDisciplineTest : public ::testing::TestWithParam<DisciplineCase> {};

TEST_P(ClockDisciplineTest, IsTakenFromTheReportOfTheKernel) {
  struct timex report = {};
  report.status = GetParam().status;
  report.maxerror = 1234;
  report.esterror = 56;
  const ClockDiscipline discipline = ToDiscipline(GetParam().result, report);
  EXPECT_EQ(discipline.isSynchronized, GetParam().isSynchronized);
  EXPECT_EQ(discipline.maximumError, 1234);
  EXPECT_EQ(discipline.estimatedError, 56);
}

INSTANTIATE_TEST_SUITE_P(Reports, ClockDisciplineTest, ::testing::ValuesIn(kDisciplines),
                         [](const auto& test) { return test.param.name; });

class ZoneNameTest : public ::testing::Test {
 protected:
  void Link(const std::string& target) const {
    ASSERT_EQ(::symlink(target.c_str(), etc_.GetPath("localtime").c_str()), 0);
  }
  std::string Read() const { return ReadZoneName(etc_.GetPath()); }

  const ScopedEnvironment zone_{"TZ", std::nullopt};
  const ScopedTempDir etc_;
};

TEST_F(ZoneNameTest, IsUtcWithoutAnyFile) { EXPECT_EQ(Read(), "UTC"); }

TEST_F(ZoneNameTest, IsTheTargetOfTheLink) {
  Link("/usr/share/zoneinfo/America/Argentina/Ushuaia");
  etc_.Write("timezone", "Not/This\n");
  EXPECT_EQ(Read(), "America/Argentina/Ushuaia");
}

TEST_F(ZoneNameTest, ALinkMayBeRelative) {
  Link("../usr/share/zoneinfo/Europe/Berlin");
  EXPECT_EQ(Read(), "Europe/Berlin");
}

TEST_F(ZoneNameTest, IsReadFromTheFileTimezoneIfTheLinkNamesNoZone) {
  Link("/etc/zone-of-the-house");
  EXPECT_EQ(Read(), "unknown");
  etc_.Write("timezone", "Asia/Kolkata\n# more\n");
  EXPECT_EQ(Read(), "Asia/Kolkata");
}

TEST_F(ZoneNameTest, IsReadFromTheFileTimezoneIfLocaltimeIsNotALink) {
  etc_.Write("localtime", "TZif2");
  EXPECT_EQ(Read(), "unknown");
  etc_.Write("timezone", "Asia/Tokyo");
  EXPECT_EQ(Read(), "Asia/Tokyo");
}

TEST_F(ZoneNameTest, AnEmptyFileMeansUtc) {
  etc_.Write("timezone", "\n");
  EXPECT_EQ(Read(), "UTC");
}

struct VariableCase {
  const char* name;
  const char* value;
  const char* zone;
};

const VariableCase kVariables[] = {
    {"AName", "Asia/Tokyo", "Asia/Tokyo"},
    {"AfterAColon", ":Asia/Tokyo", "Asia/Tokyo"},
    {"ARule", "CET-1CEST,M3.5.0,M10.5.0/3", "CET-1CEST,M3.5.0,M10.5.0/3"},
    {"Empty", "", "UTC"},
    {"OnlyAColon", ":", "UTC"},
};

class ZoneVariableTest : public ::testing::TestWithParam<VariableCase> {};

TEST_P(ZoneVariableTest, TakesPrecedenceOverTheFiles) {
  const ScopedEnvironment zone("TZ", std::string(GetParam().value));
  const ScopedTempDir etc;
  ASSERT_EQ(::symlink("/usr/share/zoneinfo/Europe/Berlin", etc.GetPath("localtime").c_str()), 0);
  EXPECT_EQ(ReadZoneName(etc.GetPath()), GetParam().zone);
}

INSTANTIATE_TEST_SUITE_P(Values, ZoneVariableTest, ::testing::ValuesIn(kVariables),
                         [](const auto& test) { return test.param.name; });

struct OffsetCase {
  long seconds;
  const char* text;
};

TEST(ClockOffsetTest, HasASignHoursAndMinutes) {
  const OffsetCase cases[] = {{0, "+00:00"},        {3600, "+01:00"},    {-3600, "-01:00"},
                              {19800, "+05:30"},    {-12600, "-03:30"},  {20700, "+05:45"},
                              {50400, "+14:00"},    {-43200, "-12:00"},  {-1800, "-00:30"},
                              {-2670, "-00:44:30"}, {4772, "+01:19:32"}, {59, "+00:00:59"},
                              {-1, "-00:00:01"},    {360000, "+100:00"}};
  for (const OffsetCase& each : cases) {
    EXPECT_EQ(FormatOffset(each.seconds), each.text) << each.seconds;
  }
}

class HardwareClockTest : public ::testing::Test {
 protected:
  std::optional<HardwareClock> Read() const {
    return ReadHardwareClock(root_.GetPath("sys"), root_.GetPath("etc"));
  }
  void Clock(const std::string& name, const std::string& seconds, const std::string& isSource) {
    root_.Write("sys/class/rtc/" + name + "/since_epoch", seconds);
    root_.Write("sys/class/rtc/" + name + "/hctosys", isSource);
  }

  const ScopedTempDir root_;
};

TEST_F(HardwareClockTest, MayBeMissing) {
  EXPECT_EQ(Read(), std::nullopt);
  root_.MakeDirectory("sys/class/rtc");
  EXPECT_EQ(Read(), std::nullopt);
}

TEST_F(HardwareClockTest, ShowsUtcUnlessAFileSaysOtherwise) {
  Clock("rtc0", "1700000000\n", "1\n");
  const auto clock = Read();
  ASSERT_TRUE(clock.has_value());
  EXPECT_EQ(clock->device, "rtc0");
  EXPECT_EQ(clock->seconds, 1700000000);
  EXPECT_FALSE(clock->isLocalTime);
}

TEST_F(HardwareClockTest, MayShowTheTimeOfTheZone) {
  Clock("rtc0", "1700000000\n", "1\n");
  const std::pair<const char*, bool> cases[] = {{"0.0 0 0.0\n0\nLOCAL\n", true},
                                                {"0.0 0 0.0\n0\nLOCAL", true},
                                                {"0.0 0 0.0\n0\nUTC\n", false},
                                                {"0.0 0 0.0\n0\n", false},
                                                {"LOCAL\n", false},
                                                {"", false},
                                                {"\n\nLOCALE\n", false},
                                                {"\r\n\r\nLOCAL\r\n", true}};
  for (const auto& [text, isLocal] : cases) {
    root_.Write("etc/adjtime", text);
    EXPECT_EQ(Read()->isLocalTime, isLocal) << text;
  }
}

TEST_F(HardwareClockTest, IsTheOneFromWhichTheKernelTookTheTime) {
  Clock("rtc0", "1\n", "0\n");
  Clock("rtc1", "2\n", "1\n");
  Clock("rtc2", "3\n", "0\n");
  EXPECT_EQ(Read()->device, "rtc1");
  EXPECT_EQ(Read()->seconds, 2);
}

TEST_F(HardwareClockTest, IsTheFirstOneIfTheKernelTookTheTimeFromNone) {
  Clock("rtc1", "2\n", "0\n");
  Clock("rtc0", "-5\n", "0\n");
  EXPECT_EQ(Read()->device, "rtc0");
  EXPECT_EQ(Read()->seconds, -5);
}

TEST_F(HardwareClockTest, IsAnErrorWithoutANumber) {
  for (const char* const text : {"", "soon\n", "1700000000.5\n", "1 2\n"}) {
    Clock("rtc0", text, "1\n");
    EXPECT_THAT([this] { Read(); },
                ThrowsMessage<KestrelException>("Unable to understand " +
                                                root_.GetPath("sys/class/rtc/rtc0/since_epoch")))
        << text;
  }
}

TEST_F(HardwareClockTest, IsAnErrorIfItCannotBeRead) {
  root_.MakeDirectory("sys/class/rtc/rtc0");
  EXPECT_THAT([this] { Read(); },
              ThrowsMessage<KestrelException>("Unable to read " +
                                              root_.GetPath("sys/class/rtc/rtc0/since_epoch") +
                                              ": No such file or directory"));
}

TEST_F(HardwareClockTest, IsAnErrorInAnUnreadableFolder) {
  Clock("rtc0", "1\n", "1\n");
  const std::string folder = root_.GetPath("sys/class/rtc");
  ASSERT_EQ(::chmod(root_.GetPath().c_str(), 0755), 0);
  ASSERT_EQ(::chmod(folder.c_str(), 0), 0);
  {
    const PlainUser user;
    EXPECT_THAT([this] { Read(); }, ThrowsMessage<KestrelException>("Unable to read " + folder +
                                                                    ": Permission denied"));
  }
  ASSERT_EQ(::chmod(folder.c_str(), 0755), 0);
}

}  // namespace
}  // namespace Kestrel::Host
