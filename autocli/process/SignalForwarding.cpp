// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The signals are passed on by their handler, so that no wait of the process needs to be
// interrupted. Everything that the handler calls is safe in a signal handler.

#include "autocli/process/SignalForwarding.h"

#include <errno.h>
#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <cstddef>

namespace Kestrel::AutoCli {

namespace {

constexpr std::array<int, 2> kSignals = {SIGINT, SIGTERM};
constexpr std::size_t kMaxProcesses = 1024;

std::array<struct sigaction, kSignals.size()> previous;
volatile sig_atomic_t receivedSignal = 0;
volatile sig_atomic_t runningChild = 0;

/// Appends `text` at `end` and returns the new end. Does not check for an overflow, because the
/// path below is short.
char* Append(char* end, const char* text) {
  while (*text != '\0') {
    *end++ = *text++;
  }
  *end = '\0';
  return end;
}

char* Append(char* end, pid_t number) {
  char digits[16] = {};
  std::size_t position = sizeof(digits) - 1;
  do {
    digits[--position] = static_cast<char>('0' + number % 10);
    number /= 10;
  } while (number > 0);
  return Append(end, digits + position);
}

int OpenChildren(pid_t parent) {
  char path[64];
  char* end = Append(Append(path, "/proc/"), parent);
  Append(Append(Append(end, "/task/"), parent), "/children");
  return open(path, O_RDONLY | O_CLOEXEC);
}

/// The processes that receive the signal. They are stopped, so that none of them starts another
/// process, or ends before its children are known.
class Recipients {
 public:
  explicit Recipients(pid_t child) {
    Add(child);
    // A process that is being stopped may still finish starting another one. So one more round
    // follows the first one that finds no new process.
    for (std::size_t before = 0; before < count_;) {
      before = count_;
      AddAllChildren();
    }
    AddAllChildren();
  }

  void Send(int signal) const {
    for (std::size_t i = 0; i < count_; ++i) {
      kill(processes_[i], signal);
    }
  }

 private:
  bool IsKnown(pid_t process) const {
    std::size_t i = 0;
    while (i < count_ && processes_[i] != process) {
      ++i;
    }
    return i < count_;
  }

  void Add(pid_t process) {
    if (count_ < kMaxProcesses && !IsKnown(process)) {
      kill(process, SIGSTOP);
      processes_[count_++] = process;
    }
  }

  void AddAllChildren() {
    for (std::size_t i = 0; i < count_; ++i) {
      AddChildrenOf(processes_[i]);
    }
  }

  void AddChildrenOf(pid_t parent) {
    const int children = OpenChildren(parent);
    if (children < 0) {
      return;
    }
    pid_t number = 0;
    char text[512];
    ssize_t size;
    while ((size = read(children, text, sizeof(text))) > 0) {
      for (ssize_t i = 0; i < size; ++i) {
        if (text[i] >= '0' && text[i] <= '9') {
          number = number * 10 + (text[i] - '0');
        } else if (number > 0) {
          Add(number);
          number = 0;
        }
      }
    }
    close(children);
  }

  std::array<pid_t, kMaxProcesses> processes_;
  std::size_t count_ = 0;
};

void Forward(int signal) {
  const int error = errno;
  receivedSignal = signal;
  if (runningChild > 0) {
    const Recipients recipients(runningChild);
    recipients.Send(signal);
    recipients.Send(SIGCONT);
  }
  errno = error;
}

/// Blocks the signals during its lifetime.
class SignalBlock {
 public:
  SignalBlock() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : kSignals) {
      sigaddset(&signals, signal);
    }
    pthread_sigmask(SIG_BLOCK, &signals, &before_);
  }
  SignalBlock(const SignalBlock&) = delete;
  SignalBlock& operator=(const SignalBlock&) = delete;
  ~SignalBlock() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

 private:
  sigset_t before_;
};

}  // namespace

SignalForwarding::SignalForwarding() {
  receivedSignal = 0;
  for (std::size_t i = 0; i < kSignals.size(); ++i) {
    sigaction(kSignals[i], nullptr, &previous[i]);
    if (previous[i].sa_handler == SIG_DFL) {
      struct sigaction own = {};
      own.sa_handler = Forward;
      own.sa_flags = SA_RESTART;
      own.sa_mask = previous[i].sa_mask;
      sigaction(kSignals[i], &own, nullptr);
    }
  }
}

SignalForwarding::~SignalForwarding() {
  Stop();
  for (std::size_t i = 0; i < kSignals.size(); ++i) {
    if (previous[i].sa_handler == SIG_DFL) {
      sigaction(kSignals[i], &previous[i], nullptr);
    }
  }
  if (receivedSignal != 0) {
    raise(receivedSignal);
  }
}

void SignalForwarding::Start(pid_t child) {
  const SignalBlock block;
  runningChild = child;
  if (receivedSignal != 0) {
    Forward(receivedSignal);
  }
}

void SignalForwarding::Stop() { runningChild = 0; }

}  // namespace Kestrel::AutoCli
