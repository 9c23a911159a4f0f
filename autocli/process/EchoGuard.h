// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace Kestrel::AutoCli {

/// Turns off echo on the terminal on file descriptor 0 as long as the guard exists.
///
/// The destructor restores the earlier modes. They are also restored before a signal ends the
/// process or SIGTSTP stops it; the signal then acts as it would without the guard. SIGKILL and
/// SIGSTOP are exceptions, because they cannot be caught. When a stopped process continues, or a
/// signal handler of the program returns, echo is turned off again. If standard output is a
/// terminal, the prompt is then written again. If file descriptor 0 is not a terminal, the guard
/// does nothing. There must not be two guards at a time.
class EchoGuard {
 public:
  /// Turns echo off. `prompt` is not written now, only in the cases above.
  explicit EchoGuard(std::string prompt);
  ~EchoGuard();
  EchoGuard(const EchoGuard&) = delete;
  EchoGuard& operator=(const EchoGuard&) = delete;

 private:
  std::string prompt_;
  bool isTerminal_;
};

}  // namespace Kestrel::AutoCli
