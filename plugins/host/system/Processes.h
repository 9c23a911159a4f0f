// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Host {

/// One process as the kernel shows it. Texts are bytes as the process set them.
struct Process {
  long id = 0;
  long parentId = 0;
  uid_t user = 0;  ///< By whose rights it acts.
  char state = '?';
  bool isKernelThread = false;
  long threads = 0;
  long nice = 0;
  long virtualMemory = 0;   ///< In KiB.
  long residentMemory = 0;  ///< In KiB.
  long processorTicks = 0;  ///< Spent in user and system mode, see sysconf(_SC_CLK_TCK).
  long startTicks = 0;      ///< When it started, after the start of the machine.
  long terminal = 0;        ///< The device number of its terminal, 0 for none.
  std::string name;         ///< Of the program, 15 bytes at most.
  std::string command;      ///< The arguments with blanks between them; empty for a kernel thread.
};

/// Fills in what a process's "stat" tells; nothing when the text makes no sense. The name stands
/// in parentheses and may hold any byte, parentheses and line ends too.
std::optional<Process> ParseProcess(std::string_view stat);

/// The process of that number in `proc`; nothing when it is gone, be it half-way.
std::optional<Process> ReadProcess(const std::string& proc, long id);

/// All processes in `proc`, ascending by number; those that vanish meanwhile are left out.
/// Throws KestrelException when there is none at all, since then `proc` is not what it should be.
std::vector<Process> ReadProcesses(const std::string& proc);

/// A word for a state's letter: "running", "sleeping", ...; "unknown" for a letter that is none.
const char* StateName(char state);

/// The name of a terminal below /dev, like "pts/3"; its numbers where it has none known, empty for
/// none. `sys` is the folder in which the kernel shows its devices.
std::string TerminalName(long terminal, const std::string& sys);

}  // namespace Kestrel::Host
