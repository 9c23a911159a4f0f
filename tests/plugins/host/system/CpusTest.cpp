// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/Cpus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "kestrel/KestrelException.h"
#include "plugins/host/support/PlainUser.h"
#include "support/ScopedTempDir.h"

namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Testing::ScopedTempDir;
using ::testing::ThrowsMessage;

constexpr char kTwoProcessors[] =
    "processor\t: 0\nvendor_id\t: Maker\nmodel name\t: Model A\ncpu MHz\t\t: 2596.146\n\n"
    "processor\t: 1\nvendor_id\t: Maker\nmodel name\t: Model: B\ncpu MHz\t\t: 800\n\n";

TEST(CpusTest, ReadsProcessorsAndTheirTopology) {
  const ScopedTempDir root;
  root.Write("proc/cpuinfo", kTwoProcessors);
  const std::string cpu = "sys/devices/system/cpu";
  root.Write(cpu + "/present", "0-2\n");
  root.Write(cpu + "/online", "0-1\n");
  root.Write(cpu + "/cpu1/topology/physical_package_id", "3\n");
  root.Write(cpu + "/cpu1/topology/core_id", "4\n");
  root.Write(cpu + "/cpu1/topology/thread_siblings_list", "0-1\n");
  root.MakeDirectory(cpu + "/cpu1/node7");
  root.MakeDirectory(cpu + "/cpu1/nodes");
  const auto cpus = ReadCpus(root.GetPath("proc"), root.GetPath("sys"));
  ASSERT_EQ(cpus.size(), 3u);
  EXPECT_TRUE(cpus[1].isOnline);
  EXPECT_EQ(cpus[1].number, 1);
  EXPECT_EQ(cpus[1].node, 7);
  EXPECT_EQ(cpus[1].socket, 3);
  EXPECT_EQ(cpus[1].core, 4);
  EXPECT_THAT(cpus[1].siblings, ElementsAre(0, 1));
  EXPECT_EQ(cpus[1].vendor, "Maker");
  EXPECT_EQ(cpus[1].model, "Model: B");
  EXPECT_EQ(cpus[1].kilohertz, 800000);
  EXPECT_EQ(cpus[0].kilohertz, 2596146);
  EXPECT_FALSE(cpus[2].isOnline);
  EXPECT_EQ(cpus[2].socket, -1);
  EXPECT_EQ(cpus[2].model, "");
  EXPECT_THAT(cpus[2].siblings, IsEmpty());
}

TEST(CpusTest, WorksWithoutSys) {
  const ScopedTempDir proc;
  proc.Write("cpuinfo", kTwoProcessors);
  const auto cpus = ReadCpus(proc.GetPath(), "/nowhere");
  ASSERT_EQ(cpus.size(), 2u);
  EXPECT_TRUE(cpus[1].isOnline);
  EXPECT_EQ(cpus[1].model, "Model: B");
  EXPECT_EQ(cpus[1].core, -1);
}

TEST(CpusTest, WorksWithoutCpuinfo) {
  const ScopedTempDir sys;
  sys.Write("devices/system/cpu/present", "0\n");
  sys.Write("devices/system/cpu/online", "0\n");
  const auto cpus = ReadCpus("/nowhere", sys.GetPath());
  ASSERT_EQ(cpus.size(), 1u);
  EXPECT_TRUE(cpus[0].isOnline);
  EXPECT_EQ(cpus[0].model, "");
  EXPECT_EQ(cpus[0].kilohertz, -1);
}

TEST(CpusTest, SkipsDamagedLines) {
  const ScopedTempDir proc;
  proc.Write("cpuinfo",
             "model name : before any\nno colon\nprocessor : x\nmodel name : lost\n"
             "processor : 5\nmodel name : kept\ncpu MHz : fast\n");
  const auto cpus = ReadCpus(proc.GetPath(), "/nowhere");
  ASSERT_EQ(cpus.size(), 1u);
  EXPECT_EQ(cpus[0].number, 5);
  EXPECT_EQ(cpus[0].model, "kept");
  EXPECT_EQ(cpus[0].kilohertz, -1);
}

TEST(CpusTest, ReportsThatThereIsNone) {
  EXPECT_THAT([] { ReadCpus("/nowhere", "/sysless"); },
              ThrowsMessage<KestrelException>("Unable to find any processor in "
                                              "/sysless/devices/system/cpu and /nowhere/cpuinfo"));
}

// Sets in many forms, some of which no kernel writes. The call must end with each of them, and use
// its valid parts.
struct SetCase {
  const char* name;
  const char* present;
  const char* online;
  std::vector<std::string> cpus;  // each number, followed by "+" if online
};

const SetCase kSets[] = {
    {"One", "0\n", "0\n", {"0+"}},
    {"Some", "0-1,3", "1,3", {"0", "1+", "3+"}},
    {"OnlineButNotPresent", "0", "0,7", {"0+"}},
    {"NoneOnline", "0-1", "", {"0", "1"}},
    {"Twice", "0,0", "0", {"0+", "0+"}},
    {"EndsAtTheLargestNumber",
     "9223372036854775807-9223372036854775807",
     "0",
     {"9223372036854775807"}},
    {"TooLong", "0-99999999,5", "5", {"5+"}},
    {"Backwards", "3-1,2", "2", {"2+"}},
    {"Words", "a-b,c,4", "4", {"4+"}},
};

