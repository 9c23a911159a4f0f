// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <ctime>
#include <string>
#include <utility>
#include <vector>

#include "plugins/host/support/HostCall.h"
#include "plugins/host/support/MadeUpMachine.h"
#include "plugins/host/support/PlainUser.h"
#include "support/ScopedEnvironment.h"
#include "support/Witness.h"

// The commands in the namespace "system" on a machine with simulated data: their exact output, and
// the effect of each filter.
namespace Kestrel::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class SystemMachineTest : public MadeUpMachineTest {
 protected:
  // The machine started at 2023-11-14 22:13:20 UTC.
  SystemMachineTest() {
    File("proc/uptime", "187384.99 360000.50\n");
    File("proc/stat", "cpu  1 2 3\nbtime 1700000000\nprocesses 5\n");
    File("proc/loadavg", "0.46 12.00 0.32 2/95 25897\n");
    File("proc/meminfo",
         "MemTotal:       16384000 kB\nMemFree:  1000 kB\nMemAvailable:  12000000 kB\n"
         "Buffers: 20 kB\nCached: 300 kB\nSReclaimable: 4 kB\nShmem: 5 kB\nSwapTotal: 2000 kB\n"
         "SwapFree: 1500 kB\n");
  }

  // The properties of a process that a test sets.
  struct Sample {
    long id = 0;
    std::string name;
    std::string arguments;
    char state = 'S';
    long parent = 1;
    long user = 0;
    long flags = 0;
    long ticks = 0;
    long startTicks = 0;
    long memory = 0;
  };

  void AddProcess(const Sample& sample) {
    const std::string folder = "proc/" + std::to_string(sample.id);
    File(folder + "/stat", std::to_string(sample.id) + " (" + sample.name + ") " + sample.state +
                               " " + std::to_string(sample.parent) + " 1 1 34818 1 " +
                               std::to_string(sample.flags) + " 1 2 3 4 " +
                               std::to_string(sample.ticks) + " 0 0 0 20 0 1 0 " +
                               std::to_string(sample.startTicks) + " 4194304 0 0\n");
    File(folder + "/status", "Name:\tx\nUid:\t0\t" + std::to_string(sample.user) +
                                 "\t0\t0\nVmRSS:\t" + std::to_string(sample.memory) + " kB\n");
    File(folder + "/cmdline", sample.arguments);
  }

  void AddSampleProcesses() {
    AddProcess({1, "init", std::string("/sbin/init\0--now\0", 17), 'S', 0, 0, 0, 500, 0, 9000});
    AddProcess({2, "kthreadd", "", 'I', 0, 0, 0x00200000, 0, 0, 0});
    AddProcess({30, "server", "server: idle", 'S', 1, 4000000000, 0, 9000, 100, 70000});
    AddProcess({31, "worker", "server: busy", 'R', 30, 4000000000, 0, 8640000, 200, 50});
    AddProcess({100, "a\n(b)", "", 'Z', 1, 0, 0, 0, 0, 0});
  }

  // Returns the numbers of the listed processes.
  static std::vector<std::string> Ids(const Parameters& parameters) {
    return CallColumn("system process list", "Id", parameters);
  }
};

TEST_F(SystemMachineTest, ShowsTheLoad) {
  ExpectPrinted("system load get",
                "SystemLoad:\n"
                "   One Minute     : 0.46\n"
                "   Five Minutes   : 12.00\n"
                "   Fifteen Minutes: 0.32\n"
                "   Running        : 2\n"
                "   Tasks          : 95\n");
}

TEST_F(SystemMachineTest, ShowsTheMemory) {
  ExpectPrinted("system memory get",
                "SystemMemory:\n"
                "   Physical: \n"
                "         Total    : 15.6 GiB\n"
                "         Used     : 4.2 GiB\n"
                "         Free     : 1000.0 KiB\n"
                "         Shared   : 5.0 KiB\n"
                "         Buffers  : 20.0 KiB\n"
                "         Cached   : 304.0 KiB\n"
                "         Available: 11.4 GiB\n"
                "   Swap    : \n"
                "         Total: 2.0 MiB\n"
                "         Used : 500.0 KiB\n"
                "         Free : 1.5 MiB\n");
}

TEST_F(SystemMachineTest, ProgramsGetTheMemoryInBytes) {
  RunThere([] {
    const auto memory = Call("system memory get").GetStruct();
    const auto physical =
        std::dynamic_pointer_cast<MetaObj::MetaStruct>(memory->GetField("Physical"));
    const auto swap = std::dynamic_pointer_cast<MetaObj::MetaStruct>(memory->GetField("Swap"));
    EXPECT_EQ(NumberOf(physical, "Total Bytes"), 16384000L * 1024);
    EXPECT_EQ(NumberOf(physical, "Cached Bytes"), 304L * 1024);
    EXPECT_EQ(NumberOf(swap, "Used Bytes"), 500L * 1024);
  });
}

TEST_F(SystemMachineTest, ProgramsGetTheLoadInHundredths) {
  RunThere([] {
    const auto load = Call("system load get").GetStruct();
    EXPECT_EQ(NumberOf(load, "One Minute Hundredths"), 46);
    EXPECT_EQ(NumberOf(load, "Five Minutes Hundredths"), 1200);
    EXPECT_EQ(NumberOf(load, "Fifteen Minutes Hundredths"), 32);
  });
}

TEST_F(SystemMachineTest, ShowsTheUptime) {
  RunThere([] {
    const Row row = CallStruct("system uptime get");
    EXPECT_EQ(row.at("Up"), "2-04:03:04");
    EXPECT_EQ(row.at("Seconds"), "187384");
    EXPECT_EQ(row.at("Idle Seconds"), "360000");
    EXPECT_THAT(row.at("Started"), ::testing::StartsWith("2023-11-1"));
  });
}

TEST_F(SystemMachineTest, ReportsInvalidStatistics) {
  File("proc/loadavg", "0.46 12.00\n");
  File("proc/uptime", "long\n");
  File("proc/meminfo", "MemTotal: 1 kB\n");
  RunThere([] {
    EXPECT_THAT(CallErrors("system load get"), ElementsAre("Unable to understand "
                                                           "/proc/loadavg"));
    EXPECT_THAT(CallErrors("system uptime get"), ElementsAre("Unable to understand "
                                                             "/proc/uptime"));
    EXPECT_THAT(CallErrors("system memory get"), ElementsAre("Unable to understand "
                                                             "/proc/meminfo"));
  });
}

