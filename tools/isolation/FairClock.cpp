// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Linux describes a process in one line of /proc/ID/stat, and each thread in /proc/ID/task/ID/stat.
// After the name in parentheses come the state, the parent, and, as the 12th to the 15th field, the
// processor time of the process, and that of the children for which it has waited.

#include "tools/isolation/FairClock.h"

#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <system_error>

namespace Kestrel::Isolation {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

namespace {

// The limit on an ordinary clock, as a multiple of the patience: 30 seconds for a patience of 2.
constexpr int kMaxPatience = 15;

struct Process {
  pid_t id = 0;
  pid_t parent = 0;
  char state = 'X';
  long ticks = 0;
};

/// Returns a process with the number 0 if there is no such process.
Process ReadProcess(const std::filesystem::path& folder) {
  std::ifstream file(folder / "stat");
  std::string line;
  std::getline(file, line);
  const std::size_t end = line.rfind(')');  // of the name, which may contain anything
  if (end == std::string::npos) {
    return {};
  }
  Process process;
  process.id = std::atoi(line.c_str());
  std::istringstream fields(line.substr(end + 1));
  fields >> process.state >> process.parent;
  std::string other;
  for (int i = 3; i < 12; ++i) {
    fields >> other;
  }
  for (int i = 12; i < 16; ++i) {
    long ticks = 0;
    fields >> ticks;
    process.ticks += ticks;
  }
  return process;
}

/// Returns the processes or threads in a folder of /proc.
std::vector<Process> ReadProcesses(const std::filesystem::path& folder) {
  std::vector<Process> processes;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    const std::string name = entry->path().filename().string();
    if (name.find_first_not_of("0123456789") == std::string::npos) {
      processes.push_back(ReadProcess(entry->path()));
    }
  }
  return processes;
}

std::vector<Process> ListDescendants() {
  const std::vector<Process> all = ReadProcesses("/proc");
  std::set<pid_t> known = {getpid()};
  std::vector<Process> found;
  for (std::size_t before = 0; before != known.size();) {
    before = known.size();
    for (const Process& process : all) {
      if (known.count(process.parent) != 0 && known.insert(process.id).second) {
        found.push_back(process);
      }
    }
  }
  return found;
}

bool IsReadyToRun(const Process& process) {
  const std::vector<Process> threads =
      ReadProcesses("/proc/" + std::to_string(process.id) + "/task");
  return std::any_of(threads.begin(), threads.end(), [](const Process& thread) {
    return thread.state == 'R' || thread.state == 'D';
  });
}

}  // namespace

std::vector<pid_t> ListChildren(pid_t parent) {
  std::vector<pid_t> children;
  for (const Process& process : ReadProcesses("/proc")) {
    if (process.parent == parent) {
      children.push_back(process.id);
    }
  }
  return children;
}

milliseconds FairClock::Now() {
  const Clock::time_point now = Clock::now();
  const auto passed = std::chrono::duration_cast<milliseconds>(now - looked_);
  if (passed < kStep) {
    return counted_ + passed;
  }
  const std::vector<Process> processes = ListDescendants();
  long ticks = 0;
  for (const Process& process : processes) {
    ticks += process.ticks;
  }
  const milliseconds processorTime(ticks * 1000 / sysconf(_SC_CLK_TCK));
  const milliseconds used = std::clamp(processorTime - processorTime_, milliseconds(0), passed);
  const bool isReady = std::any_of(processes.begin(), processes.end(), IsReadyToRun);
  // If this process itself had to wait for a processor, it has not observed most of the time that
  // has passed. So at most two steps are counted, or the processor time if that is longer.
  counted_ += isReady ? used : std::max(used, std::min(passed, 2 * kStep));
  processorTime_ = processorTime;
  looked_ = now;
  return counted_;
}

FairDeadline::FairDeadline(FairClock& clock, milliseconds patience)
    : clock_(clock),
      end_(clock.Now() + patience),
      latest_(Clock::now() + kMaxPatience * patience) {}

milliseconds FairDeadline::GetTimeLeft() {
  return Clock::now() >= latest_ ? milliseconds(0) : std::max(end_ - clock_.Now(), milliseconds(0));
}

}  // namespace Kestrel::Isolation