class CpuSetTest : public ::testing::TestWithParam<SetCase> {};

TEST_P(CpuSetTest, IsRead) {
  const ScopedTempDir sys;
  sys.Write("devices/system/cpu/present", GetParam().present);
  sys.Write("devices/system/cpu/online", GetParam().online);
  std::vector<std::string> found;
  for (const Cpu& cpu : ReadCpus("/nowhere", sys.GetPath())) {
    found.push_back(std::to_string(cpu.number) + (cpu.isOnline ? "+" : ""));
  }
  EXPECT_EQ(found, GetParam().cpus);
}

INSTANTIATE_TEST_SUITE_P(Sets, CpuSetTest, ::testing::ValuesIn(kSets),
                         [](const auto& test) { return test.param.name; });

TEST(CpusTest, AFrequencyMayHaveNoFractionAndMayBeMissing) {
  const ScopedTempDir proc;
  proc.Write("cpuinfo",
             "processor : 0\ncpu MHz : 1000\n\nprocessor : 1\ncpu MHz : 2000.999\n\n"
             "processor : 2\n\nprocessor : 3\ncpu MHz :\n");
  std::vector<long> frequencies;
  for (const Cpu& cpu : ReadCpus(proc.GetPath(), "/nowhere")) {
    frequencies.push_back(cpu.kilohertz);
  }
  EXPECT_THAT(frequencies, ElementsAre(1000000, 2000999, -1, -1));
}

TEST(CpusTest, ATopologyThatIsNotANumberIsUnknown) {
  const ScopedTempDir sys;
  const std::string cpu = "devices/system/cpu";
  sys.Write(cpu + "/present", "0");
  sys.Write(cpu + "/cpu0/topology/physical_package_id", "none\n");
  sys.Write(cpu + "/cpu0/topology/core_id", "");
  sys.Write(cpu + "/cpu0/topology/thread_siblings_list", "?");
  sys.MakeDirectory(cpu + "/cpu0/nodeX");
  const auto cpus = ReadCpus("/nowhere", sys.GetPath());
  ASSERT_EQ(cpus.size(), 1u);
  EXPECT_EQ(cpus[0].socket, -1);
  EXPECT_EQ(cpus[0].core, -1);
  EXPECT_EQ(cpus[0].node, -1);
  EXPECT_THAT(cpus[0].siblings, IsEmpty());
}

// If a file about a processor exists but cannot be read, that is an error.
TEST(CpusTest, ReportsWhatCannotBeRead) {
  const std::string cpu = "sys/devices/system/cpu/cpu0";
  for (const std::string& hidden :
       {std::string("proc/cpuinfo"), std::string("sys/devices/system/cpu/present"),
        std::string("sys/devices/system/cpu/online"), cpu + "/topology/physical_package_id",
        cpu + "/topology/core_id", cpu + "/topology/thread_siblings_list"}) {
    const ScopedTempDir root;
    ::chmod(root.GetPath().c_str(), 0755);
    root.Write("proc/cpuinfo", kTwoProcessors);
    root.Write("sys/devices/system/cpu/present", "0-1\n");
    root.Write("sys/devices/system/cpu/online", "0-1\n");
    for (const char* const name : {"physical_package_id", "core_id", "thread_siblings_list"}) {
      root.Write(cpu + "/topology/" + name, "0\n");
    }
    ASSERT_EQ(::chmod(root.GetPath(hidden).c_str(), 0), 0);
    const Testing::PlainUser user;
    EXPECT_THAT([&root] { ReadCpus(root.GetPath("proc"), root.GetPath("sys")); },
                ThrowsMessage<KestrelException>("Unable to read " + root.GetPath(hidden) +
                                                ": Permission denied"));
  }
}

struct FrequencyCase {
  const char* name;
  const char* text;
  long kilohertz;
};

const FrequencyCase kFrequencies[] = {
    {"Usual", "2596.146", 2596146},
    {"Whole", "2596", 2596000},
    {"OneDigit", "2596.1", 2596100},
    {"MoreDigits", "2596.1469", 2596146},
    {"Point", "2596.", 2596000},
    {"Zero", "0.000", 0},
    {"Empty", "", -1},
    {"Word", "fast", -1},
    {"WordAfterThePoint", "1.x", -1},
    {"TwoPoints", "1.2.3", -1},
    {"Beyond64Bits", "99999999999999999999.0", -1},
};

class FrequencyTest : public ::testing::TestWithParam<FrequencyCase> {};

TEST_P(FrequencyTest, IsInKilohertz) {
  const ScopedTempDir proc;
  proc.Write("cpuinfo", std::string("processor : 0\ncpu MHz : ") + GetParam().text + "\n");
  EXPECT_EQ(ReadCpus(proc.GetPath(), "/nowhere").at(0).kilohertz, GetParam().kilohertz);
}

INSTANTIATE_TEST_SUITE_P(Texts, FrequencyTest, ::testing::ValuesIn(kFrequencies),
                         [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace Kestrel::Host
