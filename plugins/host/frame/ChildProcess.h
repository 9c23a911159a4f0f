// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Host {

/// What a program wrote, and how it ended.
struct ProgramResult {
  int status = 0;           ///< its exit status; 128 and the signal's number when that ended it
  std::string output;       ///< standard output
  std::string errorOutput;  ///< standard error
  bool isTimedOut = false;  ///< whether it took too long and was killed

  /// Why it failed, for a message: the first line of its standard error, else its status.
  std::string GetReason() const;
};

/// The path of a program: `name` in the first folder of PATH that has an executable file of that
/// name. Relative folders do not count: the answer would depend on the current one.
std::optional<std::string> FindProgram(const std::string& name);

/// Runs the program at `path` to its end with these arguments and an empty standard input.
///
/// No shell reads the arguments. Of the environment the program gets what finds programs, the
/// user's session and the time zone, and LC_ALL=C: nothing that changes what it prints. Throws
/// KestrelException with the system's text when it cannot be started, read or waited for.
ProgramResult RunProgram(const std::string& path, const std::vector<std::string>& arguments);

/// Receives standard output piece by piece. Returns false when it has enough.
using OutputReader = std::function<bool(std::string_view piece)>;

/// The same for an output that is not kept whole. A program whose reader has enough is ended, and
/// its status is then 0.
ProgramResult RunProgram(const std::string& path, const std::vector<std::string>& arguments,
                         const OutputReader& reader);

/// The same for a program that may take no longer than `limit`. After that it is killed together
/// with what it started; the result then has what it wrote until then. Throws also when it writes
/// more than 256 MiB.
///
/// Waits for the program itself only, not for one that it leaves running with its streams open, as
/// a script that starts a server may do.
ProgramResult RunProgramWithin(std::chrono::milliseconds limit, const std::string& path,
                               const std::vector<std::string>& arguments);

}  // namespace Kestrel::Host
