// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Does something bad while it is opened; KESTREL_CONSTRUCTOR is the name of the function that does
// it.

#include <kestrel/autocli/PluginEntryPoint.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace {

[[maybe_unused]] void Crash() { std::raise(SIGSEGV); }

[[maybe_unused]] void Exit() { std::exit(3); }

// Starts a second process, which leaves the process group. Writes the IDs of both processes to a
// file for the test.
void WriteNumbers() {
  std::FILE* const file = std::fopen(std::getenv("KESTREL_TEST_PROCESSES"), "w");
  const pid_t second = fork();
  if (second == 0) {
    setsid();
    while (true) {
      pause();
    }
  }
  std::fprintf(file, "%d %d\n", static_cast<int>(getpid()), static_cast<int>(second));
  std::fclose(file);
}

[[maybe_unused]] void Hang() {
  std::signal(SIGINT, SIG_IGN);
  std::signal(SIGTERM, SIG_IGN);
  WriteNumbers();
  while (true) {
    pause();
  }
}

// Closes the pipe to the parent but keeps running, so that the end of the pipe does not mean the
// end of the process.
[[maybe_unused]] void CloseAndHang() {
  for (int descriptor = 0; descriptor < 100; ++descriptor) {
    close(descriptor);
  }
  while (true) {
    pause();
  }
}

// Writes the line in KESTREL_TEST_NOISE to each open file descriptor from 3 to 19.
[[maybe_unused]] void Scribble() {
  const char* const noise = std::getenv("KESTREL_TEST_NOISE");
  const std::string line = std::string(noise == nullptr ? "nonsense" : noise) + "\n";
  for (int descriptor = 3; descriptor < 20; ++descriptor) {
    if (write(descriptor, line.data(), line.size()) < 0) {
      continue;
    }
  }
}

__attribute__((constructor)) void Construct() { KESTREL_CONSTRUCTOR(); }

}  // namespace

void AutoCli_RegisterNamespaces(std::shared_ptr<Kestrel::AutoCli::Namespace> root) {
  root->SubNamespace("constructed")->SetDescription("Of a plug-in that does something first.");
}
