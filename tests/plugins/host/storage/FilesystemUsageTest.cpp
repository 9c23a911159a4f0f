// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/storage/FilesystemUsage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace Kestrel::Host {
namespace {

constexpr std::uint64_t kMaxUnsigned = std::numeric_limits<std::uint64_t>::max();
constexpr long kMaxLong = std::numeric_limits<long>::max();

struct UsageCase {
  const char* name;
  std::uint64_t size;
  std::uint64_t free;
  std::uint64_t available;
  std::uint64_t used;
  long percent;
};

const UsageCase kUsageCases[] = {
    {"Nothing", 0, 0, 0, 0, 0},
    {"Empty", 100, 100, 100, 0, 0},
    {"Full", 100, 0, 0, 100, 100},
    {"Half", 100, 50, 50, 50, 50},
    {"OneByteOfMany", 1000, 999, 999, 1, 1},
    {"OneByteLeft", 1000, 1, 1, 999, 100},
    {"ExactlyTwoPercent", 100, 98, 98, 2, 2},
    // The space that is reserved for the superuser is neither used nor available.
    {"AllKeptForTheSuperuser", 100, 10, 0, 90, 100},
    {"SomeKeptForTheSuperuser", 100, 20, 10, 80, 89},
    // Numbers that contradict each other.
    {"MoreFreeThanThereIs", 100, 200, 200, 0, 0},
    {"MoreAvailableThanFree", 100, 50, 150, 50, 25},
    {"LargestNumbers", kMaxUnsigned, 0, kMaxUnsigned, kMaxUnsigned, 50},
};

class FilesystemUsageCaseTest : public ::testing::TestWithParam<UsageCase> {};

TEST_P(FilesystemUsageCaseTest, IsComputed) {
  const UsageCase& test = GetParam();
  FilesystemUsage usage;
  usage.size = test.size;
  usage.free = test.free;
  usage.available = test.available;
  EXPECT_EQ(usage.GetUsed(), test.used);
  EXPECT_EQ(usage.GetPercent(), test.percent);
}

INSTANTIATE_TEST_SUITE_P(Usages, FilesystemUsageCaseTest, ::testing::ValuesIn(kUsageCases),
                         [](const auto& test) { return test.param.name; });

TEST(FilesystemUsageTest, CountsInodesInUse) {
  FilesystemUsage usage;
  EXPECT_EQ(usage.GetUsedInodes(), 0u) << "no limit";
  usage.inodes = 10;
  usage.freeInodes = 4;
  EXPECT_EQ(usage.GetUsedInodes(), 6u);
  usage.freeInodes = 11;
  EXPECT_EQ(usage.GetUsedInodes(), 0u) << "more free than there are";
}

TEST(FilesystemUsageTest, NumbersBeyondALongBecomeTheLargestLong) {
  EXPECT_EQ(ToLong(0), 0);
  EXPECT_EQ(ToLong(kMaxLong), kMaxLong);
  EXPECT_EQ(ToLong(std::uint64_t(kMaxLong) + 1), kMaxLong);
  EXPECT_EQ(ToLong(kMaxUnsigned), kMaxLong);
}

}  // namespace
}  // namespace Kestrel::Host