// Processors.

class CpuMachineTest : public SystemMachineTest {
 protected:
  CpuMachineTest() {
    File("proc/cpuinfo",
         "processor\t: 0\nvendor_id\t: Maker\nmodel name\t: Model A\ncpu MHz\t\t: 2596.146\n\n"
         "processor\t: 1\nvendor_id\t: Maker\nmodel name\t: Model A\x1b[2J\ncpu MHz\t\t: 800\n");
    const std::string folder = "sys/devices/system/cpu";
    File(folder + "/present", "0-2\n");
    File(folder + "/online", "0-1\n");
    for (const char* const cpu : {"/cpu0", "/cpu1"}) {
      File(folder + cpu + "/topology/physical_package_id", "0\n");
      File(folder + cpu + "/topology/core_id", "4\n");
      File(folder + cpu + "/topology/thread_siblings_list", "0-1\n");
      Folder(folder + cpu + "/node7");
    }
  }

  static std::vector<std::string> Numbers(const Parameters& parameters) {
    return CallColumn("system cpu list", "Number", parameters);
  }
};

TEST_F(CpuMachineTest, ListsProcessors) {
  ExpectPrinted("system cpu list",
                "Number  Online  Node  Socket  Core  Siblings  Frequency  Model\n"
                "------  ------  ----  ------  ----  --------  ---------  -----\n"
                "     0  true       7       0     4  0, 1      2596 MHz   Model A\n"
                "     1  true       7       0     4  0, 1      800 MHz    Model A\\x1b[2J\n"
                "     2  false     -1      -1    -1            unknown    unknown\n");
  RunThere([] {
    EXPECT_THAT(CallColumn("system cpu list", "Frequency Kilohertz"),
                ElementsAre("2596146", "800000", "-1"));
    EXPECT_THAT(Numbers({{"sort", "Frequency"}}), ElementsAre("2", "1", "0")) << "as numbers";
  });
}

TEST_F(CpuMachineTest, FiltersByNumberAndState) {
  RunThere([] {
    EXPECT_THAT(Numbers({}), ElementsAre("0", "1", "2"));
    EXPECT_THAT(Numbers({{"number", "2"}, {"number", "0"}}), ElementsAre("0", "2"));
    EXPECT_THAT(Numbers({{"online", "false"}}), ElementsAre("2"));
    EXPECT_THAT(Numbers({{"online", "true"}}), ElementsAre("0", "1"));
    EXPECT_THAT(Numbers({{"online", "true"}, {"online", "false"}}), ElementsAre("0", "1", "2"));
    EXPECT_THAT(Numbers({{"online", "true"}, {"number", "2"}}), IsEmpty());
  });
}

TEST_F(CpuMachineTest, CountsProcessors) {
  ExpectPrinted("system cpu count", "2\n");
  ExpectPrinted("system cpu count --all", "3\n");
}

TEST_F(CpuMachineTest, TheCallEndsDespiteASetThatNoKernelWrites) {
  File("sys/devices/system/cpu/present", "9223372036854775806-9223372036854775807,0\n");
  RunThere([] {
    EXPECT_THAT(Numbers({}), ElementsAre("9223372036854775806", "9223372036854775807", "0"));
  });
}

// Modules.

class ModuleMachineTest : public SystemMachineTest {
 protected:
  ModuleMachineTest() {
    File("proc/modules",
         "snd_timer 49152 2 snd_seq,snd_pcm, Live 0x0\n"
         "loop 40960 0 - Live 0x0\n"
         "fixed 4096 - - Live 0x0\n"
         "going 8192 1 [permanent], Unloading 0x0\n");
    Folder("sys/module/built_in");
    File("sys/module/no_folder", "");
  }

  static std::string Check(const std::string& name) {
    return CallText("system module check", {{"name", name}});
  }
};

TEST_F(ModuleMachineTest, ListsModulesByName) {
  ExpectPrinted("system module list",
                "Name       Size Bytes  References  State      Used By\n"
                "---------  ----------  ----------  ---------  -------\n"
                "fixed            4096          -1  Live       \n"
                "going            8192           1  Unloading  \n"
                "loop            40960           0  Live       \n"
                "snd_timer       49152           2  Live       snd_seq, snd_pcm\n");
  ExpectPrinted("system module list --human --name=loop --name=*x*",
                "Name   Size      References  State  Used By\n"
                "-----  --------  ----------  -----  -------\n"
                "fixed  4.0 KiB           -1  Live   \n"
                "loop   40.0 KiB           0  Live   \n");
}

TEST_F(ModuleMachineTest, ListsModulesThatNothingNeeds) {
  RunThere([] {
    EXPECT_THAT(CallColumn("system module list", "Name", {{"unused", ""}}), ElementsAre("loop"));
  });
}

TEST_F(ModuleMachineTest, FindsLoadedAndBuiltInModules) {
  RunThere([] {
    EXPECT_EQ(Check("loop"), "true");
    EXPECT_EQ(Check("snd-timer"), "true") << "a dash is an underscore";
    EXPECT_EQ(Check("built-in"), "true");
    if (::access(("/lib/modules/" + WitnessLines("uname -r").at(0)).c_str(), F_OK) != 0) {
      EXPECT_THAT(CallErrors("system module check", {{"name", "no_folder"}}),
                  ElementsAre(HasSubstr("Unable to tell whether the kernel has the module "
                                        "'no_folder': there is no folder /lib/modules/")));
      return;
    }
    EXPECT_THAT(CallErrors("system module check", {{"name", "no_folder"}}),
                ElementsAre("There is no module 'no_folder'"));
  });
}

// Processes.

TEST_F(SystemMachineTest, ListsProcessesByNumber) {
  AddSampleProcesses();
  ExpectPrinted("system process list",
                "Id   User        CPU      Resident Bytes  Name\n"
                "---  ----------  -------  --------------  ----\n"
                "  1  root        0.00 %          9216000  init\n"
                "  2  root        0.00 %                0  kthreadd\n"
                " 30  4000000000  0.04 %         71680000  server\n"
                " 31  4000000000  46.10 %           51200  worker\n"
                "100  root        0.00 %                0  a\\x0a(b)\n");
}

