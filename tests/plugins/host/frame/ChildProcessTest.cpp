// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/ChildProcess.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <functional>
#include <string>
#include <vector>

#include "kestrel/KestrelException.h"
#include "plugins/host/frame/HostFile.h"
#include "plugins/host/support/Namespaces.h"
#include "plugins/shell-common/MadeUpTool.h"
#include "support/ScopedEnvironment.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

namespace Kestrel::Host {
namespace {

using ::testing::Contains;
using ::testing::Not;
using Testing::ScopedEnvironment;
using Testing::ScopedTempDir;
using ::testing::StartsWith;
using ::testing::ThrowsMessage;

ProgramResult RunScript(const std::string& script, const std::vector<std::string>& arguments = {}) {
  std::vector<std::string> words = {"-c", script, "name"};
  words.insert(words.end(), arguments.begin(), arguments.end());
  return RunProgram("/bin/sh", words);
}

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds kShort(300);
// A limit that is shorter than the time for which the killed programs would run.
constexpr std::chrono::seconds kLong(30);

ProgramResult RunWithin(std::chrono::milliseconds limit, const std::string& script) {
  return RunProgramWithin(limit, "/bin/sh", {"-c", script});
}

// Runs a script that does not end by itself. A busy machine may need more than `limit` to run the
// first commands of the script, so the limit is doubled until `hasBegun` returns true or the limit
// reaches kLong.
ProgramResult KillOnceBegun(std::chrono::milliseconds limit, const std::string& script,
                            const std::function<bool(const ProgramResult&)>& hasBegun) {
  ProgramResult result = RunWithin(limit, script);
  for (; !hasBegun(result) && limit < kLong; limit *= 2) {
    result = RunWithin(limit, script);
  }
  return result;
}

bool HasWritten(const ProgramResult& result) { return !result.errorOutput.empty(); }

// Returns false also for a process that has ended but has not been waited for.
bool IsRunning(pid_t process) {
  const auto status = ReadFile("/proc/" + std::to_string(process) + "/stat");
  return status && status->find(") Z") == std::string::npos;
}

std::string WriteProgram(const ScopedTempDir& folder, const std::string& name, mode_t mode) {
  const std::string path = folder.Write(name, "#!/bin/sh\n");
  EXPECT_EQ(::chmod(path.c_str(), mode), 0);
  return path;
}

TEST(FindProgramTest, FindsTheFirstProgramInPath) {
  const ScopedTempDir folder;
  WriteProgram(folder, "plain/tool", 0644);
  folder.MakeDirectory("folder/tool");
  const std::string first = WriteProgram(folder, "first/tool", 0755);
  WriteProgram(folder, "second/tool", 0755);
  const std::string start = folder.GetPath();
  const ScopedEnvironment path("PATH", start + "/plain:" + start + "/folder:" + start +
                                           "/absent:" + start + "/first:" + start + "/second");
  EXPECT_EQ(FindProgram("tool"), first);
  EXPECT_EQ(FindProgram("other"), std::nullopt);
}

TEST(FindProgramTest, SkipsRelativeFolders) {
  const ScopedEnvironment path("PATH", "::.:bin:../../../bin");
  EXPECT_EQ(FindProgram("sh"), std::nullopt);
}

TEST(FindProgramTest, LooksInTheStandardFoldersWithoutPath) {
  const ScopedEnvironment path("PATH", std::nullopt);
  EXPECT_EQ(FindProgram("sh"), "/usr/bin/sh");
}

TEST(RunProgramTest, ReturnsBothStreamsAndTheStatus) {
  const ProgramResult result = RunScript("echo out; echo wrong >&2; exit 3");
  EXPECT_EQ(result.output, "out\n");
  EXPECT_EQ(result.errorOutput, "wrong\n");
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(RunScript("kill -TERM $$").status, 128 + SIGTERM);
}

TEST(RunProgramTest, PassesArgumentsUnchanged) {
  const std::vector<std::string> odd = {"", "a b", "it's", "$(x)", "*", "a\nb"};
  EXPECT_EQ(RunScript("printf '<%s>' \"$@\"", odd).output, "<><a b><it's><$(x)><*><a\nb>");
}

TEST(RunProgramTest, ReadsMuchOfBothStreams) {
  const ProgramResult result =
      RunScript("head -c 300000 /dev/zero; head -c 300000 /dev/zero >&2; head -c 300000 /dev/zero");
  EXPECT_EQ(result.output.size(), 600000u);
  EXPECT_EQ(result.errorOutput.size(), 300000u);
}

TEST(RunProgramTest, EndsAProgramWhoseReaderHasEnough) {
  std::string text;
  const ProgramResult result = RunProgram("/usr/bin/yes", {}, [&text](std::string_view piece) {
    text += piece;
    return text.size() < 1000000;
  });
  EXPECT_EQ(text.substr(0, 4), "y\ny\n");
  EXPECT_EQ(result.status, 0);
}

TEST(RunProgramTest, RunsWithAnEmptyStandardInput) {
  EXPECT_EQ(RunScript("cat; echo end").output, "end\n");
}

TEST(RunProgramTest, PassesThePathAndTheZoneButNoLocaleAndNoOptions) {
  const ScopedEnvironment option("POSIXLY_CORRECT", "1");
  const ScopedEnvironment locale("LC_ALL", "de_DE.UTF-8");
  const ScopedEnvironment language("LANGUAGE", "de");
  const ScopedEnvironment zone("TZ", "Asia/Kolkata");
  const ScopedTempDir folder;
  const auto lines =
      Testing::WitnessLines("printf %s '" + RunProgram("/usr/bin/env", {}).output + "'");
  EXPECT_THAT(lines, Contains("LC_ALL=C"));
  EXPECT_THAT(lines, Contains("TZ=Asia/Kolkata"));
  EXPECT_THAT(lines, Contains(StartsWith("PATH=")));
  EXPECT_THAT(lines, Not(Contains(StartsWith("POSIXLY_CORRECT"))));
  EXPECT_THAT(lines, Not(Contains(StartsWith("LANGUAGE"))));
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "LC_ALL=C"), 1);
}

