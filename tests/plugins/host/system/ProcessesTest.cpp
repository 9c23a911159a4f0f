// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/Processes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <limits>

#include "kestrel/KestrelException.h"
#include "plugins/host/support/PlainUser.h"
#include "support/ScopedTempDir.h"

namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using Testing::PlainUser;
using Testing::ScopedTempDir;
using ::testing::ThrowsMessage;

// The words after the name. They mean: parent 7, terminal 34818, 300 and 45 ticks, nice -5, 3
// threads, started at tick 9000, 2 MiB of virtual memory, 5 resident pages.
const std::string kNumbers =
    " S 7 42 42 34818 42 4194304 1 2 3 4 300 45 6 7 20 -5 3 0 9000 2097152 5 18446744073709551615 "
    "1 1 0 0 0 0 0 0 0 0 0 17 1 0 0 0 0 0 0 0 0 0 0 0 0 0\n";

void WriteProcess(const ScopedTempDir& proc, const std::string& id, const std::string& name,
                  const std::string& arguments) {
  proc.Write(id + "/stat", id + " (" + name + ")" + kNumbers);
  proc.Write(id + "/status", "Name:\tx\nUmask:\t0022\nUid:\t1000\t33\t1000\t1000\nGid:\t1\t1\n");
  proc.Write(id + "/cmdline", arguments);
}

TEST(ProcessesTest, ReadsTheFormatOfTheKernel) {
  const auto process = ParseProcess("42 (cat)" + kNumbers);
  ASSERT_TRUE(process);
  EXPECT_EQ(process->id, 42);
  EXPECT_EQ(process->parentId, 7);
  EXPECT_EQ(process->name, "cat");
  EXPECT_EQ(process->state, 'S');
  EXPECT_FALSE(process->isKernelThread);
  EXPECT_EQ(process->threads, 3);
  EXPECT_EQ(process->nice, -5);
  EXPECT_EQ(process->virtualMemory, 2097152);
  EXPECT_EQ(process->residentMemory, 5 * ::sysconf(_SC_PAGESIZE));
  EXPECT_EQ(process->processorTicks, 345);
  EXPECT_EQ(process->startTicks, 9000);
  EXPECT_EQ(process->terminal, 34818);
}

TEST(ProcessesTest, NumbersAtTheLimitsOf64BitsDoNotOverflow) {
  constexpr long kMax = std::numeric_limits<long>::max();
  const std::string largest = " 9223372036854775807";
  const auto process = ParseProcess("1 (x) S 1 1 1 1 1 1 1 1 1 1" + largest + largest +
                                    " 1 1 1 1 1 1" + largest + largest + largest);
  ASSERT_TRUE(process);
  EXPECT_EQ(process->processorTicks, kMax);
  EXPECT_EQ(process->startTicks, kMax);
  EXPECT_EQ(process->virtualMemory, kMax);
  EXPECT_EQ(process->residentMemory, kMax);
}

TEST(ProcessesTest, AcceptsAnyBytesInTheName) {
  for (const std::string name : {"", " ", "a b", "(", ")", ") S 1 1", "a\nb", "((x))", "\xff\xfe",
                                 "kworker/R-kvfree_rcu_reclaim"}) {
    const auto process = ParseProcess("42 (" + name + ")" + kNumbers);
    ASSERT_TRUE(process) << name;
    EXPECT_EQ(process->name, name);
    EXPECT_EQ(process->parentId, 7) << name;
  }
}

TEST(ProcessesTest, ReadsTruncatedDataWithoutHarm) {
  const std::string text = "42 (a (b) c)" + kNumbers;
  std::size_t accepted = 0;
  for (std::size_t size = 0; size <= text.size(); ++size) {
    const auto process = ParseProcess(text.substr(0, size));
    accepted += process.has_value();
    EXPECT_EQ(process.has_value() && process->parentId != 7, false) << size;
  }
  EXPECT_GT(accepted, 0u);
  EXPECT_LT(accepted, text.size() / 2);
}

TEST(ProcessesTest, RecognizesThreadsOfTheKernel) {
  const auto process = ParseProcess(
      "2 (kthreadd) S 0 0 0 0 -1 2129984 0 0 0 0 0 2 0 0 20 0 1 0 5 0 0 18446744073709551615\n");
  ASSERT_TRUE(process);
  EXPECT_TRUE(process->isKernelThread);
}

