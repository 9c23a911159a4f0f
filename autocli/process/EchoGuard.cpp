// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// A signal that ends or stops the process is handled by Interrupt. It restores the terminal and the
// earlier disposition of the signal, and raises the signal again. If the process survives that
// (because it was stopped and continued, or because the program has a handler of its own),
// Interrupt turns echo off again. After SIGSTOP, which cannot be caught, only Resume runs.

#include "autocli/process/EchoGuard.h"

#include <errno.h>
#include <signal.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <utility>

namespace Kestrel::AutoCli {

namespace {

// Whether a signal ends or stops the process by default and can be caught, or is SIGCONT.
//
// Signals for faults of the process itself, such as SIGSEGV, are included. SIGTTIN and SIGTTOU are
// not: they stop only a process in the background, which leaves the terminal alone.
bool IsGuarded(int signal) {
  switch (signal) {
    case SIGKILL:
    case SIGSTOP:
    case SIGCHLD:
    case SIGTTIN:
    case SIGTTOU:
    case SIGURG:
    case SIGWINCH:
      return false;
    default:
      return true;
  }
}

// Signal numbers are from 1 to one less than this. The C library reserves some of them and refuses
// to install a handler for these.
constexpr int kSignalEnd = _NSIG;

// The data of the signal handlers. It is written only while none of them is installed, except that
// PassOn stores the disposition of its signal in `previous` again.
struct Terminal {
  termios shown;
  termios hidden;
  const char* prompt;
  std::size_t promptSize;
  std::array<struct sigaction, kSignalEnd> previous;  // by the number of the signal
};

Terminal terminal;
volatile sig_atomic_t isGuarded = 0;
volatile sig_atomic_t isHidden = 0;
volatile sig_atomic_t isPassingOn = 0;

// Only the process group in the foreground may change the modes of a terminal.
bool IsInForeground() {
  const pid_t foreground = tcgetpgrp(STDIN_FILENO);
  return foreground == -1 || foreground == getpgrp();
}

void Show() {
  if (IsInForeground()) {
    tcsetattr(STDIN_FILENO, TCSANOW, &terminal.shown);
  }
  isHidden = 0;
}

void HideAndPrompt() {
  if (!IsInForeground()) {
    return;
  }
  tcsetattr(STDIN_FILENO, TCSANOW, &terminal.hidden);
  isHidden = 1;
  const char* text = terminal.prompt;
  std::size_t left = terminal.promptSize;
  while (left > 0) {
    const ssize_t written = write(STDOUT_FILENO, text, left);
    if (written <= 0) {
      return;
    }
    text += written;
    left -= static_cast<std::size_t>(written);
  }
}

void Interrupt(int signal);
void Resume(int signal);

struct sigaction MakeAction(int signal) {
  struct sigaction action = {};
  action.sa_handler = signal == SIGCONT ? Resume : Interrupt;
  action.sa_flags = SA_RESTART;
  sigemptyset(&action.sa_mask);
  return action;
}

struct sigaction& GetPrevious(int signal) {
  return terminal.previous[static_cast<std::size_t>(signal)];
}

// Raises `signal` with the disposition that it had before the guard.
void PassOn(int signal) {
  sigset_t only;
  sigset_t before;
  sigemptyset(&only);
  sigaddset(&only, signal);
  sigaction(signal, &GetPrevious(signal), nullptr);
  raise(signal);
  sigprocmask(SIG_UNBLOCK, &only, &before);
  sigprocmask(SIG_SETMASK, &before, nullptr);
  const struct sigaction own = MakeAction(signal);
  sigaction(signal, &own, &GetPrevious(signal));
}

// Echo is turned off only after this handler is installed again, because the next signal may follow
// immediately.
void Interrupt(int signal) {
  const int error = errno;
  const sig_atomic_t wasPassingOn = isPassingOn;
  Show();
  isPassingOn = 1;
  PassOn(signal);
  isPassingOn = wasPassingOn;
  if (isGuarded && !isHidden && !isPassingOn) {
    HideAndPrompt();
  }
  errno = error;
}

void Resume(int signal) {
  const int error = errno;
  if (GetPrevious(signal).sa_handler != SIG_DFL) {
    PassOn(signal);
  }
  if (isGuarded && !isPassingOn) {
    HideAndPrompt();
  }
  errno = error;
}

// A signal that was ignored stays ignored.
void InstallHandlers() {
  for (int signal = 1; signal < kSignalEnd; ++signal) {
    if (!IsGuarded(signal) || sigaction(signal, nullptr, &GetPrevious(signal)) != 0) {
      GetPrevious(signal).sa_handler = SIG_IGN;
    }
  }
  for (int signal = 1; signal < kSignalEnd; ++signal) {
    if (GetPrevious(signal).sa_handler != SIG_IGN) {
      const struct sigaction own = MakeAction(signal);
      sigaction(signal, &own, nullptr);
    }
  }
}

void RemoveHandlers() {
  for (int signal = 1; signal < kSignalEnd; ++signal) {
    if (GetPrevious(signal).sa_handler != SIG_IGN) {
      sigaction(signal, &GetPrevious(signal), nullptr);
    }
  }
}

}  // namespace

EchoGuard::EchoGuard(std::string prompt)
    : prompt_(std::move(prompt)), isTerminal_(tcgetattr(STDIN_FILENO, &terminal.shown) == 0) {
  if (!isTerminal_) {
    return;
  }
  terminal.hidden = terminal.shown;
  terminal.hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
  terminal.prompt = prompt_.data();
  // On a terminal, the prompt is repeated when a stopped process continues, because the shell has
  // printed something after the first prompt. In a file or a pipe, one prompt is enough.
  terminal.promptSize = isatty(STDOUT_FILENO) ? prompt_.size() : 0;
  InstallHandlers();
  isGuarded = 1;
  isHidden = 1;
  tcsetattr(STDIN_FILENO, TCSANOW, &terminal.hidden);
}

EchoGuard::~EchoGuard() {
  if (!isTerminal_) {
    return;
  }
  isGuarded = 0;
  tcsetattr(STDIN_FILENO, TCSANOW, &terminal.shown);
  RemoveHandlers();
}

}  // namespace Kestrel::AutoCli