// The list contains the longest name of a user on an ordinary machine, the largest number of a
// process, and a kernel thread whose name shows what it works on.
TEST_F(SystemMachineTest, ProcessesFitAScreenOf80Columns) {
  File("etc/nsswitch.conf", "passwd: files\ngroup: files\n");
  File("etc/passwd", "root:x:0:0:::\nsystemd-timesync:x:997:997:::\n");
  File("etc/group", "root:x:0:\n");
  AddProcess({1, "init", "/sbin/init", 'S', 0, 0, 0, 0, 0, 0});
  AddProcess({40, "kworker/u8:2-events_unbound", "", 'I', 2, 0, 0x00200000, 0, 0, 0});
  AddProcess({4194303, "systemd-timesyn", "/lib/x", 'S', 1, 997, 0, 0, 0, 999999999});
  const std::string rows =
      "     40  root              0.00 %               0  kworker/u8:2-events_unbound\n"
      "4194303  systemd-timesync  0.00 %   1023999998976  systemd-timesyn\n";
  EXPECT_LE(rows.find('\n'), 80u);
  ExpectPrinted("system process list",
                "Id       User              CPU     Resident Bytes  Name\n"
                "-------  ----------------  ------  --------------  ----\n"
                "      1  root              0.00 %               0  init\n" +
                    rows);
}

TEST_F(SystemMachineTest, ShowsTheMemoryOfProcessesForPeople) {
  AddSampleProcesses();
  ExpectPrinted("system process list --human --user=4000000000 --sort=CPU --descending",
                "Id  User        CPU      Resident  Name\n"
                "--  ----------  -------  --------  ----\n"
                "31  4000000000  46.10 %  50.0 KiB  worker\n"
                "30  4000000000  0.04 %   68.4 MiB  server\n");
}

TEST_F(SystemMachineTest, SortsTheProcessorTimeByItsSeconds) {
  AddSampleProcesses();
  RunThere([] {
    EXPECT_THAT(Ids({{"sort", "Time"}, {"descending", ""}}),
                ElementsAre("31", "30", "1", "2", "100"));
  });
}

TEST_F(SystemMachineTest, ShowsTheStartOfAProcessInTheZoneOfTheMachine) {
  AddSampleProcesses();
  RunThere([] {
    for (const auto& [zone, time] : {std::pair("UTC0", "2023-11-14 22:13:22"),
                                     std::pair("XST-05:30", "2023-11-15 03:43:22")}) {
      const ScopedEnvironment environment("TZ", zone);
      ::tzset();
      EXPECT_THAT(CallColumn("system process list", "Started", {{"id", "31"}}), ElementsAre(time));
    }
  });
}

TEST_F(SystemMachineTest, RefusesToListOnlySomeProcesses) {
  AddProcess({30, "server", "", 'S', 1, 4000000000});
  RunThere([] {
    EXPECT_THAT(CallErrors("system process list"),
                ElementsAre("The kernel hides the processes of other users from you; list your own "
                            "with --user"));
    EXPECT_THAT(CallErrors("system process list", {{"user", "4000000000"}}), SizeIs(1));
    EXPECT_THAT(Ids({{"user", std::to_string(::geteuid())}}), IsEmpty()) << "they are not hidden";
  });
}

TEST_F(SystemMachineTest, ShowsEveryFieldOfAProcess) {
  AddSampleProcesses();
  RunThere([] {
    const std::vector<Row> rows = CallRows("system process list", {{"id", "31"}});
    ASSERT_EQ(rows.size(), 1u);
    Row row = rows[0];
    EXPECT_THAT(row.at("Started"), ::testing::StartsWith("2023-11-1"));
    row.erase("Started");
    EXPECT_EQ(row, Row({{"Id", "31"},
                        {"Parent", "30"},
                        {"User", "4000000000"},
                        {"State", "running"},
                        {"Threads", "1"},
                        {"Nice", "0"},
                        {"CPU", "46.10 %"},
                        {"CPU Hundredths", "4610"},
                        {"Virtual", "4.0 MiB"},
                        {"Virtual Bytes", "4194304"},
                        {"Resident", "50.0 KiB"},
                        {"Resident Bytes", "51200"},
                        {"Time", "1-00:00:00"},
                        {"Seconds", "86400"},
                        {"Terminal", "pts/2"},
                        {"Kernel", "false"},
                        {"Name", "worker"},
                        {"Command", "server: busy"}}));
  });
}

TEST_F(SystemMachineTest, NamesAProcessWithoutArgumentsInBrackets) {
  AddSampleProcesses();
  RunThere([] {
    EXPECT_THAT(CallColumn("system process list", "Command"),
                ElementsAre("/sbin/init --now", "[kthreadd]", "server: idle", "server: busy",
                            "[a\\x0a(b)]"));
  });
}

struct ProcessFilterCase {
  const char* name;
  Parameters parameters;
  std::vector<std::string> ids;
};

