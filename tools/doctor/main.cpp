// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <chrono>
#include <cstdlib>
#include <exception>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "kestrel/Version.h"
#include "kestrel/autocli/CliDispatcher.h"
#include "kestrel/autocli/DisplayContext.h"
#include "kestrel/callspec/Output.h"
#include "tools/console/Arguments.h"
#include "tools/console/Console.h"
#include "tools/doctor/Doctor.h"
#include "tools/doctor/PluginTable.h"
#include "tools/isolation/IsolatedRun.h"
#include "vexil/formats/FormatsPlugin.h"

namespace {

using Kestrel::AutoCli::CliDispatcher;
using Kestrel::AutoCli::FormatParameters;
using Kestrel::Console::Console;
using Kestrel::Console::UsageError;

constexpr int kCouldNotRun = 2;
constexpr std::chrono::milliseconds kPatience(2000);

constexpr const char* kUsage =
    "vexil-doctor [OPTION]... [FOLDER|FILE]...\n"
    "\n"
    "Loads every plug-in of vexil in a process of its own, and lists which of them work.\n"
    "\n"
    "  FOLDER            the plug-ins in it; the default is the folder of the tool\n"
    "  FILE              a descriptor (.xml) or a shared object (.so)\n"
    "  --formatter NAME  print the list with this formatter; the default is table\n"
    "  --help            show this message\n"
    "  --version         show the name and the version of the program\n"
    "\n"
    "The status is 0 if all plug-ins work, 1 if not, 2 if something cannot be read.\n";

struct Arguments {
  std::vector<std::string> paths;
  std::string formatter;
  std::string answer;  // what an option such as --help prints instead
};

/// Throws UsageError.
Arguments ReadArguments(const std::vector<std::string>& words, const CliDispatcher& dispatcher) {
  Arguments arguments;
  Kestrel::Console::ReadArguments(
      words, {{"--help", "--version"}, {"--formatter"}},
      [&](const std::string& option, const std::string& value) {
        if (option.empty()) {
          arguments.paths.push_back(value);
        } else if (option == "--help") {
          arguments.answer = kUsage;
        } else if (option == "--version") {
          arguments.answer = "vexil-doctor " KESTREL_VERSION_STRING "\n";
        } else if (dispatcher.HasFormatter(value)) {
          arguments.formatter = value;
        } else {
          throw UsageError(value.empty() ? option + " has no value"
                                         : "there is no formatter " + value);
        }
      });
  return arguments;
}

bool Print(CliDispatcher& dispatcher, const std::string& formatter,
           const Kestrel::Doctor::DoctorResult& result, const Console& console) {
  const auto output = Kestrel::CallSpec::Output::New();
  output->SetRootObject(Kestrel::Doctor::MakeTable(result.plugins));
  FormatParameters format = Kestrel::Doctor::MakeFormat(formatter);
  Kestrel::AutoCli::DisplayContext display;
  dispatcher.GetDisplayContext(display);
  std::ostringstream list;
  dispatcher.FormatOutput(output, format, display, list);
  for (const std::string& error : output->GetErrors()) {
    console.Complain(error);
  }
  return console.Print(list.str()) && !output->HasError();
}

int Run(const std::vector<std::string>& words, const Console& console) {
  CliDispatcher dispatcher;
  dispatcher.RegisterPlugin(std::make_shared<Kestrel::Formats::FormatsPlugin>());
  const Arguments arguments = ReadArguments(words, dispatcher);
  if (!arguments.answer.empty()) {
    return console.Print(arguments.answer) ? EXIT_SUCCESS : kCouldNotRun;
  }
  Kestrel::Isolation::KillOnInterrupt();
  const Kestrel::Doctor::DoctorResult result =
      Kestrel::Doctor::ExaminePlugins(arguments.paths, kPatience);
  for (const std::string& message : result.unreadable) {
    console.Complain(message);
  }
  return Print(dispatcher, arguments.formatter, result, console) ? StatusOf(result) : kCouldNotRun;
}

}  // namespace

int main(int argc, char** argv) {
  const Console console("vexil-doctor");
  try {
    return Run({argv + 1, argv + argc}, console);
  } catch (const UsageError& error) {
    console.Complain(std::string(error.what()) + "; see vexil-doctor --help");
    return kCouldNotRun;
  } catch (const std::exception& error) {
    console.Complain(error.what());
    return kCouldNotRun;
  }
}
