// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/ChildProcess.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <string>
#include <vector>

#include "kestrel/KestrelException.h"
#include "plugins/host/frame/HostFile.h"
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

TEST(FindProgramTest, PassesOverRelativeFolders) {
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

TEST(RunProgramTest, PassesArgumentsAsTheyAre) {
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

TEST(RunProgramTest, GivesAnEmptyStandardInput) {
  EXPECT_EQ(RunScript("cat; echo end").output, "end\n");
}

TEST(RunProgramTest, KeepsTheEnvironmentFromTheProgram) {
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

TEST(RunProgramTest, LeavesNoDescriptorAndNoChild) {
  const auto before = ListFolder("/proc/self/fd");
  RunScript("true");
  RunProgram("/usr/bin/yes", {}, [](std::string_view) { return false; });
  EXPECT_THROW(RunProgram("/absent/tool", {}), KestrelException);
  EXPECT_EQ(ListFolder("/proc/self/fd"), before);
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
}

TEST(ProgramResultTest, HasAReason) {
  EXPECT_EQ((ProgramResult{4, "", ""}).GetReason(), "exit status 4");
  EXPECT_EQ((ProgramResult{1, "", "\nNo such unit\nsee the manual\n"}).GetReason(), "No such unit");
}

}  // namespace
}  // namespace Kestrel::Host
