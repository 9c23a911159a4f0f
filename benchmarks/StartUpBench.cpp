// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The processor time of whole processes: the tool, compared with other programs.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace Kestrel::Benchmarks {
namespace {

namespace fs = std::filesystem;

constexpr char kArgparseProgram[] =
    "import argparse\n"
    "parser = argparse.ArgumentParser()\n"
    "commands = parser.add_subparsers()\n"
    "for i in range(100):\n"
    "    command = commands.add_parser(f'command{i}', help='Does something.')\n"
    "parser.print_help()\n";

double SecondsOf(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

/// Redirects the standard output and error of a child to /dev/null.
class NullOutput {
 public:
  NullOutput() {
    posix_spawn_file_actions_init(&actions_);
    posix_spawn_file_actions_addopen(&actions_, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions_, 2, "/dev/null", O_WRONLY, 0);
  }
  NullOutput(const NullOutput&) = delete;
  NullOutput& operator=(const NullOutput&) = delete;
  ~NullOutput() { posix_spawn_file_actions_destroy(&actions_); }

  const posix_spawn_file_actions_t* Get() const { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_;
};

/// Runs a program and returns its processor time in seconds, user and system. Throws
/// std::runtime_error unless it exits with `expectedStatus`.
double Run(const std::vector<std::string>& words, int expectedStatus) {
  std::vector<char*> argv;
  for (const std::string& word : words) {
    argv.push_back(const_cast<char*>(word.c_str()));
  }
  argv.push_back(nullptr);
  const NullOutput nullOutput;
  pid_t child = 0;
  if (posix_spawnp(&child, argv[0], nullOutput.Get(), nullptr, argv.data(), environ) != 0) {
    throw std::runtime_error("cannot start " + words[0]);
  }
  int status = 0;
  rusage usage = {};
  if (wait4(child, &status, 0, &usage) != child || !WIFEXITED(status) ||
      WEXITSTATUS(status) != expectedStatus) {
    throw std::runtime_error(words[0] + " failed");
  }
  return SecondsOf(usage.ru_utime) + SecondsOf(usage.ru_stime);
}

void Measure(benchmark::State& state, const std::vector<std::string>& words, int expectedStatus) {
  for (auto _ : state) {
    state.SetIterationTime(Run(words, expectedStatus));
  }
}

/// Returns the tool that the target `stage` has installed, if there is one, because the tool in the
/// build tree makes the loader look for each library in folders of that tree.
std::string Tool() { return fs::exists(KESTREL_STAGED_TOOL) ? KESTREL_STAGED_TOOL : KESTREL_TOOL; }

void BM_StartRootListing(benchmark::State& state) { Measure(state, {Tool()}, 1); }
BENCHMARK(BM_StartRootListing)->UseManualTime();

/// Measures the tool with the plug-ins that are shipped. Skips the benchmark if they are not
/// installed; the target `stage` installs them.
void MeasureShipped(benchmark::State& state, std::vector<std::string> words, int expectedStatus) {
  if (!fs::exists(KESTREL_SHIPPED_PLUGINS "/host.so")) {
    state.SkipWithError("the plug-ins are not staged");
    return;
  }
  words.insert(words.begin(), {Tool(), "--plugin-dir", KESTREL_SHIPPED_PLUGINS});
  Measure(state, words, expectedStatus);
}

void BM_StartShippedPlugins(benchmark::State& state) { MeasureShipped(state, {}, 1); }
BENCHMARK(BM_StartShippedPlugins)->UseManualTime();

void BM_StartFindmnt(benchmark::State& state) { Measure(state, {"findmnt"}, 0); }
BENCHMARK(BM_StartFindmnt)->UseManualTime();

// Commands that list one row, and other programs that print the same.

void BM_StartOneMount(benchmark::State& state) {
  MeasureShipped(state, {"storage", "mount", "list", "--limit", "1"}, 0);
}
BENCHMARK(BM_StartOneMount)->UseManualTime();

void BM_StartFindmntRoot(benchmark::State& state) { Measure(state, {"findmnt", "/"}, 0); }
BENCHMARK(BM_StartFindmntRoot)->UseManualTime();

void BM_StartOneLink(benchmark::State& state) {
  MeasureShipped(state, {"network", "interface", "list", "--interface", "lo"}, 0);
}
BENCHMARK(BM_StartOneLink)->UseManualTime();

void BM_StartIpLink(benchmark::State& state) { Measure(state, {"ip", "link", "show", "lo"}, 0); }
BENCHMARK(BM_StartIpLink)->UseManualTime();

void BM_StartEmptyMainWithLibraries(benchmark::State& state) {
  Measure(state, {KESTREL_EMPTY_WITH_LIBRARIES}, 0);
}
BENCHMARK(BM_StartEmptyMainWithLibraries)->UseManualTime();

void BM_StartEmptyMain(benchmark::State& state) { Measure(state, {KESTREL_EMPTY}, 0); }
BENCHMARK(BM_StartEmptyMain)->UseManualTime();

void BM_StartArgparse(benchmark::State& state) {
  Measure(state, {"python3", "-c", kArgparseProgram}, 0);
}
BENCHMARK(BM_StartArgparse)->UseManualTime();

/// A folder with copies of one plug-in. Each copy registers a namespace named after its file.
class PluginFolder {
 public:
  explicit PluginFolder(int copies) {
    std::string name = (fs::temp_directory_path() / "kestrel-bench-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
      throw std::runtime_error("no temporary folder");
    }
    path_ = name;
    for (int i = 0; i < copies; ++i) {
      const fs::path file = path_ / ("plugin" + std::to_string(i) + ".so");
      fs::copy_file(KESTREL_SMALL_PLUGIN, file);
      files_.push_back(file.string());
    }
    std::sort(files_.begin(), files_.end());
  }
  PluginFolder(const PluginFolder&) = delete;
  PluginFolder& operator=(const PluginFolder&) = delete;
  ~PluginFolder() { fs::remove_all(path_); }

  std::string GetPath() const { return path_.string(); }
  const std::vector<std::string>& GetFiles() const { return files_; }

 private:
  fs::path path_;
  std::vector<std::string> files_;
};

void BM_StartPlugins(benchmark::State& state) {
  const PluginFolder folder(static_cast<int>(state.range(0)));
  Measure(state, {Tool(), "--plugin-dir", folder.GetPath()}, 1);
}
BENCHMARK(BM_StartPlugins)->Arg(1)->Arg(10)->Arg(100)->Arg(1000)->UseManualTime();

void BM_StartPluginsPlainly(benchmark::State& state) {
  const PluginFolder folder(static_cast<int>(state.range(0)));
  std::vector<std::string> words = {KESTREL_PLAIN_LOADER};
  words.insert(words.end(), folder.GetFiles().begin(), folder.GetFiles().end());
  Measure(state, words, 0);
}
BENCHMARK(BM_StartPluginsPlainly)->Arg(1)->Arg(10)->Arg(100)->Arg(1000)->UseManualTime();

}  // namespace
}  // namespace Kestrel::Benchmarks