TEST(ProcessesTest, CountsAnInvalidNumberAsZero) {
  std::string numbers = kNumbers;
  numbers.replace(numbers.find("2097152"), 7, "99999999999999999999");
  const auto process = ParseProcess("42 (cat)" + numbers);
  ASSERT_TRUE(process);
  EXPECT_EQ(process->virtualMemory, 0);
  EXPECT_EQ(process->startTicks, 9000);
}

TEST(ProcessesTest, ReadsOneProcessFromItsFolder) {
  const ScopedTempDir proc;
  WriteProcess(proc, "42", "cat", std::string("cat\0-n\0file\0", 12));
  const auto process = ReadProcess(proc.GetPath(), 42);
  ASSERT_TRUE(process);
  EXPECT_EQ(process->user, 33u) << "the effective one";
  EXPECT_EQ(process->command, "cat -n file");
}

TEST(ProcessesTest, JoinsOverwrittenArguments) {
  const ScopedTempDir proc;
  const std::pair<std::string, std::string> cases[] = {
      {"", ""},
      {std::string(3, '\0'), ""},
      {"no end", "no end"},
      {std::string("title\0\0\0\0", 9), "title"},
      {std::string("a\0\0b\0", 5), "a  b"},
  };
  for (const auto& [arguments, expected] : cases) {
    WriteProcess(proc, "42", "cat", arguments);
    const auto process = ReadProcess(proc.GetPath(), 42);
    ASSERT_TRUE(process) << expected;
    EXPECT_EQ(process->command, expected);
  }
}

TEST(ProcessesTest, SkipsAProcessThatEndsWhileItIsRead) {
  for (const char* const gone : {"stat", "status", "cmdline"}) {
    const ScopedTempDir proc;
    WriteProcess(proc, "1", "init", "");
    WriteProcess(proc, "42", "cat", "");
    ASSERT_EQ(::unlink(proc.GetPath(std::string("42/") + gone).c_str()), 0);
    const auto processes = ReadProcesses(proc.GetPath());
    ASSERT_EQ(processes.size(), 1u) << gone;
    EXPECT_EQ(processes[0].id, 1);
  }
}

TEST(ProcessesTest, PrefersTheMemoryInStatus) {
  const ScopedTempDir proc;
  WriteProcess(proc, "42", "cat", "");
  EXPECT_EQ(ReadProcess(proc.GetPath(), 42)->residentMemory, 5 * ::sysconf(_SC_PAGESIZE));
  proc.Write("42/status", "Uid:\t1\t1\t1\t1\nVmRSS:\t    1234 kB\n");
  EXPECT_EQ(ReadProcess(proc.GetPath(), 42)->residentMemory, 1234 * 1024);
}

TEST(ProcessesTest, MemoryInStatusAtTheLimitOf64BitsDoesNotOverflow) {
  const ScopedTempDir proc;
  WriteProcess(proc, "42", "cat", "");
  proc.Write("42/status", "Uid:\t1\t1\t1\t1\nVmRSS:\t9223372036854775807 kB\n");
  EXPECT_EQ(ReadProcess(proc.GetPath(), 42)->residentMemory, std::numeric_limits<long>::max());
}

TEST(ProcessesTest, ReportsAProcessWithoutUser) {
  const ScopedTempDir proc;
  WriteProcess(proc, "1", "init", "");
  WriteProcess(proc, "42", "cat", "");
  for (const char* const status : {"", "Uid:\n", "Uid:\t1\n", "Uid:\t1\tx\t1\t1\n"}) {
    proc.Write("42/status", status);
    EXPECT_THAT(
        [&proc] { ReadProcesses(proc.GetPath()); },
        ThrowsMessage<KestrelException>("Unable to understand the files in " + proc.GetPath("42")))
        << status;
  }
}

TEST(ProcessesTest, ReportsARunningProcessThatCannotBeRead) {
  for (const char* const hidden : {"stat", "status", "cmdline"}) {
    const ScopedTempDir proc;
    ::chmod(proc.GetPath().c_str(), 0755);
    WriteProcess(proc, "1", "init", "");
    WriteProcess(proc, "42", "cat", "");
    const std::string path = proc.GetPath(std::string("42/") + hidden);
    ASSERT_EQ(::chmod(path.c_str(), 0), 0);
    const PlainUser user;
    EXPECT_THAT([&proc] { ReadProcesses(proc.GetPath()); },
                ThrowsMessage<KestrelException>("Unable to read " + path + ": Permission denied"));
  }
}