const ProcessFilterCase kProcessFilters[] = {
    {"None", {}, {"1", "2", "30", "31", "100"}},
    {"Id", {{"id", "30"}}, {"30"}},
    {"Ids", {{"id", "100"}, {"id", "2"}, {"id", "77"}}, {"2", "100"}},
    {"UserName", {{"user", "root"}}, {"1", "2", "100"}},
    {"UserNumber", {{"user", "0"}}, {"1", "2", "100"}},
    {"UserWithoutAccount", {{"user", "4000000000"}}, {"30", "31"}},
    {"Users", {{"user", "nobody at all"}, {"user", "4000000000"}}, {"30", "31"}},
    {"State", {{"state", "running"}}, {"31"}},
    {"States", {{"state", "zombie"}, {"state", "idle"}}, {"2", "100"}},
    {"StateOfNone", {{"state", "traced"}}, {}},
    {"StateInAnotherCase", {{"state", "Running"}}, {"31"}},
    {"StateByLetter", {{"state", "Z"}, {"state", "R"}}, {"31", "100"}},
    {"Name", {{"name", "server"}}, {"30"}},
    {"Names", {{"name", "init"}, {"name", "worker"}}, {"1", "31"}},
    {"NameIsNoPart", {{"name", "serv"}}, {}},
    {"NamePattern", {{"name", "*er*"}}, {"30", "31"}},
    {"Expression", {{"match", "^(init|worker)$"}}, {"1", "31"}},
    {"ExpressionWithin", {{"match", "er"}}, {"30", "31"}},
    {"ExpressionAcrossLines", {{"match", "a\\n\\("}}, {"100"}},
    {"CommandLineIsNotSearched", {{"match", "server:"}}, {}},
    {"FullCommand", {{"match", "server:"}, {"full", ""}}, {"30", "31"}},
    {"FullCommandFallsBackToTheName", {{"match", "^kthreadd$"}, {"full", ""}}, {"2"}},
    {"FullWithoutExpression", {{"full", ""}}, {"1", "2", "30", "31", "100"}},
    {"MinimumMemory", {{"minimum-memory", "9216000"}}, {"1", "30"}},
    {"MinimumMemoryOfNone", {{"minimum-memory", "71680001"}}, {}},
    {"NoKernelThreads", {{"kernel-threads", "false"}}, {"1", "30", "31", "100"}},
    {"KernelThreads", {{"kernel-threads", "true"}}, {"1", "2", "30", "31", "100"}},
    {"SortedByMemory", {{"sort", "Resident"}, {"descending", ""}}, {"30", "1", "31", "2", "100"}},
    {"SortedByTime", {{"sort", "Seconds"}, {"descending", ""}}, {"31", "30", "1", "2", "100"}},
    {"SortedByName", {{"sort", "Name"}}, {"100", "1", "2", "30", "31"}},
    {"SortedById", {{"sort", "Id"}}, {"1", "2", "30", "31", "100"}},
    {"AllTogether",
     {{"user", "4000000000"},
      {"state", "sleeping"},
      {"minimum-memory", "60000000"},
      {"sort", "Time"}},
     {"30"}},
    {"NothingInCommon", {{"user", "root"}, {"id", "31"}}, {}},
};

class ProcessFilterTest : public SystemMachineTest,
                          public ::testing::WithParamInterface<ProcessFilterCase> {};

TEST_P(ProcessFilterTest, ListsTheSelectedProcesses) {
  AddSampleProcesses();
  RunThere([] { EXPECT_EQ(Ids(GetParam().parameters), GetParam().ids); });
}

INSTANTIATE_TEST_SUITE_P(Filters, ProcessFilterTest, ::testing::ValuesIn(kProcessFilters),
                         [](const auto& test) { return test.param.name; });

TEST_F(SystemMachineTest, SkipsProcessesThatEnd) {
  AddSampleProcesses();
  Folder("proc/55");
  RunThere([] { EXPECT_THAT(Ids({}), ElementsAre("1", "2", "30", "31", "100")); });
}

TEST_F(SystemMachineTest, ReportsAnInvalidProcess) {
  AddSampleProcesses();
  File("proc/56/stat", "56 (cut");
  File("proc/56/status", "Uid:\t0\t0\t0\t0\n");
  File("proc/56/cmdline", "");
  RunThere([] {
    EXPECT_THAT(CallErrors("system process list"),
                ElementsAre("Unable to understand the files in /proc/56"));
  });
}

TEST_F(SystemMachineTest, ReportsThatThereIsNoProcess) {
  Folder("proc/1");
  RunThere([] {
    EXPECT_THAT(CallErrors("system process list"), ElementsAre("Unable to find any process in "
                                                               "/proc"));
  });
}

TEST_F(SystemMachineTest, AProcessAtTheLimitsOf64BitsIsListed) {
  Folder("proc/1");
  AddProcess(
      {7, "huge", "", 'S', 1, 0, 0, 9223372036854775807, 9223372036854775807, 9223372036854775807});
  RunThere([] {
    const Row row = CallRows("system process list").at(0);
    EXPECT_EQ(row.at("Resident Bytes"), "9223372036854775807");
    EXPECT_EQ(row.at("CPU Hundredths"), "0") << "it starts in the future";
    EXPECT_EQ(row.at("Started"), "unknown");
    EXPECT_EQ(row.at("Seconds"), "92233720368547758");
  });
}

// Parameters of the kernel.

class ParameterMachineTest : public SystemMachineTest {
 protected:
  ParameterMachineTest() {
    File("proc/sys/vm/swappiness", "60\n");
    File("proc/sys/vm/overcommit_ratio", "50\n");
    File("proc/sys/net/ipv4/tcp_rmem", "4096\t131072\t6291456\n");
    File("proc/sys/net/ipv4/conf/eth0.1/mtu", "1400\n");
    File("proc/sys/kernel/motd", "one\ntwo\n");
    File("proc/sys/kernel/escape", "\x1b[2J\n");
  }

  static std::vector<std::string> Names(const Parameters& parameters) {
    return CallColumn("system parameter list", "Name", parameters);
  }
};

TEST_F(ParameterMachineTest, ListsParametersByName) {
  ExpectPrinted("system parameter list",
                "Name                      Value\n"
                "------------------------  -----\n"
                "kernel.escape             \\x1b[2J\n"
                "kernel.motd               one two\n"
                "net.ipv4.conf.eth0/1.mtu  1400\n"
                "net.ipv4.tcp_rmem         4096 131072 6291456\n"
                "vm.overcommit_ratio       50\n"
                "vm.swappiness             60\n");
}

TEST_F(ParameterMachineTest, FiltersParameters) {
  RunThere([] {
    EXPECT_THAT(Names({{"under", "vm"}}), ElementsAre("vm.overcommit_ratio", "vm.swappiness"));
    EXPECT_THAT(Names({{"under", "vm.swappiness"}}), ElementsAre("vm.swappiness"));
    EXPECT_THAT(Names({{"under", "vm.swap"}}), IsEmpty()) << "a part of a name is no group";
    EXPECT_THAT(Names({{"under", "net/ipv4/conf/eth0.1"}}),
                ElementsAre("net.ipv4.conf.eth0/1.mtu"));
    EXPECT_THAT(Names({{"match", "^net.*m"}, {"under", "net.ipv4.conf"}}),
                ElementsAre("net.ipv4.conf.eth0/1.mtu"));
    EXPECT_THAT(Names({{"match", "[0-9]$"}}), IsEmpty());
    EXPECT_THAT(Names({{"name", "vm.swap"}}), IsEmpty()) << "a name is exact";
    EXPECT_THAT(Names({{"name", "vm.swap*"}, {"name", "kernel.motd"}}),
                ElementsAre("kernel.motd", "vm.swappiness"));
    EXPECT_THAT(Names({{"name", "*.*.*"}, {"match", "rmem"}}), ElementsAre("net.ipv4.tcp_rmem"));
    EXPECT_EQ(Names({{"writable", ""}}).size(), 6u);
  });
}

