// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <chrono>
#include <cstdlib>
#include <exception>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "kestrel/Version.h"
#include "kestrel/autocli/CliDispatcher.h"
#include "kestrel/autocli/DisplayContext.h"
#include "kestrel/callspec/Output.h"
#include "tools/console/Console.h"
#include "tools/doctor/Doctor.h"
#include "tools/doctor/PluginTable.h"
#include "tools/isolation/IsolatedRun.h"
#include "vexil/formats/FormatsPlugin.h"

namespace {

using Kestrel::AutoCli::CliDispatcher;
using Kestrel::AutoCli::FormatParameters;
using Kestrel::Console::Console;

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
  std::string error;
};

/// Reads the arguments from left to right.
class ArgumentReader {
 public:
  ArgumentReader(int argc, char** argv) : words_(argv + 1, argv + argc) {}

  Arguments Run() {
    for (; next_ < words_.size() && arguments_.error.empty(); ++next_) {
      Read(words_[next_]);
    }
    return std::move(arguments_);
  }

 private:
  void Read(const std::string& word) {
    if (areOptionsOver_ || word.size() < 2 || word[0] != '-') {
      arguments_.paths.push_back(word);
    } else if (word == "--") {
      areOptionsOver_ = true;
    } else if (word == "--help") {
      arguments_.answer = kUsage;
    } else if (word == "--version") {
      arguments_.answer = "vexil-doctor " KESTREL_VERSION_STRING "\n";
    } else if (word == "--formatter" || word.rfind("--formatter=", 0) == 0) {
      ReadFormatter(word);
    } else {
      arguments_.error = "there is no option " + word;
    }
  }

  void ReadFormatter(const std::string& word) {
    const std::size_t equals = word.find('=');
    if (equals != std::string::npos) {
      arguments_.formatter = word.substr(equals + 1);
    } else {
      arguments_.formatter = next_ + 1 < words_.size() ? words_[++next_] : "";
    }
    if (arguments_.formatter.empty()) {
      arguments_.error = "--formatter has no value";
    }
  }

  const std::vector<std::string> words_;
  std::size_t next_ = 0;
  bool areOptionsOver_ = false;
  Arguments arguments_;
};

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

int Run(int argc, char** argv, const Console& console) {
  const Arguments arguments = ArgumentReader(argc, argv).Run();
  CliDispatcher dispatcher;
  dispatcher.RegisterPlugin(std::make_shared<Kestrel::Formats::FormatsPlugin>());
  std::string error = arguments.error;
  if (!arguments.formatter.empty() && !dispatcher.HasFormatter(arguments.formatter)) {
    error = "there is no formatter " + arguments.formatter;
  }
  if (!error.empty()) {
    console.Complain(error + "; see vexil-doctor --help");
    return kCouldNotRun;
  }
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
    return Run(argc, argv, console);
  } catch (const std::exception& error) {
    console.Complain(error.what());
    return kCouldNotRun;
  }
}
