// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <ios>
#include <iostream>

#include "kestrel/autocli/CliDispatcher.h"

namespace {

// Through the C stream: a plug-in may have set a width on std::cerr or made it throw.
void Report(const char* message) { std::fprintf(stderr, "%s\n", message); }

// Whether everything printed so far has reached standard output.
bool FlushOutput() {
  // A plug-in may have made the stream throw; on the way out nothing would catch that.
  std::cout.exceptions(std::ios_base::goodbit);
  std::cout.flush();
  return std::fflush(stdout) == 0 && std::ferror(stdout) == 0 && std::cout.good();
}

// A closed standard stream would pass its number to the first file or socket that is opened, and
// with it what was meant for the stream. Opened the wrong way round, the descriptor stays useless.
void OccupyStandardDescriptors() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(descriptor, F_GETFD) == -1) {
      open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
  }
}

// Runs on every way out, whoever calls exit: a caller must not take truncated output for all of it.
void CheckStandardOutput() {
  if (!FlushOutput()) {
    Report("Unable to write to standard output");
    _exit(EXIT_FAILURE);
  }
}

}  // namespace

int main(int argc, char** argv) {
  OccupyStandardDescriptors();
  std::atexit(CheckStandardOutput);
  // Outside the try block: an exception may be of a class whose code a plug-in brought along.
  Kestrel::AutoCli::CliDispatcher dispatcher;
  try {
    dispatcher.AddDefaultDirectories();
    dispatcher.HandleArgvInput(argc, argv);
  } catch (const std::exception& error) {
    FlushOutput();  // before the message, so that both appear in order
    Report(error.what());
  }
  return EXIT_FAILURE;
}
