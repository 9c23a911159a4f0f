// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Settings of signals that the tool inherits, and signals that it receives while a child runs.

#include <gmock/gmock.h>
#include <signal.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "support/PseudoTerminal.h"
#include "support/ScopedTempDir.h"
#include "support/VexilRun.h"

namespace Kestrel::Testing {

namespace {

using ::testing::HasSubstr;

std::string ReadFile(const std::string& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

bool IsRunning(const std::string& process) {
  const std::string status = ReadFile("/proc/" + process + "/stat");
  const std::size_t name = status.rfind(')');
  return name != std::string::npos && status.compare(name, 4, ") Z ") != 0;
}

/// Returns whether `process` ends within ten seconds.
bool EndsSoon(const std::string& process) {
  for (int i = 0; i < 10000 && IsRunning(process); ++i) {
    usleep(1000);
  }
  return !IsRunning(process);
}

/// Returns whether `process` or a process below it runs the program sleep.
bool IsSleeping(const std::string& process) {
  if (ReadFile("/proc/" + process + "/comm") == "sleep\n") {
    return true;
  }
  std::istringstream children(ReadFile("/proc/" + process + "/task/" + process + "/children"));
  for (std::string child; children >> child;) {
    if (IsSleeping(child)) {
      return true;
    }
  }
  return false;
}

/// A terminal, and a folder for a descriptor whose command `sig run` runs a command line.
class SignalTest : public ::testing::Test {
 protected:
  VexilRun RunOf(const std::string& commandLine) const {
    const std::string path = folder_.Write(
        "sig.xml",
        "<x><version>1.0.0</version><namespaces><namespace path='sig'><description>S."
        "</description></namespace></namespaces><commands><command path='sig.run'><description>R."
        "</description><input-spec/><output-spec><string/></output-spec><format-parameters>"
        "<formatter>simple</formatter></format-parameters><execute><![CDATA[" +
            commandLine + "]]></execute></command></commands></x>");
    return VexilRun({"--plugin=" + path, "sig", "run"});
  }

  /// Returns the process numbers that the command prints before "ready". Waits until the first
  /// process or one below it runs the program sleep, because a shell may miss an earlier signal.
  std::vector<std::string> WaitForProcesses() {
    std::istringstream shown(terminal_.ReadUntil("ready"));
    std::vector<std::string> processes;
    for (std::string word; shown >> word && word != "ready";) {
      processes.push_back(word);
    }
    while (IsRunning(processes.at(0)) && !IsSleeping(processes.at(0))) {
      usleep(1000);
    }
    return processes;
  }

  const ScopedTempDir folder_;
  PseudoTerminal terminal_;
};

const std::string kPrintDone = "printf '<o><string>done</string></o>'";

TEST_F(SignalTest, ChildrenAreWaitedForAlthoughTheCallerIgnoresTheirSignals) {
  const VexilRun run = RunOf(kPrintDone);
  terminal_.Start([&run]() -> int {
    signal(SIGCHLD, SIG_IGN);
    run.Exec();
  });
  EXPECT_EQ(terminal_.WaitForEnd(), 0);
  EXPECT_THAT(terminal_.ReadRest(), HasSubstr("done"));
}

TEST_F(SignalTest, ASignalThatTheCallerBlockedEndsTheTool) {
  const VexilRun run = RunOf("echo $$ ready >&2; sleep 100");
  terminal_.Start([&run]() -> int {
    sigset_t all;
    sigfillset(&all);
    sigprocmask(SIG_SETMASK, &all, nullptr);
    run.Exec();
  });
  WaitForProcesses();
  terminal_.Send(SIGTERM);
  const int status = terminal_.WaitForEnd();
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(WTERMSIG(status), SIGTERM);
}

class ForwardedSignalTest : public SignalTest, public ::testing::WithParamInterface<int> {
 protected:
  void ExpectEndedByTheSignal() {
    const int status = terminal_.WaitForEnd();
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), GetParam());
  }
};

TEST_P(ForwardedSignalTest, EndsAllProcessesBelowTheTool) {
  const VexilRun run = RunOf("sh -c 'echo $PPID $$ ready >&2; sleep 1000; :'; :");
  terminal_.Start([&run]() -> int { run.Exec(); });
  const std::vector<std::string> processes = WaitForProcesses();
  ASSERT_EQ(processes.size(), 2u);
  terminal_.Send(GetParam());
  ExpectEndedByTheSignal();
  EXPECT_FALSE(IsRunning(processes[0]));
  EXPECT_TRUE(EndsSoon(processes[1]));  // The tool waits for its own child only.
}

TEST_P(ForwardedSignalTest, TheToolWaitsForAChildThatEndsByItself) {
  const std::string file = folder_.GetPath("cleaned");
  const VexilRun run = RunOf("trap 'sleep 0.3; echo yes >" + file +
                             "; exit 0' INT TERM; echo $$ ready >&2; sleep 1000");
  terminal_.Start([&run]() -> int { run.Exec(); });
  WaitForProcesses();
  terminal_.Send(GetParam());
  ExpectEndedByTheSignal();
  EXPECT_EQ(folder_.Read("cleaned"), "yes\n");
}

TEST_P(ForwardedSignalTest, EndsAChildThatIsStopped) {
  const VexilRun run =
      RunOf("(sleep 0.1; kill -STOP $$; echo stopped >&2) & echo $$ ready >&2; sleep 1000");
  terminal_.Start([&run]() -> int { run.Exec(); });
  const std::vector<std::string> processes = WaitForProcesses();
  terminal_.ReadUntil("stopped");
  terminal_.Send(GetParam());
  ExpectEndedByTheSignal();
  EXPECT_FALSE(IsRunning(processes[0]));
}

INSTANTIATE_TEST_SUITE_P(Signals, ForwardedSignalTest, ::testing::Values(SIGINT, SIGTERM),
                         [](const auto& row) { return sigabbrev_np(row.param); });

TEST_F(SignalTest, AnIgnoredSignalIsIgnoredWhileAChildRuns) {
  const VexilRun run = RunOf("echo ready >&2; sleep 0.3; " + kPrintDone);
  terminal_.Start([&run]() -> int {
    signal(SIGINT, SIG_IGN);
    run.Exec();
  });
  terminal_.ReadUntil("ready");
  terminal_.Send(SIGINT);
  EXPECT_EQ(terminal_.WaitForEnd(), 0);
  EXPECT_THAT(terminal_.ReadRest(), HasSubstr("done"));
}

TEST_F(SignalTest, TheInterruptKeyEndsToolAndChild) {
  const VexilRun run = RunOf("echo $$ ready >&2; sleep 1000");
  terminal_.Start([&run]() -> int { run.Exec(); });
  const std::vector<std::string> processes = WaitForProcesses();
  terminal_.Type("\x03");
  const int status = terminal_.WaitForEnd();
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(WTERMSIG(status), SIGINT);
  EXPECT_FALSE(IsRunning(processes.at(0)));
}

}  // namespace

}  // namespace Kestrel::Testing
