// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <utmpx.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "plugins/host/support/FileWatch.h"
#include "plugins/host/support/HostCall.h"
#include "plugins/host/support/MadeUpMachine.h"

// An error of the system is an error of the command: never a shorter list, and never a number for
// what has a name. Each file and folder that a command opens fails once.
namespace Kestrel::Testing {
namespace {

using ::testing::AnyOf;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;

struct WatchedCommand {
  const char* name;
  const char* path;
  Parameters parameters;
  const char* file;  // one that it opens, as proof that the watch sees it
};

const WatchedCommand kCommands[] = {
    {"AccountGroups", "system account groups", {{"name", "anna"}}, "/etc/group"},
    {"AccountList", "system account list", {}, "/etc/passwd"},
    {"ClockGet", "system clock get", {}, "/etc/adjtime"},
    {"CpuCount", "system cpu count", {}, "/sys/devices/system/cpu/present"},
    {"CpuList", "system cpu list", {}, "/sys/devices/system/cpu/cpu0/topology/core_id"},
    {"CpuUsageList", "system cpu usage list", {{"interval", "10"}}, "/proc/stat"},
    {"CrontabList", "system crontab list", {}, "/var/spool/cron/crontabs/anna"},
    {"DeviceList", "system device list", {}, "/sys/bus/usb/devices/1-1/idVendor"},
    {"LoadGet", "system load get", {}, "/proc/loadavg"},
    {"MemoryGet", "system memory get", {}, "/proc/meminfo"},
    {"ModuleCheck", "system module check", {{"name", "loop"}}, "/proc/modules"},
    {"ModuleList", "system module list", {}, "/proc/modules"},
    {"ParameterGet",
     "system parameter get",
     {{"name", "vm.swappiness"}},
     "/proc/sys/vm/swappiness"},
    {"ParameterList", "system parameter list", {}, "/proc/sys/vm"},
    {"ProcessList", "system process list", {}, "/proc/30/cmdline"},
    {"ProcessSignal", "system process signal", {{"name", "no such"}}, "/proc/30/stat"},
    {"SessionList", "system session list", {}, "/run/utmp"},
    {"UptimeGet", "system uptime get", {}, "/proc/stat"},
    {"VersionGet", "system version get", {}, "/etc/os-release"},
};

class SystemErrorTest : public MadeUpMachineTest,
                        public ::testing::WithParamInterface<WatchedCommand> {
 protected:
  SystemErrorTest() {
    AddStatistics();
    AddProcess("1", "0");
    AddProcess("30", "4000000000");
    AddCpus();
    AddClockAndDevices();
    File("proc/modules", "loop 40960 0 - Live 0x0\n");
    File("proc/sys/vm/swappiness", "60\n");
    File("proc/sys/net/core/somaxconn", "4096\n");
    AddUsers();
    AddSession();
    File("etc/os-release", "PRETTY_NAME=Made-up\n");
    File("etc/crontab", "@daily root run\n");
    File("etc/cron.d/package", "@daily root run\n");
    File("var/spool/cron/crontabs/anna", "@daily run\n");
  }

  static CommandResult Answer() { return Call(GetParam().path, GetParam().parameters); }

  static std::vector<std::string> FilesOf() {
    const FileWatch watch;
    Answer();
    return watch.GetOpened();
  }

  // That a parameter may not be read is shown in its row; everything else is an error.
  static bool IsShown(const std::string& file, int error) {
    return std::string(GetParam().path) == "system parameter list" && error == EACCES &&
           (file == "/proc/sys/vm/swappiness" || file == "/proc/sys/net/core/somaxconn");
  }

  static void ExpectError(const std::string& file, int error) {
    SCOPED_TRACE(file + ": " + std::strerror(error));
    FileWatch watch(file, error);
    const CommandResult result = Answer();
    EXPECT_TRUE(watch.HasFailed());
    if (IsShown(file, error)) {
      EXPECT_EQ(result.GetStructs().size(), 2u);
      EXPECT_THAT(FieldOf(result.GetStructs(), "Value"), Contains("unreadable"));
      return;
    }
    ASSERT_EQ(result.GetErrors().size(), 1u);
    EXPECT_EQ(result.GetValue(), nullptr) << "there is no shorter answer";
    EXPECT_THAT(result.GetErrors()[0], Not(HasSubstr("There is no process")));
    if (error == EMFILE) {
      EXPECT_THAT(result.GetErrors()[0], AnyOf(HasSubstr(file), HasSubstr("'vm.swappiness'")));
      EXPECT_THAT(result.GetErrors()[0], HasSubstr("Too many open files"));
    }
  }

 private:
  void AddStatistics() {
    File("proc/uptime", "187384.99 360000.50\n");
    File("proc/stat", "cpu  1 2 3 4 5 6 7 8 0 0\ncpu0 1 2 3 4 5 6 7 8 0 0\nbtime 1700000000\n");
    File("proc/loadavg", "0.46 12.00 0.32 2/95 25897\n");
    File("proc/meminfo", "MemTotal: 16384000 kB\nMemFree: 1000 kB\n");
  }

  void AddProcess(const std::string& id, const std::string& user) {
    File("proc/" + id + "/stat",
         id + " (x) S 1 1 1 0 1 0 1 2 3 4 5 0 0 0 20 0 1 0 7 4194304 0 0\n");
    File("proc/" + id + "/status", "Uid:\t0\t" + user + "\t0\t0\n");
    File("proc/" + id + "/cmdline", "");
  }

  void AddCpus() {
    File("proc/cpuinfo", "processor : 0\nmodel name : Model A\n");
    const std::string folder = "sys/devices/system/cpu";
    File(folder + "/present", "0\n");
    File(folder + "/online", "0\n");
    File(folder + "/cpu0/topology/physical_package_id", "0\n");
    File(folder + "/cpu0/topology/core_id", "4\n");
    File(folder + "/cpu0/topology/thread_siblings_list", "0\n");
  }

  void AddClockAndDevices() {
    File("etc/adjtime", "0.0 0 0.0\n0\nUTC\n");
    File("etc/timezone", "Etc/UTC\n");
    File("sys/class/rtc/rtc0/hctosys", "1\n");
    File("sys/class/rtc/rtc0/since_epoch", "1700000000\n");
    Folder("sys/bus/pci/devices");
    for (const char* const id : {"idVendor", "idProduct"}) {
      File(std::string("sys/bus/usb/devices/1-1/") + id, "1d6b\n");
    }
    for (const char* const part : {"bDeviceClass", "bDeviceSubClass", "bDeviceProtocol"}) {
      File(std::string("sys/bus/usb/devices/1-1/") + part, "09\n");
    }
  }

  void AddUsers() {
    File("etc/nsswitch.conf", "passwd: files\ngroup: files\n");
    File("etc/passwd", "root:x:0:0::/root:/bin/sh\nanna:x:1000:1000:Anna:/home/anna:/bin/sh\n");
    File("etc/group", "root:x:0:\nanna:x:1000:\nstaff:x:50:anna\n");
  }

  void AddSession() {
    utmpx entry = {};
    entry.ut_type = USER_PROCESS;
    entry.ut_pid = ::getpid();
    std::memcpy(entry.ut_user, "anna", 4);
    File("run/utmp", std::string_view(reinterpret_cast<const char*>(&entry), sizeof(entry)));
  }
};

TEST_P(SystemErrorTest, AFileThatFailsOnceIsAnError) {
  RunThere([] {
    const std::vector<std::string> files = FilesOf();
    ASSERT_THAT(files, Contains(GetParam().file));
    for (const std::string& file : files) {
      for (const int error : {EACCES, EMFILE, EIO}) {
        if (error != EIO || !IsShown(file, EACCES)) {
          ExpectError(file, error);
        }
      }
    }
  });
}

INSTANTIATE_TEST_SUITE_P(Commands, SystemErrorTest, ::testing::ValuesIn(kCommands),
                         [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace Kestrel::Testing
