// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace Kestrel::AutoCli {

/// Keeps the terminal on descriptor 0 from echoing what is typed, for as long as the guard lives.
///
/// The modes found at the start come back when the guard dies, and before a signal that ends or
/// stops the process takes effect (hang-up, interrupt, quit, terminate, broken pipe, stop); such a
/// signal then acts as it would have without the guard. When a stopped process goes on, echo goes
/// off again and the prompt is written again. Input that is not a terminal is left alone, and so
/// are then all signals. At most one guard lives at a time.
class EchoGuard {
 public:
  /// Turns echo off. `prompt` is not written now, only again after a stop.
  explicit EchoGuard(std::string prompt);
  ~EchoGuard();
  EchoGuard(const EchoGuard&) = delete;
  EchoGuard& operator=(const EchoGuard&) = delete;

 private:
  std::string prompt_;
  bool isTerminal_;
};

}  // namespace Kestrel::AutoCli
