// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <cxxabi.h>
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <ios>
#include <iostream>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>

#include "autocli/text/TerminalText.h"
#include "kestrel/Version.h"
#include "kestrel/autocli/CliDispatcher.h"
#include "kestrel/autocli/OptionParser.h"
#include "vexil/Advice.h"
#include "vexil/DeclaredResult.h"
#include "vexil/formats/FormatsPlugin.h"

namespace {

// Uses the C stream, because a plug-in may have set a width on std::cerr or made it throw.
void Report(const char* message) {
  const std::string shown = Kestrel::AutoCli::MessageFor(STDERR_FILENO, message);
  std::fprintf(stderr, "%s\n", shown.c_str());
}

// Ends the tool if memory runs out where this cannot be caught: in the initialisers of a library,
// and while an exception is thrown. Every other failure aborts.
[[noreturn]] void Terminate() {
  try {
    if (const std::exception_ptr failure = std::current_exception()) {
      std::rethrow_exception(failure);
    }
  } catch (const std::bad_alloc&) {
  } catch (...) {
    std::abort();
  }
  constexpr std::string_view kMessage = "Out of memory\n";
  if (write(STDERR_FILENO, kMessage.data(), kMessage.size()) < 0) {
    _exit(EXIT_FAILURE);
  }
  _exit(EXIT_FAILURE);
}

void HandleTermination(int, char**, char**) { std::set_terminate(Terminate); }

// Runs before the initialisers of all libraries.
__attribute__((section(".preinit_array"), used)) void (*const kFirst)(int, char**,
                                                                      char**) = HandleTermination;

// Whether everything printed so far has reached standard output.
bool FlushOutput() {
  // A plug-in may have made the stream throw. At exit, nothing would catch the exception.
  std::cout.exceptions(std::ios_base::goodbit);
  std::cout.flush();
  return std::fflush(stdout) == 0 && std::ferror(stdout) == 0 && std::cout.good();
}

// If a standard stream is closed, the next file to be opened gets its descriptor, and output for
// the stream would go to that file. So a closed stream is opened in the wrong direction: every
// access fails.
void OccupyStandardDescriptors() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(descriptor, F_GETFD) == -1) {
      open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
  }
}

// The caller may have left SIGCHLD ignored, which discards the status of every child, or signals
// blocked, which could then not end the tool.
void ResetSignals() {
  std::signal(SIGCHLD, SIG_DFL);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
}

// Runs whenever the process exits: incomplete output must not look like success.
void CheckStandardOutput() {
  if (!FlushOutput()) {
    Report("Unable to write to standard output");
    _exit(EXIT_FAILURE);
  }
}

// Together with other words, --version is an option that the dispatcher does not know.
bool IsVersionWanted(int argc, char** argv) {
  return argc == 2 && std::string_view(argv[1]) == "--version";
}

struct Call {
  const std::optional<Kestrel::AutoCli::CliDispatcher>& dispatcher;
  int argc;
  char** argv;
};

[[noreturn]] void HandleArguments(Kestrel::AutoCli::CliDispatcher& dispatcher, int argc,
                                  char** argv) {
  Kestrel::AutoCli::OptionParser parser;
  parser.ParseArgv(argc, argv);
  const bool isDone = dispatcher.HandleOptions(parser, true);
  FlushOutput();
  Kestrel::Vexil::PrintHints(dispatcher, argc, argv);
  std::exit(isDone ? EXIT_SUCCESS : EXIT_FAILURE);
}

}  // namespace

int main(int argc, char** argv) {
  OccupyStandardDescriptors();
  ResetSignals();
  std::atexit(CheckStandardOutput);
  if (IsVersionWanted(argc, argv)) {
    std::puts("vexil " KESTREL_VERSION_STRING);
    return EXIT_SUCCESS;
  }
  // Outside the try block, so that a plug-in that defines the class of an exception stays loaded
  // while it is handled.
  std::optional<Kestrel::AutoCli::CliDispatcher> dispatcher;
  const Call call = {dispatcher, argc, argv};
  try {
    dispatcher.emplace();
    dispatcher->RegisterPlugin(std::make_shared<Kestrel::Formats::FormatsPlugin>([&call] {
      return Kestrel::Vexil::FindDeclaredResult(*call.dispatcher, call.argc, call.argv);
    }));
    dispatcher->AddDefaultDirectories();
    HandleArguments(*dispatcher, argc, argv);
  } catch (const std::bad_alloc&) {
    FlushOutput();
    Report("Out of memory");
  } catch (const std::exception& error) {
    FlushOutput();  // first, so that output and message appear in order
    Report(error.what());
    if (dispatcher.has_value()) {
      Kestrel::Vexil::PrintSuggestions(*dispatcher, argc, argv, error.what());
      Kestrel::Vexil::PrintHints(*dispatcher, argc, argv);
    }
  } catch (const abi::__forced_unwind&) {
    throw;  // by pthread_exit, which has to pass
  } catch (...) {
    FlushOutput();
    Report("A plug-in threw an exception that is not a std::exception");
  }
  return EXIT_FAILURE;
}
