// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/process/ChildProcess.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include "autocli/process/FileDescriptor.h"
#include "kestrel/KestrelException.h"
#include "support/DescriptorLimit.h"
#include "support/Random.h"
#include "support/Sanitizer.h"
#include "support/ScopedTempDir.h"

namespace Kestrel::AutoCli {
namespace {

using Testing::DescriptorLimit;
using Testing::ScopedTempDir;
using testing::ThrowsMessage;

int RunShell(const std::string& commandLine, std::string& output,
             const std::string& stdinData = "") {
  return RunChildProcess({"/bin/sh", "-c", commandLine}, commandLine, output, stdinData);
}

std::string OutputOf(const std::string& commandLine, const std::string& stdinData = "") {
  std::string output;
  RunShell(commandLine, output, stdinData);
  return output;
}

int CountOpenDescriptors() {
  const std::filesystem::directory_iterator open("/proc/self/fd");
  return static_cast<int>(std::distance(begin(open), end(open)));
}

int FirstFreeDescriptor() {
  const FileDescriptor next(dup(STDIN_FILENO));
  return next.Get();
}

bool HasChildren() {
  siginfo_t info;
  return waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) == 0;
}

/// Fails the test if a call has left a file descriptor open or a child unreaped.
class LeavesNothing {
 public:
  LeavesNothing() : open_(CountOpenDescriptors()) {}
  ~LeavesNothing() {
    EXPECT_EQ(CountOpenDescriptors(), open_);
    EXPECT_FALSE(HasChildren());
  }