TEST_F(ParameterMachineTest, ListsWhatCanOnlyBeWritten) {
  File("proc/sys/vm/compact_memory", "");
  Mode("proc/sys/vm/compact_memory", 0200);
  ExpectPrinted("system parameter list --under=vm --name=*o*",
                "Name                 Value\n"
                "-------------------  -----\n"
                "vm.compact_memory    unreadable\n"
                "vm.overcommit_ratio  50\n");
  RunThere([] {
    EXPECT_THAT(CallColumn("system parameter list", "Readable", {{"name", "vm.*o*"}}),
                ElementsAre("false", "true"));
  });
}

TEST_F(ParameterMachineTest, ShowsAValueAsTheKernelWritesIt) {
  ExpectPrinted("system parameter get --name=net.ipv4.tcp_rmem", "4096\t131072\t6291456\n");
  ExpectPrinted("system parameter get --name=kernel.motd", "one\ntwo\n");
  ExpectPrinted("system parameter get --name=kernel.escape", "\\x1b[2J\n");
  ExpectPrinted("system parameter get --name=net.ipv4.conf.eth0/1.mtu", "1400\n");
  ExpectPrinted("system parameter get --name=net/ipv4/conf/eth0.1/mtu", "1400\n");
}

TEST_F(ParameterMachineTest, ChangesAValue) {
  ExpectPrinted("system parameter set --name=vm.swappiness --value=10",
                "vm.swappiness:\n   Before: 60\n   After : 10\n");
  ExpectPrinted("system parameter get --name=vm.swappiness", "10\n");
}

// A plain user makes the change, because root can read every file.
TEST_F(ParameterMachineTest, ChangesAValueThatCannotBeRead) {
  File("proc/sys/vm/drop_caches", "");
  Mode("proc/sys/vm/drop_caches", 0222);
  RunThere([this] {
    {
      const PlainUser user;
      EXPECT_EQ(
          CallStruct("system parameter set", {{"name", "vm.drop_caches"}, {"value", "3"}}),
          (Row{{"Name", "vm.drop_caches"}, {"Before", "unreadable"}, {"After", "unreadable"}}));
    }
    EXPECT_EQ(Content("proc/sys/vm/drop_caches"), "3\n");
  });
}

TEST_F(ParameterMachineTest, ReportsThatAPlainUserMayNeitherChangeNorReadAValue) {
  File("proc/sys/vm/drop_caches", "");
  Mode("proc/sys/vm/drop_caches", 0200);
  RunThere([] {
    const PlainUser user;
    EXPECT_THAT(CallErrors("system parameter set", {{"name", "vm.drop_caches"}, {"value", "3"}}),
                ElementsAre("You do not have permission to change the parameter 'vm.drop_caches'; "
                            "usually only root may, and some are read-only"));
    EXPECT_THAT(CallErrors("system parameter get", {{"name", "vm.drop_caches"}}),
                ElementsAre("You do not have permission to read the parameter 'vm.drop_caches'"));
  });
}

TEST_F(ParameterMachineTest, WritesNothingForAnUnknownName) {
  RunThere([this] {
    EXPECT_THAT(CallErrors("system parameter set", {{"name", "vm.new"}, {"value", "3"}}),
                ElementsAre("There is no parameter 'vm.new'"));
    EXPECT_FALSE(IsFile("proc/sys/vm/new"));
    EXPECT_EQ(Content("proc/sys/vm/swappiness"), "60\n");
  });
}

TEST_F(ParameterMachineTest, ListsParametersInTheOrderThatTheUserWants) {
  RunThere([] {
    EXPECT_THAT(Names({{"sort", "Value"}, {"limit", "2"}}),
                ElementsAre("net.ipv4.conf.eth0/1.mtu", "net.ipv4.tcp_rmem"));
    EXPECT_THAT(Names({{"sort", "Name"}, {"descending", ""}, {"limit", "1"}}),
                ElementsAre("vm.swappiness"));
    EXPECT_THAT(CallErrors("system parameter list", {{"descending", ""}}), SizeIs(1))
        << "without a field there is no order to reverse";
  });
}

TEST_F(ParameterMachineTest, NoNameLeadsOutOfTheFolderOfParameters) {
  File("proc/secret", "x\n");
  RunThere([this] {
    const auto refusal = ElementsAre(
        "Invalid data constraint for parameter 'name'. Value does not match the expected regular "
        "expression ([^./]+([./][^./]+)*)");
    for (const char* const name : {"../secret", "vm/../../secret", "vm.//.//.secret", "//.secret",
                                   "/proc/secret", "/secret", "..", ""}) {
      EXPECT_THAT(CallErrors("system parameter get", {{"name", name}}), refusal) << name;
      EXPECT_THAT(CallErrors("system parameter set", {{"name", name}, {"value", "1"}}), refusal)
          << name;
    }
    EXPECT_EQ(Content("proc/secret"), "x\n");
  });
}

TEST_F(ParameterMachineTest, ListsNothingThatALinkLeadsTo) {
  File("proc/secret/inner", "x\n");
  Link("proc/sys/vm/file", "../../secret/inner");
  Link("proc/sys/vm/folder", "../../secret");
  RunThere([] {
    EXPECT_THAT(Names({{"under", "vm"}}), ElementsAre("vm.overcommit_ratio", "vm.swappiness"));
    EXPECT_THAT(Names({{"under", "vm.folder.inner"}}), IsEmpty());
  });
}

TEST_F(ParameterMachineTest, ReportsUnknownNamesAndGroupsOfParameters) {
  RunThere([] {
    EXPECT_THAT(CallErrors("system parameter get", {{"name", "no.such"}}),
                ElementsAre("There is no parameter "
                            "'no.such'"));
    EXPECT_THAT(CallErrors("system parameter get", {{"name", "vm"}}),
                ElementsAre("'vm' is a group of "
                            "parameters"));
    EXPECT_THAT(CallErrors("system parameter set", {{"name", "vm"}, {"value", "1"}}),
                ElementsAre("'vm' is a group of "
                            "parameters"));
  });
}

// Accounts.

