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
#include <vector>

#include "autocli/process/ProcessRights.h"
#include "kestrel/Version.h"
#include "kestrel/autocli/CliDispatcher.h"
#include "kestrel/autocli/OptionParser.h"
#include "vexil/Advice.h"
#include "vexil/ForeignRights.h"
#include "vexil/Session.h"
#include "vexil/TerminalFormatter.h"

namespace {

// Ends the tool if memory runs out where this cannot be caught: in the initialisers of a library,
// and while an exception is thrown (there is no current one then). Any other exception aborts.
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

// If a standard stream is closed, the next file to be opened gets its file descriptor, and output
// for the stream would go to that file. So a closed stream is opened in the wrong direction, and
// every access to it fails.
void OccupyStandardDescriptors() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(descriptor, F_GETFD) == -1) {
      open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
  }
}

// The caller may have left SIGCHLD ignored, so that the status of every child is discarded. It may
// also have left signals blocked, so that they cannot end the tool.
void ResetSignals() {
  std::signal(SIGCHLD, SIG_DFL);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
}

// Runs whenever the process exits normally: incomplete output must not look like success.
void CheckStandardOutput() {
  if (!FlushOutput()) {
    Kestrel::Vexil::PrintMessage("Unable to write to standard output");
    _exit(EXIT_FAILURE);
  }
}

// If the process has more rights than its user, the user may not choose what the process reads.
void RestrictUser(int argc, char** argv) {
  Kestrel::Vexil::CleanEnvironment();
  Kestrel::AutoCli::OptionParser parser;
  parser.ParseArgv(argc, argv);
  const std::vector<std::string> refusals = Kestrel::Vexil::RefuseOptions(parser);
  if (refusals.empty()) {
    return;
  }
  Kestrel::Vexil::PrintMessage("Errors: ");
  for (const std::string& refusal : refusals) {
    Kestrel::Vexil::PrintMessage(refusal);
  }
  std::exit(EXIT_FAILURE);
}

// Together with other words, --version is an option that the dispatcher does not know.
bool IsVersionWanted(int argc, char** argv) {
  return argc == 2 && std::string_view(argv[1]) == "--version";
}

struct Tool {
  Kestrel::AutoCli::CliDispatcher dispatcher;
  Kestrel::Vexil::Session session{dispatcher};
};

[[noreturn]] void HandleArguments(Tool& tool, int argc, char** argv) {
  tool.dispatcher.RegisterPlugin(std::shared_ptr<Kestrel::Vexil::ToolFormats>(
      new Kestrel::Vexil::ToolFormats(tool.dispatcher, tool.session)));
  tool.dispatcher.AddDefaultDirectories();
  const bool isDone = tool.session.HandleArguments(argc, argv);
  std::exit(isDone ? EXIT_SUCCESS : EXIT_FAILURE);
}

}  // namespace

int main(int argc, char** argv) {
  OccupyStandardDescriptors();
  ResetSignals();
  std::atexit(CheckStandardOutput);
  if (Kestrel::AutoCli::HasForeignRights(Kestrel::AutoCli::GetProcessRights())) {
    RestrictUser(argc, argv);
  }
  if (IsVersionWanted(argc, argv)) {
    std::puts("vexil " KESTREL_VERSION_STRING);
    return EXIT_SUCCESS;
  }
  // Outside of the try block, so that the plug-in that defines the class of an exception stays
  // loaded.
  std::optional<Tool> tool;
  try {
    HandleArguments(tool.emplace(), argc, argv);
  } catch (const std::bad_alloc&) {
    FlushOutput();
    Kestrel::Vexil::PrintMessage("Out of memory");
  } catch (const std::exception& error) {
    FlushOutput();  // first, so that output and message appear in order
    Kestrel::Vexil::PrintMessage(error.what());
    if (tool.has_value()) {
      Kestrel::Vexil::PrintSuggestions(tool->dispatcher, tool->session.GetWords(), error.what());
      Kestrel::Vexil::PrintHints(tool->dispatcher, tool->session.GetWords());
    }
  } catch (const abi::__forced_unwind&) {
    throw;  // thrown by pthread_exit, and has to pass
  } catch (...) {
    FlushOutput();
    Kestrel::Vexil::PrintMessage("A plug-in threw an exception that is not a std::exception");
  }
  return EXIT_FAILURE;
}
