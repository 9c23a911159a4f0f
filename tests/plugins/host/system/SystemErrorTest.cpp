// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include "plugins/host/support/FileWatch.h"
#include "plugins/host/support/HostCall.h"
#include "plugins/host/system/FullMachine.h"

// An error of the system must be an error of the command. It must never result in a shorter list,
// or in a number instead of an existing name. In each call, one file or folder cannot be opened.
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
  const char* file;  // a file or folder that it opens; proves that the watch works
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

class SystemErrorTest : public FullMachineTest,
                        public ::testing::WithParamInterface<WatchedCommand> {
 protected:
  static CommandResult Answer() { return Call(GetParam().path, GetParam().parameters); }

  static std::vector<std::string> FilesOf() {
    const FileWatch watch;
    Answer();
    return watch.GetOpened();
  }

  // Whether the failure is shown in a row of the list of parameters. The list does this for every
  // failure to read a parameter, except for a lack of resources; of these, the test tries EACCES.
  // In all other cases, the command fails.
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