TEST(ProcessesTest, NoticesThatTheKernelHidesProcesses) {
  const ScopedTempDir proc;
  WriteProcess(proc, "42", "cat", "");
  EXPECT_TRUE(HidesProcesses(proc.GetPath()));
  WriteProcess(proc, "1", "init", "");
  EXPECT_FALSE(HidesProcesses(proc.GetPath()));
}

TEST(ProcessesTest, TheProcessorShareIsTheUsedTimeDividedByTheTimeSinceTheStart) {
  constexpr long kMax = std::numeric_limits<long>::max();
  constexpr long kMin = std::numeric_limits<long>::min();
  EXPECT_EQ(ProcessorShare(0, 1000), 0);
  EXPECT_EQ(ProcessorShare(1, 1000), 10) << "0.10 %";
  EXPECT_EQ(ProcessorShare(1000, 1000), 10000) << "one processor";
  EXPECT_EQ(ProcessorShare(2500, 1000), 25000) << "several threads";
  EXPECT_EQ(ProcessorShare(2, 3), 6666) << "rounded down";
  EXPECT_EQ(ProcessorShare(5, 0), 0) << "just started";
  EXPECT_EQ(ProcessorShare(5, -1), 0);
  EXPECT_EQ(ProcessorShare(-5, 1), 0);
  EXPECT_EQ(ProcessorShare(kMax, 1), kMax);
  EXPECT_EQ(ProcessorShare(kMax, kMin), 0);
  EXPECT_EQ(ProcessorShare(kMin, kMax), 0);
}

TEST(ProcessesTest, ParsesStatesInEitherCaseAndLettersAsTheyAre) {
  EXPECT_EQ(ParseState("running"), 'R');
  EXPECT_EQ(ParseState("Running"), 'R');
  EXPECT_EQ(ParseState("ZOMBIE"), 'Z');
  EXPECT_EQ(ParseState("R"), 'R');
  EXPECT_EQ(ParseState("T"), 'T') << "stopped";
  EXPECT_EQ(ParseState("t"), 't') << "traced";
  for (const char* const text : {"", "r", "run", "running ", "RR", "unknown", "?"}) {
    EXPECT_EQ(ParseState(text), std::nullopt) << text;
  }
}

TEST(ProcessesTest, ListsProcessesByNumberAndNothingElse) {
  const ScopedTempDir proc;
  for (const char* const id : {"10", "9", "100"}) {
    WriteProcess(proc, id, "cat", "");
  }
  proc.Write("self/stat", "10 (cat)" + kNumbers);
  proc.Write("uptime", "1 1\n");
  proc.MakeDirectory("77");
  std::vector<long> ids;
  for (const Process& process : ReadProcesses(proc.GetPath())) {
    ids.push_back(process.id);
  }
  EXPECT_THAT(ids, ElementsAre(9, 10, 100));
}

TEST(ProcessesTest, ReportsThatThereIsNoProcess) {
  const ScopedTempDir proc;
  EXPECT_THAT([&proc] { ReadProcesses(proc.GetPath()); },
              ThrowsMessage<KestrelException>("Unable to find any process in " + proc.GetPath()));
  EXPECT_THAT(
      [] { ReadProcesses("/nowhere"); },
      ThrowsMessage<KestrelException>("Unable to read /nowhere: No such file or directory"));
}

TEST(ProcessesTest, HasAWordForEachState) {
  EXPECT_STREQ(StateName('R'), "running");
  EXPECT_STREQ(StateName('S'), "sleeping");
  EXPECT_STREQ(StateName('D'), "waiting");
  EXPECT_STREQ(StateName('T'), "stopped");
  EXPECT_STREQ(StateName('t'), "traced");
  EXPECT_STREQ(StateName('Z'), "zombie");
  EXPECT_STREQ(StateName('I'), "idle");
  EXPECT_STREQ(StateName('P'), "parked");
  EXPECT_STREQ(StateName('X'), "dead");
  EXPECT_STREQ(StateName('?'), "unknown");
}