 private:
  int open_;
};

class ChildProcessTest : public ::testing::Test {
 protected:
  // Some tests need consecutive free file descriptors, but this program may have inherited others
  // between them.
  static void SetUpTestSuite() { closefrom(STDERR_FILENO + 1); }
};

TEST(FileDescriptorTest, ClosesWhatItOwnsOnce) {
  const LeavesNothing nothing;
  FileDescriptor first(open("/dev/null", O_RDONLY));
  EXPECT_TRUE(first.IsOpen());
  FileDescriptor second(std::move(first));
  EXPECT_FALSE(first.IsOpen());
  EXPECT_TRUE(second.IsOpen());
  first = std::move(second);
  EXPECT_FALSE(second.IsOpen());
  FileDescriptor& same = first;
  first = std::move(same);
  EXPECT_TRUE(first.IsOpen());
  first = FileDescriptor(open("/dev/zero", O_RDONLY));
  first.Close();
  first.Close();
  EXPECT_FALSE(first.IsOpen());
}

TEST_F(ChildProcessTest, MovesMuchDataInBothDirectionsAtTheSameTime) {
  const LeavesNothing nothing;
  std::string data;
  while (data.size() < 5000000) {
    data += std::to_string(data.size()) + '\n';
  }
  EXPECT_EQ(OutputOf("cat", data), data);
}

TEST_F(ChildProcessTest, OutputMayComeByteByByte) {
  EXPECT_EQ(OutputOf("printf a; sleep 0.1; printf b; sleep 0.1; printf c"), "abc");
}

TEST_F(ChildProcessTest, AChildThatPrintsBeforeItReadsDoesNotBlock) {
  const LeavesNothing nothing;
  const std::string data(1000000, 'x');
  std::string output;
  EXPECT_EQ(RunShell("head -c 3000000 /dev/zero; cat", output, data), 0);
  EXPECT_EQ(output.size(), 4000000u);
}

TEST_F(ChildProcessTest, AChildThatClosesItsOutputMayContinueReading) {
  const LeavesNothing nothing;
  std::string output;
  EXPECT_EQ(RunShell("echo a; exec >&-; cat >/dev/null; exit 4", output, std::string(1000000, 'x')),
            4 << 8);
  EXPECT_EQ(output, "a\n");
}

TEST_F(ChildProcessTest, AChildThatClosesItsInputMakesTheWriteFail) {
  const LeavesNothing nothing;
  std::string output = "before";
  EXPECT_THAT(
      [&] { RunShell("echo lost; exec <&-; echo lost", output, std::string(1000000, 'x')); },
      ThrowsMessage<KestrelException>("Unable to write to sub-process: Broken pipe"));
  EXPECT_EQ(output, "before");
  while (HasChildren()) {  // the child may end after the call; a later call reaps it
    OutputOf("exit 0");
  }
}

TEST_F(ChildProcessTest, AChildMayLeaveInputUnread) {
  const LeavesNothing nothing;
  EXPECT_EQ(OutputOf("head -c 1", std::string(1000, 'x')), "x");
}

TEST_F(ChildProcessTest, AChildThatNeverReadsIsWaitedFor) {
  const LeavesNothing nothing;
  EXPECT_EQ(OutputOf("sleep 0.2; echo a", ""), "a\n");
  std::string output;
  EXPECT_THAT([&] { RunShell("sleep 0.2; echo a", output, std::string(1000000, 'x')); },
              ThrowsMessage<KestrelException>("Unable to write to sub-process: Broken pipe"));
  while (HasChildren()) {
    OutputOf("exit 0");
  }
}

TEST_F(ChildProcessTest, ABrokenPipeLeavesTheStateOfSigpipeUnchanged) {
  const LeavesNothing nothing;
  sigset_t before;
  sigset_t after;
  pthread_sigmask(SIG_BLOCK, nullptr, &before);
  std::string output;
  EXPECT_THROW(RunShell("exec <&-", output, std::string(1000000, 'x')), KestrelException);
  pthread_sigmask(SIG_BLOCK, nullptr, &after);
  EXPECT_EQ(sigismember(&before, SIGPIPE), 0);
  EXPECT_EQ(sigismember(&after, SIGPIPE), 0);
  sigset_t pending;
  sigpending(&pending);
  EXPECT_EQ(sigismember(&pending, SIGPIPE), 0);
  while (HasChildren()) {
    OutputOf("exit 0");
  }
}

TEST_F(ChildProcessTest, APendingSigpipeStaysPending) {
  sigset_t sigpipe;
  sigemptyset(&sigpipe);
  sigaddset(&sigpipe, SIGPIPE);
  pthread_sigmask(SIG_BLOCK, &sigpipe, nullptr);
  raise(SIGPIPE);
  EXPECT_EQ(OutputOf("cat", "x"), "x");
  sigset_t pending;
  sigpending(&pending);
  EXPECT_EQ(sigismember(&pending, SIGPIPE), 1);
  const timespec noWait = {0, 0};
  EXPECT_EQ(sigtimedwait(&sigpipe, nullptr, &noWait), SIGPIPE);
  pthread_sigmask(SIG_UNBLOCK, &sigpipe, nullptr);
}

TEST_F(ChildProcessTest, TheChildBlocksNoSignalsAndDoesNotIgnoreSigpipe) {
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_sigmask(SIG_BLOCK, &all, &before);
  const auto ignored = signal(SIGPIPE, SIG_IGN);
  const std::string blocked = OutputOf("sed -n 's/^SigBlk:.//p' /proc/self/status");
  const std::string ignoring = OutputOf("sed -n 's/^SigIgn:.//p' /proc/self/status");
  signal(SIGPIPE, ignored);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  EXPECT_EQ(blocked, "0000000000000000\n");
  EXPECT_EQ(std::stoull(ignoring, nullptr, 16) & (1u << (SIGPIPE - 1)), 0u) << ignoring;
}

TEST_F(ChildProcessTest, TheChildHasThreeFileDescriptors) {
  const FileDescriptor other(open("/dev/null", O_RDONLY));  // without close-on-exec
  EXPECT_EQ(OutputOf("ls /proc/$$/fd; :"), "0\n1\n2\n");
}

TEST_F(ChildProcessTest, OutputIsReadUntilABackgroundProcessClosesIt) {
  const LeavesNothing nothing;
  EXPECT_EQ(OutputOf("(sleep 0.3; echo late) & echo early"), "early\nlate\n");
}

TEST_F(ChildProcessTest, ASignalThatIsHandledDoesNotEndACall) {
  struct sigaction action = {};
  struct sigaction before;
  action.sa_handler = [](int) {};
  sigaction(SIGALRM, &action, &before);  // without SA_RESTART
  itimerval every = {{0, 2000}, {0, 2000}};
  setitimer(ITIMER_REAL, &every, nullptr);
  const std::string data(2000000, 'x');
  std::string output;
  const int status = RunShell("sleep 0.1; cat; exec >&-; sleep 0.1; exit 5", output, data);
  every = {};
  setitimer(ITIMER_REAL, &every, nullptr);
  sigaction(SIGALRM, &before, nullptr);
  EXPECT_EQ(status, 5 << 8);
  EXPECT_EQ(output, data);
}

/// Calls a handler when a child sends SIGALRM to this process. Interrupted system calls fail.
class Interruption {
 public:
  explicit Interruption(void (*act)(int)) {
    struct sigaction action = {};
    action.sa_handler = act;
    sigaction(SIGALRM, &action, &before_);  // without SA_RESTART
  }
  ~Interruption() { sigaction(SIGALRM, &before_, nullptr); }

