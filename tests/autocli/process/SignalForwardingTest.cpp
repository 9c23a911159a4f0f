// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/process/SignalForwarding.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Kestrel::AutoCli {
namespace {

using Handler = void (*)(int);

Handler HandlerOf(int signal) {
  struct sigaction action = {};
  sigaction(signal, nullptr, &action);
  return action.sa_handler;
}

void DoNothing(int /*signal*/) {}

/// SIGINT and SIGTERM have their default action at the start of each test.
class SignalForwardingTest : public testing::Test {
 protected:
  SignalForwardingTest() : interrupt_(signal(SIGINT, SIG_DFL)), end_(signal(SIGTERM, SIG_DFL)) {}
  ~SignalForwardingTest() override {
    signal(SIGINT, interrupt_);
    signal(SIGTERM, end_);
  }

 private:
  const Handler interrupt_;
  const Handler end_;
};

/// Runs a function in a process of its own, which a SignalForwarding may end. Returns the wait
/// status of that process, after killing all processes that the function has started.
int StatusOf(void (*function)()) {
  const pid_t process = fork();
  if (process == 0) {
    setpgid(0, 0);
    alarm(60);
    function();
    _exit(0);
  }
  int status = 0;
  waitpid(process, &status, 0);
  kill(-process, SIGKILL);
  return status;
}

void RequireOrExit(bool holds) {
  if (!holds) {
    _exit(1);
  }
}

/// Starts a process that waits for a signal, and a child of that process that does the same.
/// Returns the ID of the first once both exist. When both have ended, a read from the read end of
/// `ends` returns the end of the file.
pid_t StartTwo(int (&ends)[2]) {
  RequireOrExit(pipe(ends) == 0);
  const pid_t child = fork();
  if (child == 0) {
    signal(SIGINT, SIG_DFL);
    signal(SIGTERM, SIG_DFL);
    if (fork() == 0) {
      RequireOrExit(write(ends[1], "x", 1) == 1);
    }
    for (;;) {
      pause();
    }
  }
  close(ends[1]);
  char byte;
  RequireOrExit(read(ends[0], &byte, 1) == 1);
  return child;
}

int SignalThatEnded(pid_t process) {
  int status = 0;
  RequireOrExit(waitpid(process, &status, 0) == process);
  return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
}

TEST_F(SignalForwardingTest, HandlesSignalsAsLongAsItExists) {
  {
    const SignalForwarding forwarding;
    EXPECT_NE(HandlerOf(SIGINT), SIG_DFL);
    EXPECT_NE(HandlerOf(SIGTERM), SIG_DFL);
  }
  EXPECT_EQ(HandlerOf(SIGINT), SIG_DFL);
  EXPECT_EQ(HandlerOf(SIGTERM), SIG_DFL);
}

TEST_F(SignalForwardingTest, LeavesOtherActionsAlone) {
  signal(SIGINT, SIG_IGN);
  signal(SIGTERM, DoNothing);
  {
    const SignalForwarding forwarding;
    EXPECT_EQ(HandlerOf(SIGINT), SIG_IGN);
    EXPECT_EQ(HandlerOf(SIGTERM), DoNothing);
  }
  EXPECT_EQ(HandlerOf(SIGINT), SIG_IGN);
  EXPECT_EQ(HandlerOf(SIGTERM), DoNothing);
}

TEST_F(SignalForwardingTest, ASignalEndsTheChildItsChildAndThisProcess) {
  const int status = StatusOf([] {
    SignalForwarding forwarding;
    int ends[2];
    const pid_t child = StartTwo(ends);
    forwarding.Start(child);
    raise(SIGTERM);
    RequireOrExit(SignalThatEnded(child) == SIGTERM);
    char byte;
    RequireOrExit(read(ends[0], &byte, 1) == 0);
  });
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM) << status;
}

TEST_F(SignalForwardingTest, ASignalThatCameEarlierIsPassedOn) {
  const int status = StatusOf([] {
    SignalForwarding forwarding;
    raise(SIGINT);
    int ends[2];
    const pid_t child = StartTwo(ends);
    forwarding.Start(child);
    RequireOrExit(SignalThatEnded(child) == SIGINT);
  });
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT) << status;
}

TEST_F(SignalForwardingTest, PassesNothingOnAfterStop) {
  const int status = StatusOf([] {
    SignalForwarding forwarding;
    int ends[2];
    const pid_t child = StartTwo(ends);
    forwarding.Start(child);
    forwarding.Stop();
    raise(SIGTERM);
    kill(child, SIGKILL);
    RequireOrExit(SignalThatEnded(child) == SIGKILL);
  });
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM) << status;
}

TEST_F(SignalForwardingTest, ASignalLeavesTheErrorNumberAlone) {
  const int status = StatusOf([] {
    SignalForwarding forwarding;
    forwarding.Start(1 << 30);  // no process has such an ID, so each call for it fails
    errno = EDOM;
    raise(SIGTERM);
    RequireOrExit(errno == EDOM);
  });
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM) << status;
}

TEST_F(SignalForwardingTest, ASignalLeavesNoFileDescriptorOpen) {
  const int status = StatusOf([] {
    SignalForwarding forwarding;
    int ends[2];
    forwarding.Start(StartTwo(ends));
    const int before = dup(ends[0]);
    close(before);
    raise(SIGTERM);
    RequireOrExit(dup(ends[0]) == before);
  });
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM) << status;
}

TEST_F(SignalForwardingTest, WithoutASignalTheProcessGoesOn) {
  const int status = StatusOf([] { const SignalForwarding forwarding; });
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
}

}  // namespace
}  // namespace Kestrel::AutoCli
