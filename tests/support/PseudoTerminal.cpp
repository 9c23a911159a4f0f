// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "support/PseudoTerminal.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <utility>

namespace Kestrel::Testing {

namespace {

constexpr int kMaxWaitMilliseconds = 10000;
constexpr char kForeground = 'f';
constexpr char kBackground = 'b';

bool WaitForInput(int descriptor, int milliseconds) {
  pollfd input = {descriptor, POLLIN, 0};
  return poll(&input, 1, milliseconds) == 1 && (input.revents & POLLIN) != 0;
}

std::array<int, 2> MakePipe() {
  std::array<int, 2> ends;
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    throw std::runtime_error("Unable to create a pipe");
  }
  return ends;
}

template <typename T>
bool ReadValue(int descriptor, T& value) {
  return read(descriptor, &value, sizeof value) == static_cast<ssize_t>(sizeof value);
}

template <typename T>
void WriteValue(int descriptor, const T& value) {
  if (write(descriptor, &value, sizeof value) != static_cast<ssize_t>(sizeof value)) {
    _exit(EXIT_FAILURE);
  }
}

}  // namespace

PseudoTerminal::PseudoTerminal() {
  const winsize size = {24, 80, 0, 0};
  if (openpty(&keyboard_, &terminal_, nullptr, nullptr, &size) != 0) {
    throw std::runtime_error("Unable to open a pseudo-terminal");
  }
  fcntl(keyboard_, F_SETFD, FD_CLOEXEC);
  fcntl(terminal_, F_SETFD, FD_CLOEXEC);
}

PseudoTerminal::~PseudoTerminal() {
  if (work_ > 0) {
    kill(work_, SIGKILL);
  }
  if (leader_ > 0) {
    kill(leader_, SIGKILL);
    waitpid(leader_, nullptr, 0);
  }
  for (const int descriptor : {keyboard_, terminal_, changes_, orders_}) {
    if (descriptor != -1) {
      close(descriptor);
    }
  }
}

void PseudoTerminal::SetSize(unsigned short columns, unsigned short rows) {
  const winsize size = {rows, columns, 0, 0};
  ioctl(keyboard_, TIOCSWINSZ, &size);
}

void PseudoTerminal::Start(const std::function<int()>& work) {
  const std::array<int, 2> changes = MakePipe();
  const std::array<int, 2> orders = MakePipe();
  changes_ = changes[1];
  orders_ = orders[0];
  fflush(nullptr);
  leader_ = fork();
  if (leader_ == 0) {
    Lead(work);
  }
  close(changes[1]);
  close(orders[0]);
  changes_ = changes[0];
  orders_ = orders[1];
  if (leader_ == -1 || !WaitForInput(changes_, kMaxWaitMilliseconds) ||
      !ReadValue(changes_, work_)) {
    throw std::runtime_error("Unable to start the work on the terminal");
  }
}

// Runs in the session leader. Sends the test the process ID of the work, then each change of the
// work's status.
void PseudoTerminal::Lead(const std::function<int()>& work) {
  setsid();
  ioctl(terminal_, TIOCSCTTY, 0);
  signal(SIGTTOU, SIG_IGN);
  const pid_t child = fork();
  if (child == 0) {
    setpgid(0, 0);
    tcsetpgrp(terminal_, getpid());
    signal(SIGTTOU, SIG_DFL);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
      dup2(terminal_, stream);
    }
    // Not _exit, which would skip writing the coverage data.
    exit(work());
  }
  setpgid(child, child);
  WriteValue(changes_, child);
  for (int status = 0; waitpid(child, &status, WUNTRACED) == child;) {
    if (WIFSTOPPED(status)) {
      tcsetpgrp(terminal_, getpgrp());
    }
    WriteValue(changes_, status);
    char order = 0;
    if (!WIFSTOPPED(status) || !ReadValue(orders_, order)) {
      break;
    }
    if (order == kForeground) {
      tcsetpgrp(terminal_, child);
    }
    kill(-child, SIGCONT);
  }
  _exit(EXIT_SUCCESS);
}

void PseudoTerminal::Type(std::string_view text) {
  if (write(keyboard_, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
    ADD_FAILURE() << "Unable to type on the terminal";
  }
}

std::string PseudoTerminal::ReadUntil(const std::string& text) {
  for (;;) {
    const std::size_t found = screen_.find(text);
    if (found != std::string::npos) {
      std::string read = screen_.substr(0, found + text.size());
      screen_.erase(0, read.size());
      return read;
    }
    std::array<char, 4096> buffer;
    ssize_t count = 0;
    if (!WaitForInput(keyboard_, kMaxWaitMilliseconds) ||
        (count = read(keyboard_, buffer.data(), buffer.size())) <= 0) {
      ADD_FAILURE() << "The screen does not show \"" << text << "\" but \"" << screen_ << '"';
      return std::exchange(screen_, {});
    }
    screen_.append(buffer.data(), static_cast<std::size_t>(count));
  }
}

bool PseudoTerminal::IsEchoOn() const {
  termios modes = {};
  if (tcgetattr(terminal_, &modes) != 0) {
    ADD_FAILURE() << "Unable to read the modes of the terminal";
  }
  return (modes.c_lflag & ECHO) != 0;
}

void PseudoTerminal::SetEcho(bool isOn) {
  termios modes = {};
  tcgetattr(terminal_, &modes);
  const tcflag_t echo = ECHO;
  modes.c_lflag = isOn ? modes.c_lflag | echo : modes.c_lflag & ~echo;
  tcsetattr(terminal_, TCSANOW, &modes);
}

void PseudoTerminal::Send(int signal) { kill(work_, signal); }

int PseudoTerminal::WaitForChange() {
  int status = 0;
  if (!WaitForInput(changes_, kMaxWaitMilliseconds) || !ReadValue(changes_, status)) {
    ADD_FAILURE() << "The work on the terminal neither ended nor stopped";
  }
  return status;
}

bool PseudoTerminal::WaitUntilStopped() { return WIFSTOPPED(WaitForChange()); }

void PseudoTerminal::Continue() { WriteValue(orders_, kForeground); }

void PseudoTerminal::ContinueInBackground() { WriteValue(orders_, kBackground); }

int PseudoTerminal::WaitForEnd() { return WaitForChange(); }

std::string PseudoTerminal::ReadRest() {
  std::array<char, 4096> buffer;
  while (WaitForInput(keyboard_, 0)) {
    const ssize_t count = read(keyboard_, buffer.data(), buffer.size());
    if (count <= 0) {
      break;
    }
    screen_.append(buffer.data(), static_cast<std::size_t>(count));
  }
  return std::exchange(screen_, {});
}

}  // namespace Kestrel::Testing