class AccountMachineTest : public SystemMachineTest {
 protected:
  AccountMachineTest() { File("etc/nsswitch.conf", "passwd: files\ngroup: files\n"); }

  // Adds accounts from number 1000 on, and a group with the number of each. The group of an account
  // is the one with its number if `hasGroupEach`, otherwise group 1000.
  void AddAccounts(long count, bool hasGroupEach) {
    std::string accounts;
    std::string groups;
    for (long id = 1000; id < 1000 + count; ++id) {
      const std::string number = std::to_string(id);
      accounts += "u" + number + ":x:" + number + ":" + (hasGroupEach ? number : "1000") +
                  "::/home:/bin/sh\n";
      groups += "g" + number + ":x:" + number + ":\n";
    }
    File("etc/passwd", accounts);
    File("etc/group", groups);
  }

  // Returns the processor time that the command used, in seconds.
  static double TimeToList(std::size_t count) {
    const std::clock_t start = std::clock();
    EXPECT_THAT(Call("system account list").GetStructs(), SizeIs(count));
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
  }
};

TEST_F(AccountMachineTest, HasAWordForEachMissingValue) {
  File("etc/passwd", "bare:x:1000:77:::\nfull:x:1001:1000:Full Name,room:/home:/bin/false\n");
  File("etc/group", "staff:x:1000:\n");
  ExpectPrinted("system account list",
                "Name  User Id  Login  Shell       Home\n"
                "----  -------  -----  ----------  ----\n"
                "bare     1000  true   /bin/sh     none\n"
                "full     1001  false  /bin/false  /home\n");
  RunThere([] {
    EXPECT_THAT(CallColumn("system account list", "Group"), ElementsAre("77", "staff"));
    EXPECT_THAT(CallColumn("system account list", "Full Name"), ElementsAre("none", "Full Name"));
    EXPECT_THAT(CallColumn("system account list", "Name", {{"minimum-id", "1001"}}),
                ElementsAre("full"));
  });
}

// Looking up each group separately would read the file of groups once for each account.
TEST_F(AccountMachineTest, GroupsOfManyAccountsAreLookedUpTogether) {
  constexpr long kCount = 30000;
  AddAccounts(kCount, true);
  RunThere([this] {
    const double apart = TimeToList(kCount);
    AddAccounts(kCount, false);
    const double shared = TimeToList(kCount);
    EXPECT_LT(apart, 5 * shared) << "the same number of accounts in one group";
    AddAccounts(kCount, true);
    File("etc/group", "");
    EXPECT_LT(TimeToList(kCount), 5 * shared) << "the same number of accounts without a group";
  });
}

class UserMachineTest : public AccountMachineTest {
 protected:
  UserMachineTest() {
    File("etc/passwd",
         "root:x:0:0:root:/root:/bin/bash\n"
         "daemon:x:1:1:daemon:/usr/sbin:/usr/sbin/nologin\n"
         "anna:x:1000:1000:Anna \x1b[1m Other,,,:/home/anna:/bin/bash\n"
         "bob:x:1001:100::/home/bob:/bin/false\n"
         "eve:x:4294967294:4294967294:Eve:/:/bin/sh\n");
    File("etc/group",
         "root:x:0:\ndaemon:x:1:\nusers:x:100:anna,bob\nanna:x:1000:\nstaff:x:50:bob,anna\n"
         "odd\x1b[2J:x:60:anna\n");
  }

  static std::vector<std::string> Names(const Parameters& parameters) {
    return CallColumn("system account list", "Name", parameters);
  }

  static std::string Groups(const std::string& name) {
    return CallText("system account groups", {{"name", name}});
  }
};

TEST_F(UserMachineTest, ListsAccountsInTheOrderOfTheSystem) {
  ExpectPrinted("system account list",
                "Name    User Id     Login  Shell              Home\n"
                "------  ----------  -----  -----------------  ----\n"
                "root             0  true   /bin/bash          /root\n"
                "daemon           1  false  /usr/sbin/nologin  /usr/sbin\n"
                "anna          1000  true   /bin/bash          /home/anna\n"
                "bob           1001  false  /bin/false         /home/bob\n"
                "eve     4294967294  true   /bin/sh            /\n");
  RunThere([] {
    EXPECT_THAT(CallColumn("system account list", "Group"),
                ElementsAre("root", "daemon", "anna", "users", "4294967294"));
  });
}

TEST_F(UserMachineTest, SelectsAccounts) {
  RunThere([] {
    EXPECT_THAT(Names({{"login", ""}}), ElementsAre("root", "anna", "eve"));
    EXPECT_THAT(Names({{"minimum-id", "1000"}}), ElementsAre("anna", "bob", "eve"));
    EXPECT_THAT(Names({{"minimum-id", "1000"}, {"login", ""}}), ElementsAre("anna", "eve"));
    EXPECT_THAT(Names({{"minimum-id", "4294967295"}}), IsEmpty());
    EXPECT_THAT(Names({{"name", "*a*"}, {"minimum-id", "2"}}), ElementsAre("anna"));
    EXPECT_THAT(Names({{"sort", "User Id"}, {"descending", ""}, {"limit", "2"}}),
                ElementsAre("eve", "bob"));
    EXPECT_THAT(Names({{"sort", "Login"}}), ElementsAre("daemon", "bob", "root", "anna", "eve"))
        << "false before true; equal ones keep their order";
  });
}

TEST_F(UserMachineTest, ShowsStringsOfOthersSafely) {
  RunThere([] {
    EXPECT_THAT(CallColumn("system account list", "Full Name", {{"name", "anna"}}),
                ElementsAre("Anna \\x1b[1m Other"));
    EXPECT_THAT(Groups("anna"), HasSubstr("odd\\x1b[2J"));
  });
}

TEST_F(UserMachineTest, ListsTheGroupsOfAnAccountBeginningWithItsOwn) {
  RunThere([] {
    EXPECT_EQ(Groups("anna"), "anna, users, staff, odd\\x1b[2J");
    EXPECT_EQ(Groups("bob"), "users, staff");
    EXPECT_EQ(Groups("root"), "root");
    EXPECT_EQ(Groups("eve"), "4294967294") << "a group without a name";
    EXPECT_THAT(CallErrors("system account groups", {{"name", "an*"}}),
                ElementsAre("There is no account 'an*'"))
        << "one account, so an exact name";
  });
}