TEST(RunProgramTest, ReportsAProgramThatCannotBeStarted) {
  EXPECT_THAT(
      [] { RunProgram("/absent/tool", {}); },
      ThrowsMessage<KestrelException>("Unable to run /absent/tool: No such file or directory"));
}

TEST(RunProgramTest, LeavesNoFileDescriptorAndNoChild) {
  const auto before = ListFolder("/proc/self/fd");
  RunScript("true");
  RunProgram("/usr/bin/yes", {}, [](std::string_view) { return false; });
  EXPECT_THROW(RunProgram("/absent/tool", {}), KestrelException);
  EXPECT_EQ(ListFolder("/proc/self/fd"), before);
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
}

TEST(RunProgramWithinTest, ReturnsTheSameAsRunProgramForAProgramThatEndsInTime) {
  const ProgramResult result = RunWithin(kLong, "echo out; echo wrong >&2; exit 3");
  EXPECT_EQ(result.output, "out\n");
  EXPECT_EQ(result.errorOutput, "wrong\n");
  EXPECT_EQ(result.status, 3);
  EXPECT_FALSE(result.isTimedOut);
  EXPECT_EQ(RunWithin(kLong, "kill -TERM $$").status, 128 + SIGTERM);
}

TEST(RunProgramWithinTest, ReadsMuchOfBothStreams) {
  const ProgramResult result = RunWithin(
      kLong, "head -c 300000 /dev/zero; head -c 300000 /dev/zero >&2; head -c 300000 /dev/zero");
  EXPECT_EQ(result.output.size(), 600000u);
  EXPECT_EQ(result.errorOutput.size(), 300000u);
}

TEST(RunProgramWithinTest, KillsAProgramThatTakesTooLong) {
  const Clock::time_point start = Clock::now();
  const ProgramResult result =
      KillOnceBegun(kShort, "echo out; echo wrong >&2; sleep 60", HasWritten);
  EXPECT_LT(Clock::now() - start, kLong);
  EXPECT_TRUE(result.isTimedOut);
  EXPECT_EQ(result.status, 128 + SIGKILL);
  EXPECT_EQ(result.output, "out\n");
  EXPECT_EQ(result.errorOutput, "wrong\n");
}

TEST(RunProgramWithinTest, KillsAProgramThatIgnoresSignals) {
  EXPECT_TRUE(RunWithin(kShort, "trap '' TERM INT HUP; while :; do sleep 1; done").isTimedOut);
}

TEST(RunProgramWithinTest, KillsAProgramThatClosedItsStreams) {
  EXPECT_TRUE(RunWithin(kShort, "exec >&- 2>&-; sleep 60").isTimedOut);
}

TEST(RunProgramWithinTest, KillsAProgramThatNeverStopsWriting) {
  const ProgramResult result =
      KillOnceBegun(std::chrono::milliseconds(20), "exec yes >&2", HasWritten);
  EXPECT_TRUE(result.isTimedOut);
  EXPECT_EQ(result.errorOutput.substr(0, 4), "y\ny\n");
}

