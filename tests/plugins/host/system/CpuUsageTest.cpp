// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/CpuUsage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kestrel/KestrelException.h"
#include "support/ScopedTempDir.h"

namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using Testing::ScopedTempDir;
using ::testing::ThrowsMessage;

std::vector<CpuTimes> Parse(const std::string& text) {
  const ScopedTempDir proc;
  proc.Write("stat", text);
  return ReadCpuTimes(proc.GetPath());
}

std::vector<CpuUsage> Compare(const std::string& before, const std::string& after) {
  return CompareCpuTimes(Parse(before), Parse(after));
}

// Returns every field, in the order of the structure.
std::vector<long> Fields(const CpuUsage& usage) {
  return {usage.number,        usage.busy,  usage.user,      usage.nice,
          usage.system,        usage.idle,  usage.inputWait, usage.interrupt,
          usage.softInterrupt, usage.steal, usage.guest};
}

TEST(CpuUsageTest, ReadsEveryColumn) {
  const auto cpus = Parse("cpu  10 20 30 40 50 60 70 80 5 6\ncpu3 1 2 3 4 5 6 7 8 9 0\nintr 5\n");
  ASSERT_EQ(cpus.size(), 2u);
  EXPECT_EQ(cpus[0].number, -1);
  EXPECT_EQ(cpus[0].user, 10);
  EXPECT_EQ(cpus[0].nice, 20);
  EXPECT_EQ(cpus[0].system, 30);
  EXPECT_EQ(cpus[0].idle, 40);
  EXPECT_EQ(cpus[0].inputWait, 50);
  EXPECT_EQ(cpus[0].interrupt, 60);
  EXPECT_EQ(cpus[0].softInterrupt, 70);
  EXPECT_EQ(cpus[0].steal, 80);
  EXPECT_EQ(cpus[0].guest, 5);
  EXPECT_EQ(cpus[1].number, 3);
  EXPECT_EQ(cpus[1].user, 1);
  EXPECT_EQ(cpus[1].guest, 9);
}

TEST(CpuUsageTest, OldKernelsHaveFewerColumns) {
  const auto cpus = Parse("cpu 1 2 3 4\n");
  ASSERT_EQ(cpus.size(), 1u);
  EXPECT_EQ(cpus[0].idle, 4);
  EXPECT_EQ(cpus[0].inputWait, 0);
  EXPECT_EQ(cpus[0].guest, 0);
}

TEST(CpuUsageTest, NewKernelsMayHaveMoreColumns) {
  const auto cpus = Parse("cpu 1 2 3 4 5 6 7 8 9 10 11 12 new\n");
  ASSERT_EQ(cpus.size(), 1u);
  EXPECT_EQ(cpus[0].guest, 9);
}

struct DamagedCase {
  const char* name;
  const char* text;
};

const DamagedCase kDamaged[] = {
    {"TooFewColumns", "cpu 1 2 3\n"},
    {"NoColumns", "cpu\n"},
    {"AWord", "cpu 1 2 x 4\n"},
    {"AFraction", "cpu 1 2 3.5 4\n"},
    {"Negative", "cpu 1 2 3 -4\n"},
    {"MoreThan63Bits", "cpu 1 2 3 9223372036854775808\n"},
    {"NoNumber", "cpu 1 2 3 4\ncpux 1 2 3 4\n"},
    {"ANegativeNumber", "cpu 1 2 3 4\ncpu-1 1 2 3 4\n"},
    {"AHugeNumber", "cpu 1 2 3 4\ncpu99999999999999999999 1 2 3 4\n"},
    {"TheSecondIsCut", "cpu 1 2 3 4\ncpu0 1 2\n"},
};

class DamagedCpuTimesTest : public ::testing::TestWithParam<DamagedCase> {};

TEST_P(DamagedCpuTimesTest, IsAnErrorAndNotAShorterList) {
  const ScopedTempDir proc;
  const std::string path = proc.Write("stat", GetParam().text);
  EXPECT_THAT([&] { ReadCpuTimes(proc.GetPath()); },
              ThrowsMessage<KestrelException>("Unable to understand " + path));
}

INSTANTIATE_TEST_SUITE_P(Files, DamagedCpuTimesTest, ::testing::ValuesIn(kDamaged),
                         [](const auto& test) { return test.param.name; });

TEST(CpuUsageTest, AFileWithoutProcessorsIsAnError) {
  for (const char* const text : {"", "\n", "intr 1 2 3 4\nbtime 5\n"}) {
    const ScopedTempDir proc;
    const std::string path = proc.Write("stat", text);
    EXPECT_THAT([&] { ReadCpuTimes(proc.GetPath()); },
                ThrowsMessage<KestrelException>("Unable to find any processor in " + path))
        << text;
  }
}

TEST(CpuUsageTest, AMissingFileIsAnError) {
  EXPECT_THAT(
      [] { ReadCpuTimes("/nowhere"); },
      ThrowsMessage<KestrelException>("Unable to read /nowhere/stat: No such file or directory"));
}

TEST(CpuUsageTest, SharesAreHundredthsOfAPercent) {
  const auto usages = Compare("cpu 100 0 0 0 0 0 0 0 0 0\n", "cpu 110 20 30 840 60 3 7 30 5 0\n");
  ASSERT_EQ(usages.size(), 1u);
  // 1000 ticks passed: 10 user, 20 nice, 30 system, 840 idle, 60 wait, 3 and 7 interrupts, 30 steal
  EXPECT_THAT(Fields(usages[0]), ElementsAre(-1, 1000, 100, 200, 300, 8400, 600, 30, 70, 300, 50));
}

