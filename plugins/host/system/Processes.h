// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Host {

/// No process has a greater number.
constexpr long kMaxProcessId = 1 << 22;

/// A process as described by the kernel. The process itself chooses the bytes of its name and
/// command.
struct Process {
  long id = 0;
  long parentId = 0;
  uid_t user = 0;  ///< The effective user.
  char state = '?';
  bool isKernelThread = false;
  long threads = 0;
  long nice = 0;
  long virtualMemory = 0;   ///< In bytes.
  long residentMemory = 0;  ///< In bytes.
  long processorTicks = 0;  ///< Time in user and system mode, in ticks of sysconf(_SC_CLK_TCK).
  long startTicks = 0;      ///< Time from the boot to its start, in ticks.
  long terminal = 0;        ///< The device number of its terminal; 0 if it has none.
  std::string name;         ///< At most 15 bytes, except for a kernel thread.
  std::string command;      ///< The arguments, separated by spaces; empty if there are none.
};

/// Parses the content of a "stat" file. Returns nothing if it is damaged. The name is in
/// parentheses and may contain any byte, including parentheses and line feeds.
std::optional<Process> ParseProcess(std::string_view stat);

/// Reads the process with that number in `proc`. Returns nothing if there is none, or if it ends
/// before everything is read. Throws KestrelException if a file of a running process cannot be read
/// or is damaged.
std::optional<Process> ReadProcess(const std::string& proc, long id);

/// Returns all processes in `proc`, in ascending order of their numbers. Skips those that end while
/// they are read. Throws KestrelException if there are none, which means that `proc` is not
/// mounted, or if one cannot be read.
std::vector<Process> ReadProcesses(const std::string& proc);

/// Whether the kernel hides the processes of other users, because an option of the mount of `proc`
/// says so. In that case, process 1 is missing, although it always runs.
bool HidesProcesses(const std::string& proc);

/// Returns the processor time that a process has used, in hundredths of a percent of the time since
/// it started. May be more than 10000, because several of its threads can run at the same time.
long ProcessorShare(long usedTicks, long elapsedTicks);

/// Returns the name of a state, such as "sleeping" for the letter S; "unknown" for an unknown
/// letter.
const char* StateName(char state);

/// Returns the letter of a state, given as its name in upper or lower case, or as the letter that
/// ps prints. Returns nothing if there is no such state.
std::optional<char> ParseState(std::string_view text);

/// Returns the name of a terminal below /dev, such as "pts/3"; its device number if the name is
/// unknown; "none" for 0. `sys` is the folder in which the kernel lists its devices.
std::string TerminalName(long terminal, const std::string& sys);

}  // namespace Kestrel::Host