TEST_F(UserMachineTest, NamesTheUsersOfProcesses) {
  AddProcess({1, "init", "", 'S', 0, 0});
  AddProcess({30, "editor", "", 'S', 1, 1000});
  AddProcess({31, "stray", "", 'S', 1, 77});
  RunThere([] {
    EXPECT_THAT(CallColumn("system process list", "User"), ElementsAre("root", "anna", "77"));
    EXPECT_THAT(Ids({{"user", "anna"}}), ElementsAre("30"));
    EXPECT_THAT(Ids({{"user", "1000"}}), ElementsAre("30"));
    EXPECT_THAT(Ids({{"user", "77"}}), ElementsAre("31"));
    EXPECT_THAT(Ids({{"user", "an*"}}), IsEmpty()) << "a name or a number";
  });
}

// The time at which the machine started, in several zones.

struct ZoneCase {
  const char* name;
  const char* zone;
  const char* started;
};

const ZoneCase kZones[] = {
    {"Utc", "UTC0", "2023-11-14 22:13:20"},
    {"HalfAnHour", "XST-05:30", "2023-11-15 03:43:20"},
    {"West", "XST+08:00", "2023-11-14 14:13:20"},
    {"FarEast", "XST-14", "2023-11-15 12:13:20"},
};

class ZoneTest : public SystemMachineTest, public ::testing::WithParamInterface<ZoneCase> {};

TEST_P(ZoneTest, TimesAreInTheZoneOfTheMachine) {
  AddProcess({1, "init", "", 'S', 0, 0});
  File("run/systemd/sessions/1", "USER=anna\nCLASS=user\nLEADER=7\nREALTIME=1700000000999999\n");
  RunThere([] {
    const ScopedEnvironment environment("TZ", GetParam().zone);
    ::tzset();
    EXPECT_EQ(CallStruct("system uptime get").at("Started"), GetParam().started);
    EXPECT_THAT(CallColumn("system process list", "Started"), ElementsAre(GetParam().started));
    EXPECT_THAT(CallColumn("system session list", "Started"), ElementsAre(GetParam().started));
  });
}

INSTANTIATE_TEST_SUITE_P(Zones, ZoneTest, ::testing::ValuesIn(kZones),
                         [](const auto& test) { return test.param.name; });

// Load averages, formatted for people and as integers for programs.

struct LoadCase {
  const char* name;
  const char* content;
  const char* text;
  const char* hundredths;
};

const LoadCase kLoads[] = {
    {"Idle", "0.00 0 0 1/9 7\n", "0.00", "0"},
    {"Small", "0.05 0 0 1/9 7\n", "0.05", "5"},
    {"Whole", "3 0 0 1/9 7\n", "3.00", "300"},
    {"OneDigit", "3.5 0 0 1/9 7\n", "3.50", "350"},
    {"ThreeDigits", "3.999 0 0 1/9 7\n", "3.99", "399"},
    {"Large", "1234.56 0 0 1/9 7\n", "1234.56", "123456"},
    {"Largest", "92233720368547758.07 0 0 1/9 7\n", "92233720368547758.07", "9223372036854775807"},
};

class LoadTest : public SystemMachineTest, public ::testing::WithParamInterface<LoadCase> {};

TEST_P(LoadTest, IsAStringAndAnInteger) {
  File("proc/loadavg", GetParam().content);
  RunThere([] {
    const Row row = CallStruct("system load get");
    EXPECT_EQ(row.at("One Minute"), GetParam().text);
    EXPECT_EQ(row.at("One Minute Hundredths"), GetParam().hundredths);
  });
}

INSTANTIATE_TEST_SUITE_P(Loads, LoadTest, ::testing::ValuesIn(kLoads),
                         [](const auto& test) { return test.param.name; });

// The processor share of a process on a machine that started 187384.99 seconds ago.

struct ShareCase {
  const char* name;
  long ticks;
  long startTicks;
  const char* text;
  const char* hundredths;
};

const ShareCase kShares[] = {
    {"None", 0, 0, "0.00 %", "0"},
    {"Half", 9369250, 0, "50.00 %", "5000"},
    {"All", 18738499, 0, "100.00 %", "10000"},
    {"SeveralThreads", 37476998, 0, "200.00 %", "20000"},
    {"SinceItsStart", 50, 18738399, "50.00 %", "5000"},
    {"StartsNow", 50, 18738499, "0.00 %", "0"},
    {"StartsLater", 50, 18738599, "0.00 %", "0"},
    {"MoreThan64Bits", 9223372036854775807, 18738498, "92233720368547758.07 %",
     "9223372036854775807"},
};

class ShareTest : public SystemMachineTest, public ::testing::WithParamInterface<ShareCase> {};

TEST_P(ShareTest, IsRelativeToTheTimeSinceTheStart) {
  Folder("proc/1");
  AddProcess({7, "x", "", 'S', 1, 0, 0, GetParam().ticks, GetParam().startTicks, 0});
  RunThere([] {
    const Row row = CallRows("system process list").at(0);
    EXPECT_EQ(row.at("CPU"), GetParam().text);
    EXPECT_EQ(row.at("CPU Hundredths"), GetParam().hundredths);
  });
}

INSTANTIATE_TEST_SUITE_P(Shares, ShareTest, ::testing::ValuesIn(kShares),
                         [](const auto& test) { return test.param.name; });

// Crontabs.

class CrontabMachineTest : public SystemMachineTest {
 protected:
  CrontabMachineTest() {
    File("etc/crontab", "SHELL=/bin/sh\n17 * * * * root run-parts --report /etc/cron.hourly\n");
    File("etc/cron.d/backup", "@reboot backup /usr/bin/save all\n70 1 * * * root never\n@often\n");
    File("var/spool/cron/crontabs/bob", "*/5 8-18 * * Mon-Fri check mail\n");
    File("var/spool/cron/crontabs/anna", "MAILTO=ann\n@daily tidy \x1b[2J\n");
  }

  static std::vector<std::string> Commands(const Parameters& parameters) {
    return CallColumn("system crontab list", "Command", parameters);
  }
};

