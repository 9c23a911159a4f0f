// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/SystemStatistics.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <limits>

#include "kestrel/KestrelException.h"
#include "plugins/host/support/PlainUser.h"
#include "support/ScopedTempDir.h"

namespace Kestrel::Host {
namespace {

using ::testing::HasSubstr;
using Testing::ScopedTempDir;
using ::testing::ThrowsMessage;

constexpr long kKib = 1024;

TEST(SystemStatisticsTest, RoundsTheUptimeDown) {
  const ScopedTempDir proc;
  proc.Write("uptime", "86399.99 123.45\n");
  EXPECT_EQ(ReadUptime(proc.GetPath()).seconds, 86399);
  EXPECT_EQ(ReadUptime(proc.GetPath()).hundredths, 8639999);
  EXPECT_EQ(ReadUptime(proc.GetPath()).idleSeconds, 123);
}

TEST(SystemStatisticsTest, ReadsTheLoad) {
  const ScopedTempDir proc;
  proc.Write("loadavg", "0.46 12.00 0.32 2/95 25897\n");
  const Load load = ReadLoad(proc.GetPath());
  EXPECT_EQ(load.oneMinute, 46);
  EXPECT_EQ(load.fiveMinutes, 1200);
  EXPECT_EQ(load.fifteenMinutes, 32);
  EXPECT_EQ(load.running, 2);
  EXPECT_EQ(load.tasks, 95);
}

TEST(SystemStatisticsTest, ReadsTheMemory) {
  const ScopedTempDir proc;
  proc.Write("meminfo",
             "MemTotal:       1000 kB\nMemFree:  200 kB\nMemAvailable:  700 kB\nBuffers: 10 kB\n"
             "Cached: 400 kB\nSwapCached: 3 kB\nSwapTotal: 50 kB\nSwapFree: 20 kB\nShmem: 5 kB\n"
             "SReclaimable: 40 kB\nHugePages_Total: 0\n");
  const Memory memory = ReadMemory(proc.GetPath());
  EXPECT_EQ(memory.total, 1000 * kKib);
  EXPECT_EQ(memory.free, 200 * kKib);
  EXPECT_EQ(memory.available, 700 * kKib);
  EXPECT_EQ(memory.shared, 5 * kKib);
  EXPECT_EQ(memory.buffers, 10 * kKib);
  EXPECT_EQ(memory.cached, 440 * kKib);
  EXPECT_EQ(memory.swapTotal, 50 * kKib);
  EXPECT_EQ(memory.swapFree, 20 * kKib);
}

TEST(SystemStatisticsTest, MemoryInUseIsWhatIsNotAvailable) {
  const ScopedTempDir proc;
  proc.Write("meminfo",
             "MemTotal: 1000 kB\nMemFree: 200 kB\nMemAvailable: 700 kB\nSwapTotal: 50 kB\n"
             "SwapFree: 20 kB\n");
  const Memory memory = ReadMemory(proc.GetPath());
  EXPECT_EQ(memory.GetUsed(), 300 * kKib);
  EXPECT_EQ(memory.GetSwapUsed(), 30 * kKib);
}

TEST(SystemStatisticsTest, NumbersAtTheLimitsOf64BitsDoNotOverflow) {
  constexpr long kMax = std::numeric_limits<long>::max();
  const std::string largest = " 9223372036854775807 kB\n";
  const std::string smallest = " -9223372036854775808 kB\n";
  const ScopedTempDir proc;
  proc.Write("meminfo", "MemTotal:" + largest + "MemFree: 0 kB\nMemAvailable:" + smallest +
                            "Cached:" + largest + "SReclaimable:" + largest +
                            "SwapTotal:" + largest + "SwapFree:" + smallest);
  const Memory memory = ReadMemory(proc.GetPath());
  EXPECT_EQ(memory.cached, kMax);
  EXPECT_EQ(memory.GetUsed(), kMax);
  EXPECT_EQ(memory.GetSwapUsed(), kMax);
}

TEST(SystemStatisticsTest, WorksWithTheMemoryOfOldKernels) {
  const ScopedTempDir proc;
  proc.Write("meminfo", "MemTotal: 1000 kB\nMemFree: 200 kB\nBuffers:\n");
  const Memory memory = ReadMemory(proc.GetPath());
  EXPECT_EQ(memory.available, 200 * kKib);
  EXPECT_EQ(memory.buffers, 0);
  EXPECT_EQ(memory.swapTotal, 0);
}

TEST(SystemStatisticsTest, ReadsWhenTheMachineStarted) {
  const ScopedTempDir proc;
  proc.Write("stat", "cpu  1 2 3\nintr 5 6\nbtime 1700000000\nprocesses 7\n");
  EXPECT_EQ(ReadStartTime(proc.GetPath()), 1700000000);
}

TEST(SystemStatisticsTest, ReportsAMissingFile) {
  const auto message = [](const char* file) {
    return std::string("Unable to read /nowhere/") + file + ": No such file or directory";
  };
  EXPECT_THAT([] { ReadUptime("/nowhere"); }, ThrowsMessage<KestrelException>(message("uptime")));
  EXPECT_THAT([] { ReadLoad("/nowhere"); }, ThrowsMessage<KestrelException>(message("loadavg")));
  EXPECT_THAT([] { ReadMemory("/nowhere"); }, ThrowsMessage<KestrelException>(message("meminfo")));
  EXPECT_THAT([] { ReadStartTime("/nowhere"); }, ThrowsMessage<KestrelException>(message("stat")));
}

TEST(SystemStatisticsTest, ReportsADamagedFile) {
  const ScopedTempDir proc;
  const auto refuses = [&proc](const char* file, const char* text, auto read) {
    proc.Write(file, text);
    EXPECT_THAT([&] { read(proc.GetPath()); },
                ThrowsMessage<KestrelException>("Unable to understand " + proc.GetPath(file)))
        << text;
  };
  for (const char* const text : {"", "1.5", "x 1", "1 y", ". ."}) {
    refuses("uptime", text, ReadUptime);
  }
  for (const char* const text : {"", "1 2 3", "1 2 3 4", "1 2 3 x/4", "1 2 3 4/y", "1 2 3 4/5/6",
                                 "x 2 3 4/5", "1 -2 3 4/5", "1 2 3. 4/5"}) {
    refuses("loadavg", text, ReadLoad);
  }
  for (const char* const text : {"", "MemTotal: 5 kB\n", "MemFree: 5 kB\n", "MemTotal: x kB\n"}) {
    refuses("meminfo", text, ReadMemory);
  }
  for (const char* const text : {"", "cpu 1\n", "btime x\n", "btime\n"}) {
    refuses("stat", text, ReadStartTime);
  }
}

struct MemoryLineCase {
  const char* name;
  const char* line;
  long buffers;
};

// An additional line, and the resulting size of the buffers in bytes.
const MemoryLineCase kMemoryLines[] = {
    {"Usual", "Buffers:          12 kB", 12 * kKib},
    {"WithoutUnit", "Buffers: 12", 12 * kKib},
    {"WithoutSpace", "Buffers:12 kB", 12 * kKib},
    {"Tab", "Buffers:\t12 kB", 12 * kKib},
    {"Absent", "", 0},
    {"NoNumber", "Buffers:", 0},
    {"Word", "Buffers: many kB", 0},
    {"Beyond64Bits", "Buffers: 9223372036854775808 kB", 0},
    {"LargestNumber", "Buffers: 9223372036854775807 kB", 9223372036854775807},
    {"MoreBytesThan64Bits", "Buffers: 9007199254740992 kB", 9223372036854775807},
    {"MostBytes", "Buffers: 9007199254740991 kB", 9223372036854774784},
    {"LongerName", "BuffersHuge: 12 kB", 0},
    {"ShorterName", "Buffer: 12 kB", 0},
    {"WithoutColon", "Buffers 12 kB", 0},
    {"FirstOfTwo", "Buffers: 1 kB\nBuffers: 2 kB", 1 * kKib},
};

class MemoryLineTest : public ::testing::TestWithParam<MemoryLineCase> {};

TEST_P(MemoryLineTest, IsRead) {
  const ScopedTempDir proc;
  proc.Write("meminfo", std::string("MemTotal: 9 kB\nMemFree: 3 kB\n") + GetParam().line + "\n");
  EXPECT_EQ(ReadMemory(proc.GetPath()).buffers, GetParam().buffers);
}

INSTANTIATE_TEST_SUITE_P(Lines, MemoryLineTest, ::testing::ValuesIn(kMemoryLines),
                         [](const auto& test) { return test.param.name; });

struct StatisticsFile {
  const char* file;
  void (*read)(const std::string& proc);
};

const StatisticsFile kStatisticsFiles[] = {
    {"uptime", [](const std::string& proc) { ReadUptime(proc); }},
    {"loadavg", [](const std::string& proc) { ReadLoad(proc); }},
    {"meminfo", [](const std::string& proc) { ReadMemory(proc); }},
    {"stat", [](const std::string& proc) { ReadStartTime(proc); }},
};

class StatisticsErrorTest : public ::testing::TestWithParam<StatisticsFile> {
 protected:
  void ExpectUnreadable(const char* reason) const {
    EXPECT_THAT([this] { GetParam().read(proc_.GetPath()); },
                ThrowsMessage<KestrelException>("Unable to read " + proc_.GetPath(GetParam().file) +
                                                ": " + reason));
  }

  ScopedTempDir proc_;
};

TEST_P(StatisticsErrorTest, AFileThatMayNotBeReadIsReported) {
  ::chmod(proc_.GetPath().c_str(), 0755);
  ASSERT_EQ(::chmod(proc_.Write(GetParam().file, "1 1\n").c_str(), 0), 0);
  const Testing::PlainUser user;
  ExpectUnreadable("Permission denied");
}

TEST_P(StatisticsErrorTest, AFolderInsteadOfAFileIsReported) {
  proc_.MakeDirectory(GetParam().file);
  ExpectUnreadable("Is a directory");
}

TEST_P(StatisticsErrorTest, ALoopOfLinksIsReported) {
  ASSERT_EQ(::symlink(GetParam().file, proc_.GetPath(GetParam().file).c_str()), 0);
  ExpectUnreadable("Too many levels of symbolic links");
}

INSTANTIATE_TEST_SUITE_P(Files, StatisticsErrorTest, ::testing::ValuesIn(kStatisticsFiles),
                         [](const auto& test) { return std::string(test.param.file); });

}  // namespace
}  // namespace Kestrel::Host