TEST(RunProgramWithinTest, RefusesAnOutputThatWouldFillTheMemory) {
  for (const std::string script : {"exec head -c 300000000 /dev/zero", "exec yes >&2"}) {
    EXPECT_THAT([&] { RunWithin(kLong, script); },
                ThrowsMessage<KestrelException>("The output of /bin/sh is too long"));
  }
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
}

TEST(RunProgramWithinTest, KillsWhatTheProgramStarted) {
  const ScopedTempDir folder;
  folder.Write("child", "");
  KillOnceBegun(kShort, "sleep 60 & echo $! >'" + folder.GetPath("child") + "'; wait",
                [&](const ProgramResult& /*result*/) { return folder.Read("child") != ""; });
  const int child = std::stoi(folder.Read("child"));
  // The child's new parent may need a moment until it has waited for the child.
  for (int attempt = 0; attempt < 1000 && IsRunning(child); ++attempt) {
    ::usleep(10000);
  }
  EXPECT_FALSE(IsRunning(child));
}

TEST(RunProgramWithinTest, DoesNotWaitForAProcessThatTheProgramLeavesRunning) {
  const ScopedTempDir folder;
  const Clock::time_point start = Clock::now();
  const ProgramResult result =
      RunWithin(kLong, "sleep 60 & echo $! >'" + folder.GetPath("child") + "'; echo out; exit 4");
  EXPECT_LT(Clock::now() - start, kLong);
  EXPECT_FALSE(result.isTimedOut);
  EXPECT_EQ(result.output, "out\n");
  EXPECT_EQ(result.status, 4);
  const int child = std::stoi(folder.Read("child"));
  EXPECT_TRUE(IsRunning(child));
  ::kill(child, SIGKILL);
}

TEST(RunProgramWithinTest, ReadsAllThatAnEndedProgramWrote) {
  for (int attempt = 0; attempt < 20; ++attempt) {
    ASSERT_EQ(RunWithin(kLong, "head -c 60000 /dev/zero; head -c 5 /dev/zero >&2").output.size(),
              60000u);
  }
}

// The program stops the process that runs it, which continues only after the program has ended and
// the time is up. The program makes the pipe larger than what is read at once.
TEST(RunProgramWithinTest, ReadsAllOfAProgramThatEndedUnnoticedBeforeTheTimeWasUp) {
  const std::string script =
      "kill -STOP $PPID\n"
      "(while [ -e /proc/$$ ] && ! grep -q ') Z' /proc/$$/stat; do sleep 0.1; done\n"
      " sleep 0.5; kill -CONT $PPID) >/dev/null 2>&1 &\n"
      "exec python3 -c 'import fcntl, os\n"
      "fcntl.fcntl(1, fcntl.F_SETPIPE_SZ, 1 << 20)\n"
      "os.write(1, bytes(300000))'";
  const auto run = [&script] {
    const ProgramResult result = RunWithin(kShort, script);
    EXPECT_EQ(result.output.size(), 300000u);
    EXPECT_FALSE(result.isTimedOut);
  };
  EXPECT_EQ(Testing::RunInNamespaces(0, run), "");
}

TEST(RunProgramWithinTest, WorksWhenThisProcessIgnoresTheSignalsOfItsChildren) {
  ::signal(SIGCHLD, SIG_IGN);
  const ProgramResult result = RunWithin(kLong, "echo out");
  ::signal(SIGCHLD, SIG_DFL);
  EXPECT_EQ(result.output, "out\n");
  EXPECT_FALSE(result.isTimedOut);
}

TEST(RunProgramWithinTest, ReportsAProgramThatCannotBeStarted) {
  EXPECT_THAT(
      [] { RunProgramWithin(kLong, "/absent/tool", {}); },
      ThrowsMessage<KestrelException>("Unable to run /absent/tool: No such file or directory"));
}

TEST(RunProgramWithinTest, LeavesNoFileDescriptorAndNoChild) {
  const auto before = ListFolder("/proc/self/fd");
  RunWithin(kLong, "true");
  RunWithin(kShort, "sleep 60");
  EXPECT_EQ(ListFolder("/proc/self/fd"), before);
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
}

TEST(ProgramResultTest, HasAReason) {
  EXPECT_EQ((ProgramResult{4, "", ""}).GetReason(), "exit status 4");
  EXPECT_EQ((ProgramResult{137, "", "wrong\n", true}).GetReason(), "it did not finish in time");
  EXPECT_EQ((ProgramResult{1, "", "\nNo such unit\nsee the manual\n"}).GetReason(), "No such unit");
}

}  // namespace
}  // namespace Kestrel::Host