struct ShareCase {
  const char* name;
  const char* before;
  const char* after;
  long busy;
  long user;
  long idle;
};

const ShareCase kShares[] = {
    {"Idle", "cpu 5 0 0 100", "cpu 5 0 0 200", 0, 0, 10000},
    {"Busy", "cpu 5 0 0 100", "cpu 6 0 0 100", 10000, 10000, 0},
    {"AThirdIsRoundedDown", "cpu 0 0 0 0", "cpu 1 0 0 2", 3333, 3333, 6667},
    {"TwoThirdsAreRoundedUp", "cpu 0 0 0 0", "cpu 2 0 0 1", 6667, 6667, 3333},
    {"HalfOfAHundredthIsRoundedUp", "cpu 0 0 0 0", "cpu 1 0 0 19999", 1, 1, 10000},
    {"LessThanHalfOfAHundredthIsRoundedDown", "cpu 0 0 0 0", "cpu 1 0 0 99999", 0, 0, 10000},
    {"SystemTimeIsBusyTime", "cpu 0 0 0 0", "cpu 1 0 1 2", 5000, 2500, 5000},
    {"IdleTimeThatTheKernelLowered", "cpu 0 0 0 500", "cpu 10 0 0 400", 10000, 10000, 0},
    {"WaitThatTheKernelLowered", "cpu 0 0 0 0 50", "cpu 10 0 0 30 20", 2500, 2500, 7500},
    {"NothingPassed", "cpu 1 2 3 4", "cpu 1 2 3 4", -1, -1, -1},
    {"OnlyDecreases", "cpu 1 2 3 4", "cpu 0 0 0 0", -1, -1, -1},
    {"SumBeyond64Bits", "cpu 0 0 0 0",
     "cpu 9223372036854775807 0 9223372036854775807 9223372036854775807", 6667, 3333, 3333},
    {"OneTickOfMany", "cpu 9223372036854775806 0 0 9223372036854775806",
     "cpu 9223372036854775807 0 0 9223372036854775807", 5000, 5000, 5000},
};

class CpuShareTest : public ::testing::TestWithParam<ShareCase> {};

TEST_P(CpuShareTest, IsComputed) {
  const auto usages = Compare(GetParam().before, GetParam().after);
  ASSERT_EQ(usages.size(), 1u);
  EXPECT_EQ(usages[0].busy, GetParam().busy);
  EXPECT_EQ(usages[0].user, GetParam().user);
  EXPECT_EQ(usages[0].idle, GetParam().idle);
}

INSTANTIATE_TEST_SUITE_P(Samples, CpuShareTest, ::testing::ValuesIn(kShares),
                         [](const auto& test) { return test.param.name; });

TEST(CpuUsageTest, EachProcessorIsComparedWithItself) {
  const auto usages = Compare("cpu 0 0 0 0\ncpu0 0 0 0 0\ncpu1 0 0 0 100\n",
                              "cpu 10 0 0 110\ncpu0 10 0 0 0\ncpu1 0 0 0 110\n");
  ASSERT_EQ(usages.size(), 3u);
  EXPECT_EQ(usages[0].number, -1);
  EXPECT_EQ(usages[0].busy, 833);
  EXPECT_EQ(usages[1].number, 0);
  EXPECT_EQ(usages[1].busy, 10000);
  EXPECT_EQ(usages[2].number, 1);
  EXPECT_EQ(usages[2].busy, 0);
}

TEST(CpuUsageTest, AProcessorThatWasAddedBetweenTheSamplesHasUnknownShares) {
  const auto usages =
      Compare("cpu 0 0 0 0\ncpu0 0 0 0 0\n", "cpu 1 0 0 0\ncpu0 1 0 0 0\ncpu7 5 5 5 5\n");
  ASSERT_EQ(usages.size(), 3u);
  EXPECT_THAT(Fields(usages[2]), ElementsAre(7, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1));
}

TEST(CpuUsageTest, AProcessorThatWasRemovedBetweenTheSamplesIsNotListed) {
  const auto usages =
      Compare("cpu 0 0 0 0\ncpu0 0 0 0 0\ncpu1 0 0 0 0\n", "cpu 1 0 0 0\ncpu1 1 0 0 0\n");
  ASSERT_EQ(usages.size(), 2u);
  EXPECT_EQ(usages[1].number, 1);
  EXPECT_EQ(usages[1].busy, 10000);
}

TEST(CpuUsageTest, TheShareOfGuestsIsNeverGreaterThanThatOfPrograms) {
  // The kernel changes both counters together, but a reader may see only one of the changes.
  const auto usages = Compare("cpu 0 0 0 0 0 0 0 0 0", "cpu 10 0 0 10 0 0 0 0 15");
  ASSERT_EQ(usages.size(), 1u);
  EXPECT_EQ(usages[0].user, 5000);
  EXPECT_EQ(usages[0].guest, 5000);
}

TEST(CpuUsageTest, ReadsAMachineOfManyProcessors) {
  std::string before = "cpu 0 0 0 0\n";
  std::string after = "cpu 4096 0 0 4096\n";
  for (int i = 0; i < 4096; ++i) {
    before += "cpu" + std::to_string(i) + " 0 0 0 0 0 0 0 0 0 0\n";
    after += "cpu" + std::to_string(i) + " 1 0 0 1 0 0 0 0 0 0\n";
  }
  const auto usages = Compare(before, after);
  ASSERT_EQ(usages.size(), 4097u);
  EXPECT_EQ(usages.back().number, 4095);
  EXPECT_EQ(usages.back().busy, 5000);
}

}  // namespace
}  // namespace Kestrel::Host
