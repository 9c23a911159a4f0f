// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <cstdlib>
#include <exception>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kestrel/Version.h"
#include "tools/console/Arguments.h"
#include "tools/console/Console.h"
#include "tools/isolation/IsolatedRun.h"
#include "tools/lint/Lint.h"
#include "tools/lint/Output.h"
#include "tools/lint/Rules.h"

namespace {

using Kestrel::Console::Console;
using Kestrel::Console::UsageError;
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
};

std::string ListRules() {
  std::string list;
  for (const Rule& rule : Kestrel::Lint::GetRules()) {
    list += std::string(rule.id) + " (" + WordOf(rule.severity) + ")\n";
  }
  return list;
}

const Rule& RuleNamed(const std::string& id) {
  const Rule* const rule = Kestrel::Lint::FindRule(id);
  if (rule == nullptr) {
    throw UsageError("there is no rule " + id);
  }
  return *rule;
}

std::string Explain(const Rule& rule) {
  return std::string(rule.id) + " (" + WordOf(rule.severity) + ")\n\n" + rule.explanation + "\n";
}

Writer WriterOf(const std::string& format) {
  constexpr std::pair<std::string_view, Writer> kWriters[] = {
      {"text", Kestrel::Lint::WriteText},
      {"json", Kestrel::Lint::WriteJson},
      {"sarif", Kestrel::Lint::WriteSarif},
  };
  for (const auto& [name, write] : kWriters) {
    if (name == format) {
      return write;
    }
  }
  throw UsageError("there is no format " + format);
}

void Apply(const std::string& option, const std::string& value, Arguments& arguments) {
  if (option.empty()) {
    arguments.paths.push_back(value);
  } else if (option == "--help") {
    arguments.answer = kUsage;
  } else if (option == "--version") {
    arguments.answer = "vexil-lint " KESTREL_VERSION_STRING "\n";
  } else if (option == "--rules") {
    arguments.answer = ListRules();
  } else if (option == "--explain") {
    arguments.answer = Explain(RuleNamed(value));
  } else if (option == "--suppress") {
    arguments.suppressed.insert(RuleNamed(value).id);
  } else {
    arguments.write = WriterOf(value);
  }
}

/// Throws UsageError.
Arguments ReadArguments(const std::vector<std::string>& words) {
  Arguments arguments;
  Kestrel::Console::ReadArguments(
      words, {{"--help", "--version", "--rules"}, {"--format", "--suppress", "--explain"}},
      [&](const std::string& option, const std::string& value) {
        Apply(option, value, arguments);
      });
  if (arguments.answer.empty() && arguments.paths.empty()) {
    throw UsageError("no file is named");
  }
  return arguments;
}

int Run(const std::vector<std::string>& words, const Console& console) {
  const Arguments arguments = ReadArguments(words);
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
    return Run({argv + 1, argv + argc}, console);
  } catch (const UsageError& error) {
    console.Complain(std::string(error.what()) + "; see vexil-lint --help");
    return kUsageError;
  } catch (const std::exception& error) {
    console.Complain(error.what());
    return kUsageError;
  }
}
