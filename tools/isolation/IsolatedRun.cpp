// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/isolation/IsolatedRun.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "kestrel/KestrelException.h"

namespace Kestrel::Isolation {

using std::chrono::milliseconds;

namespace {

constexpr milliseconds kMaxEnding(1000);
constexpr int kPauseInMilliseconds = 5;
constexpr int kMaxRounds = 400;  // a process in a system call that hangs cannot be killed

volatile std::sig_atomic_t interrupt = 0;

void RememberInterrupt(int signal) { interrupt = signal; }

void WriteAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = write(descriptor, text.data(), text.size());
    if (count < 0 && errno != EINTR) {
      _exit(EXIT_FAILURE);
    }
    text.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
  }
}

// A plug-in may read and print, which must not disturb this program. Crashes are expected, so they
// leave no core dump.
void PrepareChild(pid_t parent) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    std::signal(signal, SIG_DFL);
  }
  setpgid(0, 0);
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) {
    _exit(EXIT_FAILURE);
  }
  const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    dup2(nothing, stream);
  }
  const rlimit noCore = {0, 0};
  setrlimit(RLIMIT_CORE, &noCore);
}

// Moves a file descriptor out of the range of the standard streams, which the child replaces. An
// end of the pipe is in that range if this process was started with a stream closed.
void MoveAboveStreams(int& descriptor) {
  if (descriptor <= STDERR_FILENO) {
    const int moved = fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    close(descriptor);
    descriptor = moved;
  }
}

[[noreturn]] void RunChild(int descriptor, const std::function<void(const Send&)>& work) {
  try {
    work([descriptor](const std::string& line) { WriteAll(descriptor, line + "\n"); });
  } catch (...) {
    _exit(EXIT_FAILURE);
  }
  _exit(EXIT_SUCCESS);
}

bool HasChildren() {
  pid_t ended = 1;
  while (ended > 0) {
    ended = waitpid(-1, nullptr, WNOHANG);
  }
  return ended == 0;
}

// Kills all processes below this one. When one of them ends, its children become children of this
// process, and are killed in the next round.
void KillChildren() {
  for (int round = 0; round < kMaxRounds && HasChildren(); ++round) {
    for (const pid_t child : ListChildren(getpid())) {
      kill(child, SIGKILL);
    }
    poll(nullptr, 0, kPauseInMilliseconds);
  }
}

}  // namespace

IsolatedRun::IsolatedRun(const std::function<void(const Send&)>& work) {
  int ends[2] = {-1, -1};
  if (pipe2(ends, O_CLOEXEC) != 0) {
    throw KestrelException(std::string("cannot make a pipe: ") + std::strerror(errno));
  }
  MoveAboveStreams(ends[0]);
  MoveAboveStreams(ends[1]);
  input_ = ends[0];
  prctl(PR_SET_CHILD_SUBREAPER, 1);
  const pid_t parent = getpid();
  id_ = fork();
  if (id_ == 0) {
    PrepareChild(parent);
    RunChild(ends[1], work);
  }
  const int error = errno;
  close(ends[1]);
  if (id_ < 0) {
    close(input_);
    throw KestrelException(std::string("cannot start a process: ") + std::strerror(error));
  }
}

IsolatedRun::~IsolatedRun() {
  Wait();
  close(input_);
}

std::optional<std::string> IsolatedRun::ReadLine(milliseconds patience) {
  FairDeadline deadline(clock_, patience);
  while (true) {
    const std::size_t end = buffer_.find('\n');
    if (end != std::string::npos) {
      std::string line = buffer_.substr(0, end);
      buffer_.erase(0, end + 1);
      return line;
    }
    const milliseconds left = deadline.GetTimeLeft();
    pollfd source = {input_, POLLIN, 0};
    const int ready = poll(&source, 1, static_cast<int>(std::min(left, FairClock::kStep).count()));
    if (ready <= 0 && left.count() > 0 && interrupt == 0) {
      continue;
    }
    isLate_ = ready <= 0;
    char block[1 << 16];
    const ssize_t count = ready > 0 ? read(input_, block, sizeof(block)) : 0;
    if (count <= 0) {
      return std::nullopt;
    }
    buffer_.append(block, static_cast<std::size_t>(count));
  }
}

// Waits for the end of the child, which may continue to run after it has closed the pipe. Kills the
// child if it is late.
void IsolatedRun::WaitForEnd() {
  FairDeadline deadline(clock_, kMaxEnding);
  while (!isLate_) {
    const pid_t ended = waitpid(id_, &status_, WNOHANG);
    if (ended == id_ || (ended < 0 && errno != EINTR)) {
      return;
    }
    isLate_ = deadline.GetTimeLeft().count() == 0 || interrupt != 0;
    poll(nullptr, 0, kPauseInMilliseconds);
  }
  kill(id_, SIGKILL);
  while (waitpid(id_, &status_, 0) < 0 && errno == EINTR) {
  }
}

int IsolatedRun::Wait() {
  if (id_ > 0) {
    WaitForEnd();
    kill(-id_, SIGKILL);
    id_ = -1;
    KillChildren();
    if (interrupt != 0) {
      std::signal(interrupt, SIG_DFL);
      raise(interrupt);
    }
  }
  return status_;
}

void KillOnInterrupt() {
  struct sigaction action = {};
  action.sa_handler = RememberInterrupt;
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    sigaction(signal, &action, nullptr);
  }
}

std::string DescribeEnd(int status) {
  if (WIFSIGNALED(status)) {
    return std::string("it is ended by the signal ") + strsignal(WTERMSIG(status));
  }
  return "it ends the process with status " + std::to_string(WEXITSTATUS(status));
}

}  // namespace Kestrel::Isolation