TEST_F(CrontabMachineTest, ListsTheCommandsOfUsersAndOfTheSystem) {
  ExpectPrinted("system crontab list",
                "User     Schedule              Command\n"
                "-------  --------------------  -------\n"
                "anna     @daily                tidy \\x1b[2J\n"
                "bob      */5 8-18 * * Mon-Fri  check mail\n"
                "root     17 * * * *            run-parts --report /etc/cron.hourly\n"
                "backup   @reboot               /usr/bin/save all\n"
                "unknown  broken                70 1 * * * root never\n"
                "unknown  broken                @often\n");
}

TEST_F(CrontabMachineTest, ShowsEveryField) {
  RunThere([] {
    const std::vector<Row> rows = CallRows("system crontab list");
    ASSERT_EQ(rows.size(), 6u);
    EXPECT_EQ(rows[0], Row({{"User", "anna"},
                            {"Schedule", "@daily"},
                            {"Minute", "0"},
                            {"Hour", "0"},
                            {"Day", "*"},
                            {"Month", "*"},
                            {"Weekday", "*"},
                            {"Command", "tidy \\x1b[2J"},
                            {"Environment", "MAILTO=ann"},
                            {"File", "/var/spool/cron/crontabs/anna"},
                            {"Line", "2"},
                            {"Problem", "none"}}));
    EXPECT_EQ(rows[3].at("Minute"), "-") << "@reboot";
    EXPECT_EQ(rows[3].at("Environment"), "") << "an empty list";
    EXPECT_EQ(rows[4], Row({{"User", "unknown"},
                            {"Schedule", "broken"},
                            {"Minute", "-"},
                            {"Hour", "-"},
                            {"Day", "-"},
                            {"Month", "-"},
                            {"Weekday", "-"},
                            {"Command", "70 1 * * * root never"},
                            {"Environment", ""},
                            {"File", "/etc/cron.d/backup"},
                            {"Line", "2"},
                            {"Problem", "'70' is not a valid minute"}}));
  });
}

TEST_F(CrontabMachineTest, SaysWhichFilesCronIgnores) {
  Mode("etc/cron.d/backup", 0666);
  RunThere([] {
    const std::vector<Row> rows = CallRows("system crontab list", {{"match", "save|never"}});
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0].at("Schedule"), "ignored");
    EXPECT_EQ(rows[0].at("Problem"),
              "cron ignores the file: others than its owner can write to it");
    EXPECT_EQ(rows[1].at("Schedule"), "broken");
    EXPECT_EQ(rows[1].at("Problem"), "'70' is not a valid minute");
  });
}

TEST_F(CrontabMachineTest, FiltersEntries) {
  RunThere([] {
    EXPECT_THAT(Commands({{"user", "bob"}, {"source", "user"}}), ElementsAre("check mail"));
    EXPECT_THAT(Commands({{"user", "b*"}}),
                ElementsAre("check mail", "/usr/bin/save all", "70 1 * * * root never", "@often"))
        << "a broken line may be one of anybody";
    EXPECT_THAT(Commands({{"user", "bo"}, {"source", "user"}}), IsEmpty());
    EXPECT_THAT(Commands({{"match", "^(check|run)"}}),
                ElementsAre("check mail", "run-parts --report /etc/cron.hourly"));
    EXPECT_THAT(Commands({{"source", "system"}, {"match", "save"}}),
                ElementsAre("/usr/bin/save all"));
    EXPECT_THAT(Commands({{"source", "user"}}), SizeIs(2));
    EXPECT_THAT(CallErrors("system crontab list", {{"match", "("}}),
                ElementsAre(HasSubstr("'(' is not a regular expression")));
  });
}

TEST_F(CrontabMachineTest, AUserMayBeAllowedToReadOnlyTheEntriesOfTheSystem) {
  Mode("var/spool/cron/crontabs", 0700);
  RunThere([] {
    const PlainUser user;
    EXPECT_THAT(CallErrors("system crontab list"),
                ElementsAre("Unable to read /var/spool/cron/crontabs: Permission denied"));
    EXPECT_THAT(CallRows("system crontab list", {{"source", "system"}}), SizeIs(4));
  });
}

TEST_F(SystemMachineTest, AMachineWithoutCronHasNoEntries) {
  Folder("etc");
  Folder("var");
  RunThere([] { EXPECT_THAT(CallRows("system crontab list"), IsEmpty()); });
}

// Sessions.

TEST_F(SystemMachineTest, ListsTheSessionsOfTheLoginService) {
  File("run/systemd/sessions/2",
       "UID=0\nUSER=root\nTTY=tty1\nCLASS=user\nLEADER=80\nREALTIME=1700000200000000\n");
  File("run/systemd/sessions/1",
       "USER=anna\nTTY=pts/0\nREMOTE_HOST=203.0.113.9\nCLASS=user\nLEADER=77\n"
       "REALTIME=1700000100999999\n");
  File("run/systemd/sessions/c1", "USER=gdm\nCLASS=greeter\n");
  RunThere([] {
    const std::vector<Row> rows = CallRows("system session list");
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0].at("User"), "anna") << "the oldest first";
    EXPECT_EQ(rows[0].at("Terminal"), "pts/0");
    EXPECT_EQ(rows[0].at("Host"), "203.0.113.9");
    EXPECT_EQ(rows[0].at("Process"), "77");
    EXPECT_EQ(rows[1].at("Host"), "local");
    EXPECT_EQ(rows[1].at("User"), "root");
    EXPECT_THAT(CallColumn("system session list", "User", {{"user", "root"}}), ElementsAre("root"));
    EXPECT_THAT(CallColumn("system session list", "User", {{"user", "anna"}, {"user", "root"}}),
                ElementsAre("anna", "root"));
    EXPECT_THAT(CallColumn("system session list", "User", {{"user", "*n*"}}), ElementsAre("anna"));
  });
}

TEST_F(SystemMachineTest, HasAWordForASessionWithoutTerminal) {
  File("run/systemd/sessions/1", "USER=anna\nCLASS=user\nLEADER=7\nREALTIME=1700000100999999\n");
  RunThere([] {
    const Row row = CallRows("system session list").at(0);
    EXPECT_EQ(row.at("Terminal"), "none");
    EXPECT_EQ(row.at("Host"), "local");
  });
}

TEST_F(SystemMachineTest, ListsNoSessionWithoutALoginService) {
  RunThere([] { EXPECT_THAT(CallRows("system session list"), IsEmpty()); });
}

}  // namespace
}  // namespace Kestrel::Testing
