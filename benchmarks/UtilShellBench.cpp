// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The cost of a shell command, compared with a bare posix_spawn of the same shell, in a process
// that uses little or much memory.

#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>

#include "kestrel/autocli/Util.h"

extern char** environ;

namespace Kestrel::Benchmarks {
namespace {

constexpr const char* kCommand = "echo done";

/// Memory that is written to, so that the system has to provide it.
class HeldMemory {
 public:
  explicit HeldMemory(std::int64_t kibibytes)
      : size_(static_cast<std::size_t>(kibibytes) << 10), bytes_(new char[size_]) {
    std::memset(bytes_.get(), 1, size_);
  }

 private:
  const std::size_t size_;
  const std::unique_ptr<char[]> bytes_;
};

void RunWithLibrary(std::string& output) { AutoCli::AutoCli_ShellCmd(kCommand, output, ""); }

/// The minimum for reading the output of a command: one pipe and blocking reads.
void RunWithBareSpawn(std::string& output) {
  int ends[2];
  if (pipe(ends) != 0) {
    throw std::runtime_error("pipe failed");
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  posix_spawn_file_actions_addclose(&actions, ends[0]);
  posix_spawn_file_actions_addclose(&actions, ends[1]);
  const char* const argv[] = {"sh", "-c", kCommand, nullptr};
  pid_t child = 0;
  const int error =
      posix_spawn(&child, "/bin/sh", &actions, nullptr, const_cast<char* const*>(argv), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  char chunk[4096];
  ssize_t count = 0;
  while (error == 0 && (count = read(ends[0], chunk, sizeof chunk)) > 0) {
    output.append(chunk, static_cast<std::size_t>(count));
  }
  close(ends[0]);
  int status = 0;
  if (error != 0 || waitpid(child, &status, 0) != child) {
    throw std::runtime_error("posix_spawn failed");
  }
}

/// Returns the processor time of this process and of the children that it has waited for, in
/// seconds.
double CpuSeconds() {
  double seconds = 0;
  for (const auto who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
    rusage usage;
    getrusage(who, &usage);
    for (const timeval& part : {usage.ru_utime, usage.ru_stime}) {
      seconds += static_cast<double>(part.tv_sec) + static_cast<double>(part.tv_usec) * 1e-6;
    }
  }
  return seconds;
}

/// Reports the elapsed time until all output is read and, as "cpu", the processor time including
/// the child's.
template <void (*run)(std::string&)>
void BM_ShellCommand(benchmark::State& state) {
  const HeldMemory held(state.range(0));
  const double before = CpuSeconds();
  for (auto _ : state) {
    std::string output;
    run(output);
    if (output != "done\n") {
      state.SkipWithError("the command printed something else");
      break;
    }
  }
  state.counters["cpu"] =
      benchmark::Counter(CpuSeconds() - before, benchmark::Counter::kAvgIterations);
}
BENCHMARK(BM_ShellCommand<RunWithLibrary>)->Arg(0)->Arg(64 << 10)->Arg(1 << 20)->UseRealTime();
BENCHMARK(BM_ShellCommand<RunWithBareSpawn>)->Arg(0)->Arg(64 << 10)->Arg(1 << 20)->UseRealTime();

}  // namespace
}  // namespace Kestrel::Benchmarks
