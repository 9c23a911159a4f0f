// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace Kestrel::Doctor {

/// The result of loading a plug-in.
enum class State {
  Loaded,   ///< it works
  Faulty,   ///< it is loaded, but something is wrong with it
  Refused,  ///< the loader refuses it
  Threw,    ///< it threw an exception that the tool does not expect
  Crashed,  ///< a signal ended the process
  Ended,    ///< it ended the process
  Hung      ///< it did not end in time
};

const char* WordOf(State state);

/// How a plug-in behaves in a process of its own.
struct Examination {
  State state = State::Loaded;
  std::vector<std::string> reasons;   ///< empty for a plug-in that works
  std::vector<std::string> commands;  ///< the paths of those that it adds: "a b list"
  long milliseconds = 0;              ///< for loading it
};

/// Examines the plug-in `file` in child processes, which load those in `before` first. A child is
/// killed if one of the plug-ins takes longer than `patience`.
Examination Examine(const std::string& file, const std::vector<std::string>& before,
                    std::chrono::milliseconds patience);

/// Returns the paths of the commands that a plug-in declares, even if it cannot be loaded after
/// other plug-ins. A shared object is loaded alone, in a child process.
std::vector<std::string> ListDeclaredCommands(const std::string& file,
                                              std::chrono::milliseconds patience);

/// Returns the paths of the commands that every tree has.
std::vector<std::string> ListBuiltInCommands();

}  // namespace Kestrel::Doctor
