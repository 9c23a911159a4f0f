// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/storage/DiskCounters.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kestrel/KestrelException.h>

#include <string>
#include <vector>

#include "support/ScopedTempDir.h"

namespace Kestrel::Host {
namespace {

using ::testing::IsEmpty;
using Testing::ScopedTempDir;
using ::testing::ThrowsMessage;

std::vector<DiskCounters> Read(const std::string& text) {
  const ScopedTempDir folder;
  return ReadDiskCounters(folder.Write("diskstats", text));
}

void ExpectTransfer(const TransferCounters& counters, long count, long merged, long bytes,
                    long milliseconds) {
  EXPECT_EQ(counters.count, count);
  EXPECT_EQ(counters.merged, merged);
  EXPECT_EQ(counters.bytes, bytes);
  EXPECT_EQ(counters.milliseconds, milliseconds);
}

TEST(DiskCountersTest, ReadsEveryColumn) {
  const auto devices = Read(
      "   8       0 sda 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17\n"
      " 104       0 cciss!c0d0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0\n");
  ASSERT_EQ(devices.size(), 2U);
  const DiskCounters& sda = devices[0];
  EXPECT_EQ(sda.name, "sda");
  ExpectTransfer(sda.reads, 1, 2, 3 * 512, 4);
  ExpectTransfer(sda.writes, 5, 6, 7 * 512, 8);
  EXPECT_EQ(sda.inProgress, 9);
  EXPECT_EQ(sda.busyMilliseconds, 10);
  EXPECT_EQ(sda.queuedMilliseconds, 11);
  ExpectTransfer(sda.discards, 12, 13, 14 * 512, 15);
  EXPECT_EQ(sda.flushes, 16);
  EXPECT_EQ(sda.flushMilliseconds, 17);
  EXPECT_FALSE(sda.IsUnused());
  EXPECT_EQ(devices[1].name, "cciss/c0d0");
  EXPECT_TRUE(devices[1].IsUnused());
}

TEST(DiskCountersTest, WhatAnOldKernelDoesNotCountIsZero) {
  const auto devices = Read(
      "8 0 sda 1 2 3 4 5 6 7 8 9 10 11\n"
      "8 16 sdb 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15\n");
  ASSERT_EQ(devices.size(), 2U);
  ExpectTransfer(devices[0].discards, 0, 0, 0, 0);
  EXPECT_EQ(devices[0].queuedMilliseconds, 11);
  ExpectTransfer(devices[1].discards, 12, 13, 14 * 512, 15);
  EXPECT_EQ(devices[1].flushes, 0);
}

TEST(DiskCountersTest, WhatANewerKernelCountsIsIgnored) {
  const auto devices = Read("8 0 sda 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19\n");
  ASSERT_EQ(devices.size(), 1U);
  EXPECT_EQ(devices[0].flushMilliseconds, 17);
}

TEST(DiskCountersTest, ANumberOfBytesBeyondALongBecomesTheLargestLong) {
  const auto devices = Read("8 0 sda 1 2 9223372036854775807 4 5 6 7 8 9 10 11\n");
  ASSERT_EQ(devices.size(), 1U);
  EXPECT_EQ(devices[0].reads.bytes, 9223372036854775807);
}

TEST(DiskCountersTest, WithoutDevicesTheListIsEmpty) { EXPECT_THAT(Read(""), IsEmpty()); }

class DamagedCountersTest : public ::testing::TestWithParam<const char*> {};

TEST_P(DamagedCountersTest, AreAnError) {
  const ScopedTempDir folder;
  const std::string path = folder.Write(
      "diskstats", "8 0 sda 1 2 3 4 5 6 7 8 9 10 11\n" + std::string(GetParam()) + "\n");
  EXPECT_THAT([&] { ReadDiskCounters(path); },
              ThrowsMessage<KestrelException>("Unable to read " + path +
                                              ": not the counters of a device: " + GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Lines, DamagedCountersTest,
                         ::testing::Values("", "8", "8 0 sdb", "8 0 sdb 1 2 3 4 5 6 7 8 9 10",
                                           "8 0 sdb x 2 3 4 5 6 7 8 9 10 11",
                                           "8 0 sdb 1 2 3 4 5 6 7 8 9 10 11 1.5",
                                           "8 0 sdb 99999999999999999999 2 3 4 5 6 7 8 9 10 11"));

TEST(DiskCountersTest, AMissingFileIsAnError) {
  EXPECT_THAT(
      [] { ReadDiskCounters("/nowhere"); },
      ThrowsMessage<KestrelException>("Unable to read /nowhere: No such file or directory"));
}

TEST(DiskCountersTest, CountsWhatHappenedBetweenTwoReadings) {
  const auto first = Read(
      "8 0 sda 10 20 30 40 50 60 70 80 9 100 110 120 130 140 150 160 170\n"
      "8 1 gone 1 1 1 1 1 1 1 1 1 1 1\n");
  const auto second = Read(
      "8 16 new 1 2 3 4 5 6 7 8 9 10 11\n"
      "8 0 sda 11 22 33 44 55 66 77 88 3 109 120 131 142 153 164 175 186\n");
  const auto counted = CountedBetween(first, second);
  ASSERT_EQ(counted.size(), 2U);
  EXPECT_EQ(counted[0].name, "new");
  ExpectTransfer(counted[0].reads, 1, 2, 3 * 512, 4);
  EXPECT_EQ(counted[1].name, "sda");
  ExpectTransfer(counted[1].reads, 1, 2, 3 * 512, 4);
  ExpectTransfer(counted[1].writes, 5, 6, 7 * 512, 8);
  ExpectTransfer(counted[1].discards, 11, 12, 13 * 512, 14);
  EXPECT_EQ(counted[1].flushes, 15);
  EXPECT_EQ(counted[1].flushMilliseconds, 16);
  EXPECT_EQ(counted[1].busyMilliseconds, 9);
  EXPECT_EQ(counted[1].queuedMilliseconds, 10);
  EXPECT_EQ(counted[1].inProgress, 3) << "it is no counter";
}

TEST(DiskCountersTest, ACounterThatRestartedCountsFromZero) {
  const auto counted = CountedBetween(Read("8 0 sda 10 0 10 0 0 0 0 0 0 4294967290 0\n"),
                                      Read("8 0 sda 4 0 5 0 0 0 0 0 0 6 0\n"));
  ASSERT_EQ(counted.size(), 1U);
  EXPECT_EQ(counted[0].reads.count, 4);
  EXPECT_EQ(counted[0].reads.bytes, 5 * 512);
  EXPECT_EQ(counted[0].busyMilliseconds, 6);
}

struct UseCase {
  const char* name;
  const char* numbers;
  bool isUnused;
};

class DiskUseTest : public ::testing::TestWithParam<UseCase> {};

TEST_P(DiskUseTest, IsRecognized) {
  const auto devices = Read(std::string("8 0 sda ") + GetParam().numbers + "\n");
  ASSERT_EQ(devices.size(), 1U);
  EXPECT_EQ(devices[0].IsUnused(), GetParam().isUnused);
}

const UseCase kUses[] = {
    {"Never", "0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0", true},
    {"Read", "1 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0", false},
    {"Written", "0 0 0 0 1 0 0 0 0 0 0 0 0 0 0 0 0", false},
    {"InProgress", "0 0 0 0 0 0 0 0 1 0 0 0 0 0 0 0 0", false},
    {"Discarded", "0 0 0 0 0 0 0 0 0 0 0 1 0 0 0 0 0", false},
    {"Flushed", "0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 1 0", false},
};
INSTANTIATE_TEST_SUITE_P(Uses, DiskUseTest, ::testing::ValuesIn(kUses),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace Kestrel::Host
