// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <ios>
#include <iostream>
#include <string>

#include "kestrel/autocli/CliDispatcher.h"

namespace {

// Unpadded, whatever width somebody left on the stream.
void Report(std::string line) {
  line += '\n';
  std::cerr.write(line.data(), static_cast<std::streamsize>(line.size()));
}

// A plug-in may have made the streams throw; on the way out nobody is left to catch that, and what
// goes to the one flushes the other.
void ForbidExceptions() {
  std::cout.exceptions(std::ios_base::goodbit);
  std::cerr.exceptions(std::ios_base::goodbit);
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

// The last word on every way out, whoever calls exit: a caller must not take cut output for all.
void CheckStandardOutput() {
  ForbidExceptions();
  std::cout.flush();
  const bool isWritten = std::fflush(stdout) == 0 && std::ferror(stdout) == 0 && std::cout.good();
  if (!isWritten) {
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
    ForbidExceptions();
    Report(error.what());
  }
  return EXIT_FAILURE;
}