 private:
  struct sigaction before_;
};

int outputPipe = -1;  // the end of a child's output pipe that the library reads

TEST_F(ChildProcessTest, AFailedReadKeepsEarlierOutput) {
  const int first = FirstFreeDescriptor();
  outputPipe = first + 2;
  const auto readFails = [](const std::string& commandLine, const std::string& stdinData) {
    const Interruption interruption([](int) { close(outputPipe); });
    std::string output = "before ";
    EXPECT_THAT(
        [&] { RunShell(commandLine, output, stdinData); },
        ThrowsMessage<KestrelException>("Unable to read from sub-process: Bad file descriptor"));
    EXPECT_EQ(output, "before begun\n");
  };
  readFails("echo begun; sleep 0.3; kill -ALRM $PPID; sleep 0.1", "");
  readFails("echo begun; sleep 0.3; kill -ALRM $PPID; sleep 0.1; cat >/dev/null",
            std::string(1000000, 'x'));
  while (HasChildren()) {
    OutputOf("exit 0");
  }
  EXPECT_EQ(FirstFreeDescriptor(), first);
}

TEST_F(ChildProcessTest, AFailedCallReapsAChildThatHasEnded) {
  const LeavesNothing nothing;
  outputPipe = FirstFreeDescriptor() + 2;
  const Interruption interruption([](int) {
    siginfo_t ended;
    waitid(P_ALL, 0, &ended, WEXITED | WNOWAIT);
    close(outputPipe);
  });
  std::string output;
  EXPECT_THROW(RunShell("sleep 0.1; kill -ALRM $PPID; sleep 0.1", output), KestrelException);
}

TEST_F(ChildProcessTest, AFailedPollMakesTheWriteFail) {
  if (Testing::kIsSanitized) {
    GTEST_SKIP() << "the sanitizer needs descriptors of its own";
  }
  const Interruption interruption([](int) {
    rlimit one;  // waiting for two file descriptors exceeds this limit
    getrlimit(RLIMIT_NOFILE, &one);
    one.rlim_cur = 1;
    setrlimit(RLIMIT_NOFILE, &one);
  });
  std::string output;
  EXPECT_THAT(
      [&] {
        const DescriptorLimit before;  // restored before the exception is checked
        RunShell("kill -ALRM $PPID; sleep 0.1; cat >/dev/null", output, std::string(1000000, 'x'));
      },
      ThrowsMessage<KestrelException>("Unable to write to sub-process: Invalid argument"));
  while (HasChildren()) {
    OutputOf("exit 0");
  }
}

TEST_F(ChildProcessTest, AWaitThatFailsIsReported) {
  std::string output;
  const auto before = signal(SIGCHLD, SIG_IGN);  // children leave no status then
  EXPECT_THAT(
      [&] { RunShell("echo out", output); },
      ThrowsMessage<KestrelException>("Error waiting for process 'echo out': No child processes"));
  signal(SIGCHLD, before);
  EXPECT_EQ(output, "out\n");
}

TEST_F(ChildProcessTest, AProgramThatCannotBeStartedIsReported) {
  const LeavesNothing nothing;
  const ScopedTempDir folder;
  const std::string text = folder.Write("text", "not a program\n");
  const auto start = [](const std::string& path) {
    std::string output;
    RunChildProcess({path}, "the line", output, "");
  };
  EXPECT_THAT([&] { start("/no/such/program"); },
              ThrowsMessage<KestrelException>(
                  "Failed to call process 'the line': No such file or directory"));
  EXPECT_THAT([&] { start(text); }, ThrowsMessage<KestrelException>(
                                        "Failed to call process 'the line': Permission denied"));
  std::filesystem::permissions(text, std::filesystem::perms::owner_all);
  EXPECT_THAT([&] { start(text); }, ThrowsMessage<KestrelException>(
                                        "Failed to call process 'the line': Exec format error"));
}

TEST_F(ChildProcessTest, RunningOutOfFileDescriptorsIsReported) {
  if (Testing::kIsSanitized) {
    GTEST_SKIP() << "the sanitizer needs descriptors of its own";
  }
  const LeavesNothing nothing;
  const auto failsWith = [](int free) {
    const DescriptorLimit limit(FirstFreeDescriptor() + free);
    std::string output;
    try {
      RunShell("echo out", output);
    } catch (const KestrelException& error) {
      return std::string(error.what());
    }
    return output;
  };
  EXPECT_EQ(failsWith(0), "Can't create input pipe: Too many open files");
  EXPECT_EQ(failsWith(1), "Can't create input pipe: Too many open files");
  EXPECT_EQ(failsWith(2), "Can't create output pipe: Too many open files");
  EXPECT_EQ(failsWith(3), "Can't create output pipe: Too many open files");
  EXPECT_EQ(failsWith(4), "out\n");
}

/// Runs `act` in a process of its own and returns its exit status.
template <typename Act>
int ExitStatusOf(Act act) {
  const pid_t child = fork();
  if (child == 0) {
    _exit(act());
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST_F(ChildProcessTest, RunsWithoutStandardStreams) {
  for (int closed = 0; closed < 8; ++closed) {
    EXPECT_EQ(ExitStatusOf([closed] {
                for (int fd = 0; fd < 3; ++fd) {
                  if ((closed & (1 << fd)) != 0) {
                    close(fd);
                  }
                }
                return OutputOf("cat; echo b; exec 2>/dev/null; echo c >&2", "a\n") == "a\nb\n" ? 17
                                                                                                : 1;
              }),
              17)
        << closed;
  }
}

TEST_F(ChildProcessTest, RunningOutOfFileDescriptorsWithoutStandardStreamsIsReported) {
  if (Testing::kIsSanitized) {
    GTEST_SKIP() << "the sanitizer needs descriptors of its own";
  }
  const auto messageIs = [](int free, const std::string& expected) {
    return ExitStatusOf([&] {
      for (int i = 0; i < 3; ++i) {
        dup(STDIN_FILENO);
      }
      const int first = FirstFreeDescriptor();
      close(STDIN_FILENO);
      close(STDOUT_FILENO);
      const DescriptorLimit limit(first + free);
      try {
        OutputOf("exit 0");
      } catch (const KestrelException& error) {
        return error.what() == expected ? 17 : 1;
      }
      return 2;
    });
  };
  EXPECT_EQ(messageIs(0, "Can't create input pipe: Too many open files"), 17);
  EXPECT_EQ(messageIs(1, "Can't create input pipe: Too many open files"), 17);
  EXPECT_EQ(messageIs(2, "Can't create output pipe: Too many open files"), 17);
}

TEST_F(ChildProcessTest, LeavesOtherChildrenOfTheProgramAlone) {
  const pid_t other = fork();
  if (other == 0) {
    _exit(0);
  }
  siginfo_t ended;
  waitid(P_PID, static_cast<id_t>(other), &ended, WEXITED | WNOWAIT);
  EXPECT_EQ(OutputOf("echo a"), "a\n");
  EXPECT_EQ(waitpid(other, nullptr, 0), other);
}

TEST_F(ChildProcessTest, ASignalReachesTheChildAndThenEndsTheCaller) {
  const ScopedTempDir folder;
  const std::string file = folder.GetPath("received");
  const pid_t caller = fork();
  if (caller == 0) {
    signal(SIGTERM, SIG_DFL);
    OutputOf("trap 'touch " + file + "; exit' TERM; kill -TERM $PPID; sleep 5; exit 1");
    _exit(0);
  }
  int status = 0;
  waitpid(caller, &status, 0);
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM) << status;
  EXPECT_TRUE(std::filesystem::exists(file));
}

TEST_F(ChildProcessTest, ASignalReachesTheChildAfterAnInterruptedWait) {
  const ScopedTempDir folder;
  const std::string file = folder.GetPath("received");
  const pid_t caller = fork();
  if (caller == 0) {
    signal(SIGTERM, SIG_DFL);
    const Interruption interruption([](int) {});
    OutputOf("exec >&-; trap 'touch " + file + "; exit' TERM; sleep 0.1; kill -ALRM $PPID; " +
             "sleep 0.1; kill -TERM $PPID; sleep 1; exit 1");
    _exit(0);
  }
  int status = 0;
  waitpid(caller, &status, 0);
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM) << status;
  EXPECT_TRUE(std::filesystem::exists(file));
}

TEST_F(ChildProcessTest, ManyRunsLeaveNoFileDescriptorOrChild) {
  const LeavesNothing nothing;
  const int runs = Testing::Rounds(500, 10000);
  for (int i = 0; i < runs; ++i) {
    ASSERT_EQ(OutputOf("cat", std::to_string(i)), std::to_string(i));
  }
}

}  // namespace
}  // namespace Kestrel::AutoCli
