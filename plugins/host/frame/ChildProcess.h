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
  int status = 0;           ///< its exit status; if a signal ended it, 128 plus the signal's number
  std::string output;       ///< standard output, unless a reader received it
  std::string errorOutput;  ///< standard error
  bool isTimedOut = false;  ///< whether it took too long and was killed

  /// Returns why the program failed, for a message: that it took too long, otherwise the first line
  /// of its standard error or, if that is empty, its exit status.
  std::string GetReason() const;
};

/// Returns the path of a program: the first executable file called `name` in the folders of PATH,
/// or in the usual folders if PATH is not set. Skips relative folders, because the result would
/// depend on the current folder.
std::optional<std::string> FindProgram(const std::string& name);

/// Runs the program at `path` with these arguments and an empty standard input, and waits for it to
/// end.
///
/// No shell interprets the arguments. The program gets LC_ALL=C and only those variables of the
/// environment that it may need to find other programs, the user's files, the time zone and the
/// services it contacts, so that no other setting changes what it prints. Throws KestrelException
/// with the system's text if the program cannot be started or its output cannot be read.
ProgramResult RunProgram(const std::string& path, const std::vector<std::string>& arguments);

/// Receives standard output piece by piece. Returns false if it needs no more.
using OutputReader = std::function<bool(std::string_view piece)>;

/// Runs a program whose standard output is passed to a reader instead of being kept. If the reader
/// needs no more, the program is killed and the result has status 0.
ProgramResult RunProgram(const std::string& path, const std::vector<std::string>& arguments,
                         const OutputReader& reader);

/// Runs a program that may take no longer than `limit`. After that, the program is killed together
/// with the processes of its group, and the result contains what it wrote until then. Also throws
/// if it writes more than 256 MiB to one of its streams.
///
/// Waits only for the program itself. A process that it leaves running with its streams open, such
/// as a server started by a script, is not waited for.
ProgramResult RunProgramWithin(std::chrono::milliseconds limit, const std::string& path,
                               const std::vector<std::string>& arguments);

}  // namespace Kestrel::Host
