// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// A value is examined by comparing two readings of the command line: one with the value, and one
// with a harmless byte that is not special to any shell. What comes from the template itself is in
// both.

#include "tools/lint/Injection.h"

#include <algorithm>
#include <cstddef>
#include <set>
#include <utility>

#include "kestrel/KestrelException.h"
#include "kestrel/autocli/ExtensionCommand.h"
#include "kestrel/callspec/Input.h"
#include "kestrel/callspec/ParameterConstraint.h"
#include "tools/lint/ValuePool.h"

namespace Kestrel::Lint {

using CallSpec::ParameterSpec;

namespace {

constexpr char kHarmless = '\3';
constexpr char kHarmlessOther = '\4';

bool Contains(const std::string& text, const std::string& what) {
  return text.find(what) != std::string::npos;
}

std::string Replaced(const std::string& text, const std::string& value) {
  std::string replaced;
  for (const char c : text) {
    replaced += c == kHarmless ? value : std::string(1, c);
  }
  return replaced;
}

std::string NameOf(const ShellCommand& command) { return command.words.front().text; }

std::set<std::string> NamesOf(const ShellReading& reading, const std::string& value) {
  std::set<std::string> names;
  for (const ShellCommand& command : reading.commands) {
    names.insert(Replaced(NameOf(command), value));
  }
  return names;
}

std::size_t CountWords(const ShellReading& reading) {
  std::size_t count = 0;
  for (const ShellCommand& command : reading.commands) {
    count += command.words.size();
  }
  return count;
}

// Counts the words before "--" that begin with "-", and the patterns that may be replaced by a file
// name that begins with "-".
std::size_t CountOptions(const ShellReading& reading) {
  std::size_t count = 0;
  for (const ShellCommand& command : reading.commands) {
    for (std::size_t i = 1; i < command.words.size() && command.words[i].text != "--"; ++i) {
      const ShellWord& word = command.words[i];
      const bool isOption = word.text.size() > 1 && word.text[0] == '-';
      count += isOption || word.mayBeOption ? 1 : 0;
      count += isOption && word.isPattern ? 1 : 0;  // it becomes several words
    }
  }
  return count;
}

bool HasPattern(const ShellReading& reading) {
  for (const ShellCommand& command : reading.commands) {
    for (const ShellWord& word : command.words) {
      if (word.isPattern) {
        return true;
      }
    }
  }
  return false;
}

std::string WithoutQuotes(const std::string& value) {
  return AutoCli::ExtensionCommand::SanitizeChar(value, '\'');
}

// Whether the words of `hostile` are those of `plain` with `value` in place of the harmless byte.
bool Arrives(const std::string& value, const ShellReading& plain, const ShellReading& hostile) {
  if (plain.commands.size() != hostile.commands.size()) {
    return false;
  }
  for (std::size_t i = 0; i < plain.commands.size(); ++i) {
    const auto& expected = plain.commands[i].words;
    const auto& words = hostile.commands[i].words;
    const auto isSame = [&value](const ShellWord& left, const ShellWord& right) {
      return Replaced(left.text, value) == right.text && !right.isPattern &&
             left.isHome == right.isHome;
    };
    if (expected.size() != words.size() ||
        !std::equal(expected.begin(), expected.end(), words.begin(), isSame)) {
      return false;
    }
  }
  return true;
}

std::string BaseName(const std::string& name) { return name.substr(name.rfind('/') + 1); }

// Returns the index of the argument that another interpreter runs as a program, as after "sh -c"; 0
// if there is none.
std::size_t FindProgram(const ShellCommand& command) {
  const std::string name = BaseName(NameOf(command));
  static const std::map<std::string, std::string> interpreters = {
      {"sh", "-c"},   {"bash", "-c"},   {"dash", "-c"},    {"ksh", "-c"},  {"zsh", "-c"},
      {"su", "-c"},   {"python", "-c"}, {"python3", "-c"}, {"perl", "-e"}, {"ruby", "-e"},
      {"node", "-e"}, {"sed", ""},      {"awk", ""},       {"gawk", ""},   {"mawk", ""},
      {"eval", "*"},  {"ssh", "*"}};
  const auto found = interpreters.find(name);
  if (found == interpreters.end()) {
    return 0;
  }
  for (std::size_t i = 1; i < command.words.size(); ++i) {
    const std::string& word = command.words[i].text;
    const bool isOption = !word.empty() && word[0] == '-';
    if (found->second == "*"    ? word.find(kHarmless) != std::string::npos
        : found->second.empty() ? !isOption
                                : command.words[i - 1].text == found->second) {
      return i;
    }
    if (found->second.empty() && (word == "-v" || word == "-F")) {
      ++i;
    }
  }
  return 0;
}

void FindProgram(const ShellReading& plain, Verdict& verdict) {
  for (const ShellCommand& command : plain.commands) {
    const std::size_t index = FindProgram(command);
    if (index != 0 && index < command.words.size() &&
        Contains(command.words[index].text, std::string(1, kHarmless))) {
      verdict.program = BaseName(NameOf(command));
    }
  }
}

}  // namespace

Injection::Injection(const std::string& execute, std::shared_ptr<CallSpec::InputSpec> input)
    : execute_(execute), input_(std::move(input)) {}

std::optional<std::string> Injection::MakeLine(const Values& values) const {
  const auto command = AutoCli::ExtensionCommand::New();
  command->SetInputSpec(input_);
  command->SetExecuteCommand(execute_);
  const auto given = CallSpec::Input::New();
  for (const auto& [name, list] : values) {
    given->AddParameter(name, list);
  }
  given->SetInputSpec(input_);
  try {
    return command->SubstituteInput(given, false);
  } catch (const KestrelException&) {
    return std::nullopt;
  }
}

std::vector<Injection::Values> Injection::MakeCalls(const std::string& name) const {
  Values all;
  Values required;
  for (const auto& parameter : input_->GetParameters()) {
    if (parameter->GetName() == name) {
      continue;
    }
    const std::string value =
        parameter->GetType() == CallSpec::Flag ? "" : std::string(1, kHarmlessOther);
    all[parameter->GetName()] = {value};
    if (parameter->IsRequired()) {
      required[parameter->GetName()] = {value};
    }
  }
  return all.size() == required.size() ? std::vector<Values>{all}
                                       : std::vector<Values>{all, required};
}

const ParameterSpec* Injection::Find(const std::string& name) const {
  for (const auto& parameter : input_->GetParameters()) {
    if (parameter->GetName() == name) {
      return parameter.get();
    }
  }
  return nullptr;
}

Verdict Injection::Judge(const std::string& name) const {
  Verdict verdict;
  if (const ParameterSpec* const parameter = Find(name)) {
    const std::vector<std::string> values = MakeHostileValues(*parameter);
    for (const Values& call : MakeCalls(name)) {
      for (const std::string& value : values) {
        JudgeCall(call, *parameter, value, verdict);
      }
    }
  }
  return verdict;
}

Verdict Injection::JudgeValue(const std::string& name, const std::string& value) const {
  Verdict verdict;
  if (const ParameterSpec* const parameter = Find(name)) {
    for (const Values& call : MakeCalls(name)) {
      JudgeCall(call, *parameter, value, verdict);
    }
  }
  return verdict;
}

void Injection::JudgeCall(const Values& call, const ParameterSpec& parameter,
                          const std::string& value, Verdict& verdict) const {
  const std::size_t most = parameter.AllowMultiple() ? 2 : 1;
  for (std::size_t count = 1; count <= most; ++count) {
    Values plain = call;
    Values hostile = call;
    plain[parameter.GetName()] = std::vector<std::string>(count, std::string(1, kHarmless));
    hostile[parameter.GetName()] = std::vector<std::string>(count, value);
    const std::optional<std::string> plainLine = MakeLine(plain);
    const std::optional<std::string> hostileLine = MakeLine(hostile);
    if (!plainLine || !hostileLine) {
      continue;
    }
    for (const Shell shell : {Shell::Dash, Shell::Bash}) {
      Compare(parameter, value, ReadShellLine(*plainLine, shell),
              ReadShellLine(*hostileLine, shell), verdict);
    }
  }
}

void Injection::Compare(const ParameterSpec& parameter, const std::string& value,
                        const ShellReading& plain, const ShellReading& hostile, Verdict& verdict) {
  if (!plain.isUnderstood || !plain.isCorrect) {
    verdict.isUnknown = true;
    return;
  }
  FindProgram(plain, verdict);
  const auto note = [&value](std::optional<std::string>& which) { which = which.value_or(value); };
  if (hostile.isUnderstood && !hostile.isCorrect) {
    note(verdict.isAltered);
  }
  // The descriptor contains the values of an enumeration, so a command that one of them names is
  // intended.
  const auto& constraint = parameter.GetConstraint();
  const bool isListed = constraint != nullptr && constraint->GetType() == CallSpec::StringEnum;
  const std::set<std::string> known = NamesOf(plain, isListed ? value : std::string(1, kHarmless));
  const std::set<std::string> names = NamesOf(hostile, std::string(1, kHarmless));
  const bool runsAnother = std::any_of(
      names.begin(), names.end(), [&](const std::string& each) { return known.count(each) == 0; });
  if (runsAnother) {
    note(verdict.runsCommand);
    return;
  }
  const bool expandsPattern = HasPattern(hostile) && !HasPattern(plain);
  const bool addsWord = CountWords(hostile) > CountWords(plain) || expandsPattern;
  const bool addsOption = CountOptions(hostile) > CountOptions(plain);
  if (addsWord) {
    note(verdict.addsWord);
  }
  if (addsOption && !isListed) {
    note(verdict.addsOption);
  }
  if (!hostile.isUnderstood || !hostile.isCorrect || Arrives(value, plain, hostile)) {
    return;
  }
  note(Arrives(WithoutQuotes(value), plain, hostile) ? verdict.losesQuotes : verdict.isAltered);
}

}  // namespace Kestrel::Lint
