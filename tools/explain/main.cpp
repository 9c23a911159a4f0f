// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "autocli/text/TerminalText.h"
#include "kestrel/Version.h"
#include "kestrel/autocli/CliDispatcher.h"
#include "tools/console/Console.h"
#include "tools/explain/Explain.h"
#include "tools/explain/WriteReport.h"
#include "vexil/CommandLine.h"
#include "vexil/formats/FormatsPlugin.h"

namespace {

using Kestrel::AutoCli::CliDispatcher;
using Kestrel::Console::Console;
using Kestrel::Explain::Explanation;

constexpr int kNotValid = 1;
constexpr int kCouldNotRun = 2;

constexpr const char* kUsage =
    "vexil-explain [--shell-text | --shell-input] [dispatcher options] PATH... PARAMETERS\n"
    "\n"
    "Reports what vexil would do with the same arguments. Nothing runs.\n"
    "\n"
    "  --shell-text   only print the text that the shell would get, byte for byte\n"
    "  --shell-input  only print the standard input of the shell, byte for byte\n"
    "  --help         show this message\n"
    "  --version      show the name and the version of the program\n"
    "\n"
    "All other options are those of vexil. The status is 0 if the arguments are valid, 1 if not,\n"
    "2 if they cannot be explained.\n";

/// Removes the first argument if it is an option that vexil does not have. Returns the option, or
/// an empty string.
std::string TakeOwnOption(std::vector<std::string>& arguments) {
  std::string option;
  if (!arguments.empty() && (arguments[0] == "--shell-text" || arguments[0] == "--shell-input")) {
    option = arguments[0];
    arguments.erase(arguments.begin());
  }
  return option;
}

bool IsHelpWanted(const std::vector<std::string>& arguments) {
  for (const auto& option : Kestrel::Vexil::SplitCommandLine(arguments).dispatcherOptions) {
    if (option.name == "help" || option.name == "h") {
      return true;
    }
  }
  return false;
}

int PrintShell(const Explanation& explanation, bool isInput, const Console& console) {
  if (!explanation.errors.empty()) {
    for (const std::string& error : explanation.errors) {
      console.Complain(error);
    }
    return kNotValid;
  }
  if (!explanation.shell.has_value()) {
    console.Complain("no shell would be started");
    return kCouldNotRun;
  }
  const std::string& text =
      isInput ? explanation.shell->standardInput : explanation.shell->commandLine;
  return console.Print(text) ? EXIT_SUCCESS : kCouldNotRun;
}

int Run(std::vector<std::string> arguments, std::optional<CliDispatcher>& dispatcher,
        const Console& console) {
  const std::string own = TakeOwnOption(arguments);
  if (IsHelpWanted(arguments)) {
    return console.Print(kUsage) ? EXIT_SUCCESS : kCouldNotRun;
  }
  if (arguments == std::vector<std::string>{"--version"}) {
    return console.Print("vexil-explain " KESTREL_VERSION_STRING "\n") ? EXIT_SUCCESS
                                                                       : kCouldNotRun;
  }
  if (arguments.empty()) {
    console.Complain("no command line is given; see vexil-explain --help");
    return kCouldNotRun;
  }
  dispatcher.emplace();
  dispatcher->RegisterPlugin(std::make_shared<Kestrel::Formats::FormatsPlugin>());
  dispatcher->AddDefaultDirectories();
  const Explanation explanation = Kestrel::Explain::ExplainLine(*dispatcher, arguments);
  if (!own.empty()) {
    return PrintShell(explanation, own == "--shell-input", console);
  }
  // The report contains words of the user, which could control a terminal.
  if (!console.Print(Kestrel::AutoCli::MessageFor(STDOUT_FILENO, WriteReport(explanation)))) {
    return kCouldNotRun;
  }
  return explanation.errors.empty() ? EXIT_SUCCESS : kNotValid;
}

}  // namespace

int main(int argc, char** argv) {
  const Console console("vexil-explain");
  // Outside of the try block, so that the plug-in that defines the class of an exception stays
  // loaded.
  std::optional<CliDispatcher> dispatcher;
  try {
    return Run({argv + 1, argv + argc}, dispatcher, console);
  } catch (const std::exception& error) {
    console.Complain(error.what());
  } catch (...) {
    console.Complain("a plug-in threw an exception that is not a std::exception");
  }
  return kCouldNotRun;
}
