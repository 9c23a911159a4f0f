// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Runs a fuzz target on files. Each argument is a file, or a folder that is searched with its
// subfolders; hidden files in folders are skipped. The exit status is 1 if a file cannot be read or
// if there are no files.

#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

// The path of the current input, for the signal handler.
const char* runningInput = "";

// A signal handler: must not allocate.
void NameRunningInput(int signal) {
  constexpr char kPrefix[] = "Failed on the input ";
  [[maybe_unused]] ssize_t written = write(STDERR_FILENO, kPrefix, sizeof kPrefix - 1);
  written = write(STDERR_FILENO, runningInput, std::strlen(runningInput));
  written = write(STDERR_FILENO, "\n", 1);
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

std::set<fs::path> FindInputs(int argc, char** argv) {
  std::set<fs::path> inputs;
  for (int i = 1; i < argc; ++i) {
    if (!fs::is_directory(argv[i])) {
      inputs.insert(argv[i]);
      continue;
    }
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(argv[i])) {
      if (!entry.is_directory() && entry.path().filename().string().front() != '.') {
        inputs.insert(entry.path());
      }
    }
  }
  return inputs;
}

bool Replay(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  if (!file.is_open() || file.bad()) {
    std::fprintf(stderr, "Unable to read %s\n", path.c_str());
    return false;
  }
  runningInput = path.c_str();
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  runningInput = "";
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  for (const int signal : {SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL}) {
    std::signal(signal, NameRunningInput);
  }
  bool wereAllRead = true;
  const std::set<fs::path> inputs = FindInputs(argc, argv);
  for (const fs::path& input : inputs) {
    wereAllRead = Replay(input.string()) && wereAllRead;
  }
  std::printf("%zu inputs replayed\n", inputs.size());
  return wereAllRead && !inputs.empty() ? 0 : 1;
}
