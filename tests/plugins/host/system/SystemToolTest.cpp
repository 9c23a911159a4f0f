// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utmpx.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "plugins/host/support/HostRun.h"
#include "support/PseudoTerminal.h"
#include "support/Sanitizer.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

// The commands below "system" in the real tool.
namespace Kestrel::Testing {
namespace {

using ::testing::AnyOf;
using ::testing::Eq;
using ::testing::HasSubstr;

TEST(SystemToolTest, ReportsAMissingPermission) {
  const VexilResult result =
      HostRun({"system", "parameter", "set", "--name=kernel.osrelease", "--value=1"}).Run();
  // Not even root may change this parameter.
  EXPECT_THAT(
      result.err,
      AnyOf(Eq("Errors: \nYou do not have permission to "
               "change the parameter 'kernel.osrelease'; usually only root may, and some are "
               "read-only\n"),
            Eq("Errors: \nThe parameter "
               "'kernel.osrelease' cannot be changed from here: Read-only file system\n")));
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.status, 1);
}

// Returns whether a machine can be simulated in a separate mount namespace.
bool CanMakeUpAMachine() { return ::system("unshare --mount true 2>/dev/null") == 0; }

// Returns the output of a command on a machine that the shell commands in `setUp` prepare.
std::string PrintElsewhere(const std::string& setUp, const std::string& command) {
  return Witness("unshare --mount sh -ec '" + setUp + "\n" + command + "'");
}

const std::string kTool = std::string(KESTREL_HOST_TOOL) + " --plugin=" + KESTREL_HOST_PLUGIN + " ";

TEST(SystemToolTest, ListsTheSameSessionsAsWho) {
  if (!CanMakeUpAMachine()) {
    GTEST_SKIP() << "a machine can be made up by root alone";
  }
  utmpx entry = {};
  entry.ut_type = USER_PROCESS;
  entry.ut_pid = ::getpid();
  entry.ut_tv.tv_sec = 1700000100;
  std::strcpy(entry.ut_user, "anna");
  std::strcpy(entry.ut_line, "pts/0");
  std::strcpy(entry.ut_host, "203.0.113.9");
  const ScopedTempDir folder;
  const std::string records =
      folder.Write("utmp", std::string_view(reinterpret_cast<const char*>(&entry), sizeof(entry)));
  const std::string setUp = "mount -t tmpfs none /run; cp " + records + " /run/utmp";
  const auto who = WordsIn(PrintElsewhere(setUp, "LC_ALL=C who --ips"));
  ASSERT_EQ(who.size(), 6u);
  const std::string moment = WordsIn(Witness("date -d @1700000100 \"+%F %T|%b %d %H:%M\""), 1)[0];
  EXPECT_EQ(moment.substr(moment.find('|') + 1), who[2] + " " + who[3] + " " + who[4] + "\n");
  EXPECT_EQ(PrintElsewhere(setUp, kTool + "--formatter=simple system session list --user=anna"),
            "\nSession:\n   User: " + who[0] + "\n   Terminal: " + who[1] +
                "\n   Started: " + moment.substr(0, moment.find('|')) +
                "\n   Process: " + std::to_string(::getpid()) + "\n   Host: 203.0.113.9\n\n");
}

TEST(SystemToolTest, ListsTheModulesOfAnotherMachine) {
  if (Testing::kIsSanitized) {
    GTEST_SKIP() << "the sanitizer needs files of its own in /proc";
  }
  if (!CanMakeUpAMachine()) {
    GTEST_SKIP() << "a machine can be made up by root alone";
  }
  const ScopedTempDir folder;
  const std::string modules = folder.Write("modules",
                                           "snd_timer 49152 2 snd_seq,snd_pcm, Live 0x0\n"
                                           "loop 40960 0 - Live 0x0\n");
  const std::string setUp = "mount --bind " + folder.GetPath() + " /proc";
  EXPECT_EQ(PrintElsewhere(setUp, kTool + "system module list"),
            "Name       Size Bytes  References  State  Used By\n"
            "---------  ----------  ----------  -----  -------\n"
            "loop            40960           0  Live   \n"
            "snd_timer       49152           2  Live   snd_seq, snd_pcm\n");
  EXPECT_EQ(PrintElsewhere(setUp, kTool + "system module list --unused"),
            "Name  Size Bytes  References  State  Used By\n"
            "----  ----------  ----------  -----  -------\n"
            "loop       40960           0  Live   \n");
  EXPECT_EQ(PrintElsewhere(setUp, kTool + "system module check --name=snd-timer"), "true\n");
}

TEST(SystemToolTest, ReportsWhatIsMissingWithoutProc) {
  if (Testing::kIsSanitized) {
    GTEST_SKIP() << "the sanitizer needs files of its own in /proc";
  }
  if (!CanMakeUpAMachine()) {
    GTEST_SKIP() << "a machine can be made up by root alone";
  }
  const auto print = [](const std::string& command) {
    return PrintElsewhere("mount -t tmpfs none /proc; mount -t tmpfs none /sys",
                          kTool + command + " 2>&1 || true");
  };
  const std::string missing = ": No such file or directory\n";
  EXPECT_EQ(print("system load get"), "Errors: \nUnable to read /proc/loadavg" + missing);
  EXPECT_EQ(print("system uptime get"), "Errors: \nUnable to read /proc/uptime" + missing);
  EXPECT_EQ(print("system memory get"), "Errors: \nUnable to read /proc/meminfo" + missing);
  EXPECT_EQ(print("system process list"), "Errors: \nUnable to read /proc/stat" + missing);
  EXPECT_EQ(print("system cpu list"),
            "Errors: \nUnable to find any processor in "
            "/sys/devices/system/cpu and /proc/cpuinfo\n");
  EXPECT_EQ(print("system parameter get --name=vm.swappiness"),
            "Errors: \nThere is no parameter "
            "'vm.swappiness'\n");
  EXPECT_EQ(print("system parameter list"), "Errors: \nUnable to read /proc/sys" + missing);
  EXPECT_EQ(print("system module list"), "Errors: \nUnable to read /proc: nothing is there\n");
  EXPECT_THAT(print("system version get"), HasSubstr("   Kernel      : Linux\n"));
}

}  // namespace
}  // namespace Kestrel::Testing