TEST(ProcessesTest, NamesTerminals) {
  const ScopedTempDir sys;
  sys.MakeDirectory("dev/char");
  ASSERT_EQ(::symlink("../../devices/virtual/tty/hvc0", sys.GetPath("dev/char/229:0").c_str()), 0);
  const auto name = [&sys](unsigned major, unsigned minor) {
    return TerminalName(static_cast<long>(::gnu_dev_makedev(major, minor)), sys.GetPath());
  };
  EXPECT_EQ(TerminalName(0, sys.GetPath()), "none");
  EXPECT_EQ(name(136, 3), "pts/3");
  EXPECT_EQ(name(137, 4), "pts/260");
  EXPECT_EQ(name(143, 255), "pts/2047");
  EXPECT_EQ(name(229, 0), "hvc0");
  EXPECT_EQ(name(4, 64), "4:64");
}

struct DamagedStat {
  const char* name;
  const char* text;
};

const DamagedStat kDamagedStats[] = {
    {"Empty", ""},
    {"OnlyANumber", "42"},
    {"NameThatNeverEnds", "42 (cat"},
    {"NameThatNeverBegins", "42 cat) S 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1"},
    {"ParenthesesTheOtherWayRound", "42 )cat( S 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1"},
    {"NothingAfterTheName", "42 (cat)"},
    {"OneNumberTooFew", "42 (cat) S 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1"},
    {"StateOfTwoLetters", "42 (cat) SS 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1"},
    {"NumberIsAWord", "x (cat) S 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1"},
    {"NumberIsMissing", " (cat) S 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1"},
    {"NumberBeyond64Bits",
     "99999999999999999999 (cat) S 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1"},
};

class DamagedStatTest : public ::testing::TestWithParam<DamagedStat> {};

TEST_P(DamagedStatTest, IsRejected) { EXPECT_FALSE(ParseProcess(GetParam().text)); }

INSTANTIATE_TEST_SUITE_P(Texts, DamagedStatTest, ::testing::ValuesIn(kDamagedStats),
                         [](const auto& test) { return test.param.name; });

TEST(ProcessesTest, AColumnThatIsNotANumberCountsAsZero) {
  const auto process = ParseProcess("42 (cat) S x y z a b c d e f g h i j k l m n o p q r");
  ASSERT_TRUE(process);
  EXPECT_EQ(process->parentId, 0);
  EXPECT_EQ(process->terminal, 0);
  EXPECT_EQ(process->processorTicks, 0);
  EXPECT_EQ(process->threads, 0);
  EXPECT_EQ(process->residentMemory, 0);
  EXPECT_FALSE(process->isKernelThread);
}

TEST(ProcessesTest, AColumnBeyond64BitsCountsAsZero) {
  const auto process =
      ParseProcess("42 (cat) S 1 1 1 1 1 1 1 1 1 1 18446744073709551615 5 1 1 1 1 1 1 1 1 1");
  ASSERT_TRUE(process);
  EXPECT_EQ(process->processorTicks, 5);
}

TEST(ProcessesTest, TheMemoryInStatusMayBeMissingOrAWord) {
  const ScopedTempDir proc;
  WriteProcess(proc, "42", "cat", "");
  const long fromStat = 5 * ::sysconf(_SC_PAGESIZE);
  for (const char* const line : {"", "VmRSS:\n", "VmRSS:\tmuch kB\n", "VmRSS: 7\n"}) {
    proc.Write("42/status", std::string("Uid:\t1\t2\t3\t4\n") + line);
    const auto process = ReadProcess(proc.GetPath(), 42);
    ASSERT_TRUE(process) << line;
    EXPECT_EQ(process->residentMemory, fromStat) << line;
    EXPECT_EQ(process->user, 2u);
  }
}

TEST(ProcessesTest, ReadsThisProcess) {
  const auto process = ReadProcess("/proc", ::getpid());
  ASSERT_TRUE(process);
  EXPECT_EQ(process->id, ::getpid());
  EXPECT_EQ(process->parentId, ::getppid());
  EXPECT_EQ(process->user, ::geteuid());
  EXPECT_EQ(process->state, 'R');
  EXPECT_GT(process->residentMemory, 0);
  EXPECT_FALSE(ReadProcess("/proc", 0));
  EXPECT_FALSE(ReadProcess("/proc", -1));
}

}  // namespace
}  // namespace Kestrel::Host
