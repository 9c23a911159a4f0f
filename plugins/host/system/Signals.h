// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "plugins/host/frame/FileDescriptor.h"

namespace Kestrel::Host {

/// Returns the name of a signal without "SIG", such as "TERM" or "RTMIN+1"; the number in digits if
/// it has no name.
std::string SignalName(int signal);

/// Returns the number of a signal, given as its name in upper or lower case, with or without "SIG",
/// or as the number itself. Returns nothing if there is no such signal.
std::optional<int> ParseSignal(std::string_view text);

/// A running process that signals can be sent to. If it ends, a later process with the same number
/// is not affected, unless the kernel is too old to open processes.
class SignalTarget {
 public:
  /// Returns nothing if there is no such process. Throws KestrelException if the process cannot be
  /// opened for another reason, such as too many open files.
  static std::optional<SignalTarget> Open(long process);

  /// Sends the signal; the signal 0 sends nothing, and only checks whether a signal can be sent.
  /// Returns 0 or the error number.
  int Send(int signal) const;

 private:
  SignalTarget(long process, int descriptor) : process_(process), descriptor_(descriptor) {}

  long process_;
  FileDescriptor descriptor_;  // not open if the kernel is too old to open processes
};

}  // namespace Kestrel::Host
