// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <cstdlib>
#include <exception>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "kestrel/Version.h"
#include "tools/console/Console.h"
#include "tools/isolation/IsolatedRun.h"
#include "tools/lint/Lint.h"
#include "tools/lint/Output.h"
#include "tools/lint/Rules.h"

namespace {

using Kestrel::Console::Console;
using Kestrel::Lint::Finding;
using Kestrel::Lint::Rule;

constexpr int kUsageError = 2;

constexpr const char* kUsage =
    "vexil-lint [OPTION]... FILE|FOLDER...\n"
    "\n"
    "Examines plug-ins of vexil: descriptors and shared objects.\n"
    "\n"
    "  FILE             a descriptor (.xml) or a shared object (.so)\n"
    "  FOLDER           the plug-ins in it\n"
    "  --format FORMAT  text, json or sarif; the default is text\n"
    "  --suppress RULE  drop the findings of a rule; may be repeated\n"
    "  --explain RULE   explain a rule\n"
    "  --rules          list the rules\n"
    "  --help           show this message\n"
    "  --version        show the name and the version of the program\n"
    "\n"
    "The status is 0 without errors and warnings, 1 with some, 2 if something cannot be read.\n";

using Writer = std::string (*)(const std::vector<Finding>&);

struct Arguments {
  std::vector<std::string> paths;
  std::set<std::string> suppressed;
  Writer write = Kestrel::Lint::WriteText;
  std::string answer;  // what an option such as --help prints instead
  std::string error;
};

std::string ListRules() {
  std::string list;
  for (const Rule& rule : Kestrel::Lint::GetRules()) {
    list += std::string(rule.id) + " (" + WordOf(rule.severity) + ")\n";
  }
  return list;
}

/// Reads the arguments from left to right.
class ArgumentReader {
 public:
  ArgumentReader(int argc, char** argv) : words_(argv + 1, argv + argc) {}

  Arguments Run() {
    for (; next_ < words_.size() && arguments_.error.empty(); ++next_) {
      Read(words_[next_]);
    }
    if (arguments_.error.empty() && arguments_.answer.empty() && arguments_.paths.empty()) {
      arguments_.error = "no file is named";
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
      arguments_.answer = "vexil-lint " KESTREL_VERSION_STRING "\n";
    } else if (word == "--rules") {
      arguments_.answer = ListRules();
    } else {
      ReadOptionWithValue(word);
    }
  }

  void ReadOptionWithValue(const std::string& word) {
    const std::size_t equals = word.find('=');
    const std::string option = word.substr(0, equals);
    if (option != "--format" && option != "--suppress" && option != "--explain") {
      arguments_.error = "there is no option " + option;
    } else if (equals == std::string::npos && next_ + 1 == words_.size()) {
      arguments_.error = option + " has no value";
    } else {
      Apply(option, equals == std::string::npos ? words_[++next_] : word.substr(equals + 1));
    }
  }

  void Apply(const std::string& option, const std::string& value) {
    if (option == "--format") {
      ChooseFormat(value);
      return;
    }
    const Rule* const rule = Kestrel::Lint::FindRule(value);
    if (rule == nullptr) {
      arguments_.error = "there is no rule " + value;
    } else if (option == "--suppress") {
      arguments_.suppressed.insert(value);
    } else {
      arguments_.answer = std::string(rule->id) + " (" + WordOf(rule->severity) + ")\n\n" +
                          rule->explanation + "\n";
    }
  }

  void ChooseFormat(const std::string& value) {
    if (value == "json") {
      arguments_.write = Kestrel::Lint::WriteJson;
    } else if (value == "sarif") {
      arguments_.write = Kestrel::Lint::WriteSarif;
    } else if (value != "text") {
      arguments_.error = "there is no format " + value;
    }
  }

  const std::vector<std::string> words_;
  std::size_t next_ = 0;
  bool areOptionsOver_ = false;
  Arguments arguments_;
};

int Run(int argc, char** argv, const Console& console) {
  const Arguments arguments = ArgumentReader(argc, argv).Run();
  if (!arguments.error.empty()) {
    console.Complain(arguments.error + "; see vexil-lint --help");
    return kUsageError;
  }
  if (!arguments.answer.empty()) {
    return console.Print(arguments.answer) ? EXIT_SUCCESS : kUsageError;
  }
  Kestrel::Isolation::KillOnInterrupt();
  const Kestrel::Lint::LintResult result =
      Kestrel::Lint::LintFiles(arguments.paths, arguments.suppressed);
  for (const std::string& message : result.unreadable) {
    console.Complain(message);
  }
  return console.Print(arguments.write(result.findings)) ? StatusOf(result) : kUsageError;
}

}  // namespace

int main(int argc, char** argv) {
  const Console console("vexil-lint");
  try {
    return Run(argc, argv, console);
  } catch (const std::exception& error) {
    console.Complain(error.what());
    return kUsageError;
  }
}
