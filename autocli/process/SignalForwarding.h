// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/types.h>

namespace Kestrel::AutoCli {

/// Passes SIGINT and SIGTERM on to a child process from `Start` to `Stop`. If this process has
/// received one of them while this object existed, the destructor ends this process by that signal.
///
/// The child shares the process group of this process, so that it may use the terminal, and the
/// group may have members that have nothing to do with the child. So the signal goes to the child
/// and to all processes below it. A signal that is ignored, or for which the program has a handler,
/// is left alone. There must not be two such objects at a time.
class SignalForwarding {
 public:
  SignalForwarding();
  /// Calls `Stop`. If a signal was received, raises it with its default action.
  ~SignalForwarding();
  SignalForwarding(const SignalForwarding&) = delete;
  SignalForwarding& operator=(const SignalForwarding&) = delete;

  /// Begins to pass signals on to `child`, including one that was received earlier.
  void Start(pid_t child);
  /// Stops passing signals on. Must be called before the child is reaped, because its number may be
  /// used again.
  void Stop();
};

}  // namespace Kestrel::AutoCli
