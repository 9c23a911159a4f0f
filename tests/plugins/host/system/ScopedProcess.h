// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include "support/Witness.h"

namespace Kestrel::Testing {

/// A child process that waits until it is killed. With `isZombie`, it has ended instead, but has
/// not been waited for.
class ScopedProcess {
 public:
  explicit ScopedProcess(const std::string& name, bool isZombie = false) {
    int ready[2];
    EXPECT_EQ(::pipe(ready), 0);
    id_ = ::fork();
    if (id_ == 0) {
      ::prctl(PR_SET_PDEATHSIG, SIGKILL);
      ::prctl(PR_SET_NAME, name.c_str());
      ::signal(SIGSEGV, SIG_DFL);  // otherwise, a sanitizer would handle the signal
      ::close(ready[0]);
      ::close(ready[1]);
      while (!isZombie) {
        ::pause();
      }
      ::_exit(0);
    }
    ::close(ready[1]);
    char byte = 0;
    EXPECT_EQ(::read(ready[0], &byte, 1), 0) << "the end of the pipe tells that the name is set";
    ::close(ready[0]);
    if (isZombie) {
      siginfo_t info = {};
      EXPECT_EQ(::waitid(P_PID, static_cast<id_t>(id_), &info, WEXITED | WNOWAIT), 0);
    }
  }
  ScopedProcess(const ScopedProcess&) = delete;
  ScopedProcess& operator=(const ScopedProcess&) = delete;
  ~ScopedProcess() {
    if (id_ > 0) {
      ::kill(id_, SIGKILL);
      ::waitpid(id_, nullptr, 0);
    }
  }

  /// Stops waiting after 500 attempts, without failing the test.
  void WaitUntilItSleeps() const {
    for (int i = 0; i < 500 && Witness("ps -p " + GetId() + " -o s=") != "S\n"; ++i) {
      ::usleep(10000);
    }
  }

  /// Returns the number of the signal that ended it; 0 if it ended by itself.
  int WaitUntilItIsKilled() {
    int status = 0;
    EXPECT_EQ(::waitpid(id_, &status, 0), id_);
    id_ = -1;
    return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
  }

  std::string GetId() const { return std::to_string(id_); }
  pid_t GetNumber() const { return id_; }

 private:
  pid_t id_ = -1;
};

}  // namespace Kestrel::Testing
