// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// lint_campaign WORDS COUNT [SEED [TEMPLATE [VALUE]]]: compares what vexil-lint says about values
// in templates with what dash and bash do.
//
// Inserts COUNT values into random templates and runs each command line in a scratch folder.
// vexil-lint and the shells must agree on three questions: whether a command runs that the template
// does not contain, whether there are more words than with a harmless value, and whether there are
// more options. WORDS is a program that records its arguments. Prints each difference; the status
// is 1 if there was one.
//
// With TEMPLATE, inserts all values into this template, without a constraint. With VALUE, inserts
// only this value, and prints what each shell does.

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include "kestrel/callspec/InputSpec.h"
#include "kestrel/callspec/Output.h"
#include "kestrel/callspec/ParameterConstraint.h"
#include "kestrel/callspec/ParameterSpec.h"
#include "support/ScopedTempDir.h"
#include "tools/lint/FileReport.h"
#include "tools/lint/Injection.h"
#include "tools/lint/ValuePool.h"

namespace {

using Kestrel::CallSpec::InputSpec;
using Kestrel::CallSpec::Output;
using Kestrel::CallSpec::ParameterConstraint;
using Kestrel::CallSpec::ParameterSpec;
using Kestrel::CallSpec::ParameterType;
using Kestrel::Lint::Injection;
using Kestrel::Lint::Quote;
using Kestrel::Lint::Verdict;
using Kestrel::Testing::ScopedTempDir;

namespace fs = std::filesystem;

constexpr const char* kHarmless = "\3";
constexpr std::size_t kMaxValuesOfTemplate = 40;

struct Observation {
  bool runsCommand = false;
  std::size_t words = 0;
  std::size_t options = 0;
  std::vector<std::string> all;
};

/// How a command line is run. A line with "||" is also run with a program `words` that fails,
/// because a shell runs a command after "||" only if the command before it fails.
struct Condition {
  std::string shell;
  bool doWordsFail = false;
  std::size_t count = 1;  // the number of values

  bool operator<(const Condition& other) const {
    return std::tie(shell, doWordsFail, count) <
           std::tie(other.shell, other.doWordsFail, other.count);
  }
};

/// Runs command lines in a folder that is empty at first. If there are patterns among the words of
/// a line, creates files that match them, and runs the line again.
class Laboratory {
 public:
  explicit Laboratory(const std::string& wordsProgram) {
    fs::create_directory(scratch_.GetPath("bin"));
    for (const char* name : {"words", "canary"}) {
      fs::create_symlink(wordsProgram, scratch_.GetPath("bin") + "/" + name);
    }
  }

  Observation Run(const Condition& condition, const std::string& line) {
    fs::remove_all(scratch_.GetPath("work"));
    fs::create_directory(scratch_.GetPath("work"));
    Observation seen = RunOnce(condition, line);
    if (CreateMatches(seen.all)) {
      const Observation again = RunOnce(condition, line);
      seen.words = std::max(seen.words, again.words);
      seen.options = std::max(seen.options, again.options);
      seen.runsCommand = seen.runsCommand || again.runsCommand;
    }
    return seen;
  }

 private:
  Observation RunOnce(const Condition& condition, const std::string& line) {
    fs::remove(scratch_.GetPath("words"));
    Start(condition, line);
    return Read();
  }

  // Runs the line. Waits for the shell and for the commands that it leaves in the background: they
  // hold one end of a pipe open until they end.
  void Start(const Condition& condition, const std::string& line) {
    int ends[2];
    if (pipe(ends) != 0) {
      std::abort();
    }
    const pid_t id = fork();
    if (id == 0) {
      close(ends[0]);
      setenv("PATH", scratch_.GetPath("bin").c_str(), 1);
      setenv("LINT_WORDS", scratch_.GetPath("words").c_str(), 1);
      setenv("LINT_STATUS", condition.doWordsFail ? "1" : "0", 1);
      setenv("HOME", "/", 1);
      const int nothing = open("/dev/null", O_RDWR);
      const int errors =
          open(scratch_.GetPath("errors").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
      dup2(nothing, STDIN_FILENO);
      dup2(nothing, STDOUT_FILENO);
      dup2(errors, STDERR_FILENO);
      if (chdir(scratch_.GetPath("work").c_str()) == 0) {
        execl(condition.shell.c_str(), "sh", "-c", line.c_str(), nullptr);
      }
      _exit(126);
    }
    close(ends[1]);
    char byte = 0;
    while (read(ends[0], &byte, 1) > 0) {
    }
    close(ends[0]);
    int status = 0;
    waitpid(id, &status, 0);
  }

  Observation Read() const {
    Observation seen;
    const std::string errors = scratch_.Read("errors");
    // The value changed the name of a command if the shell did not find a command, if the name was
    // empty, or if it was "[".
    seen.runsCommand = errors.find("not found") != std::string::npos ||
                       errors.find("Permission denied") != std::string::npos ||
                       errors.find("[: missing") != std::string::npos;
    const std::string text = scratch_.Read("words");
    std::vector<std::string> words;
    for (std::size_t begin = 0; begin < text.size();) {
      const std::size_t end = text.find('\0', begin);
      words.push_back(text.substr(begin, end - begin));
      begin = end + 1;
    }
    for (std::size_t i = 0; i < words.size();) {
      const std::size_t count = std::stoul(words[i]);
      Count(std::vector<std::string>(words.begin() + static_cast<std::ptrdiff_t>(i) + 1,
                                     words.begin() + static_cast<std::ptrdiff_t>(i + 1 + count)),
            seen);
      i += count + 1;
    }
    return seen;
  }

  static void Count(const std::vector<std::string>& words, Observation& seen) {
    seen.runsCommand = seen.runsCommand || words[0] != "words";
    seen.words += words.size();
    seen.all.insert(seen.all.end(), words.begin(), words.end());
    for (std::size_t i = 1; i < words.size() && words[i] != "--"; ++i) {
      seen.options += words[i].size() > 1 && words[i][0] == '-' ? 1 : 0;
    }
  }

  // The shell leaves a pattern unchanged if nothing matches, so matching files are created.
  bool CreateMatches(const std::vector<std::string>& words) {
    bool isCreated = false;
    for (const std::string& word : words) {
      if (word.find_first_of("*?[") != std::string::npos) {
        for (const char c : {'p', 'q', 'r', 's', 't', 'u', '-'}) {
          isCreated = Create(Match(word, c)) || isCreated;
        }
      }
    }
    return isCreated;
  }

  // Returns a name that the pattern matches, with `c` in place of each "*" and "?". If `c` is "-",
  // the name should become an option. "-" and "--" are none, so "-" replaces only a "?" or "*" at
  // the start, with a letter after it in place of a "*". A "p" replaces the others.
  static std::string Match(const std::string& pattern, char c) {
    std::string name;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
      const std::size_t end = pattern[i] == '[' ? pattern.find(']', i + 2) : std::string::npos;
      if (pattern[i] == '*' || pattern[i] == '?') {
        name += c == '-' && i > 0 ? 'p' : c;
        name += c == '-' && i == 0 && pattern[i] == '*' ? "p" : "";
      } else if (end != std::string::npos) {
        const std::string inside = pattern.substr(i + 1, end - i - 1);
        const bool isFirst = c == 'p' || (c == '-' && inside.find('-') == std::string::npos);
        const char other = *std::find_if(inside.begin(), inside.end() - 1,
                                         [&](char each) { return each != inside[0]; });
        name += c == '-' && inside.find('-') != std::string::npos ? '-'
                : isFirst                                         ? inside[0]
                                                                  : other;
        i = end;
      } else {
        name += pattern[i];
      }
    }
    return name;
  }

  bool Create(const std::string& name) {
    const fs::path path = fs::path(scratch_.GetPath("work")) / ("./" + name);
    std::error_code error;
    fs::create_directories(path.parent_path(), error);
    const std::ofstream file(path);
    return !error && file.good();
  }

  const ScopedTempDir scratch_;
};

/// Makes random templates, parameters and values.
class Generator {
 public:
  explicit Generator(unsigned seed) : random_(seed) {}

  template <typename Range>
  const auto& Pick(const Range& range) {
    return *(std::begin(range) +
             static_cast<std::ptrdiff_t>(Below(static_cast<std::size_t>(std::size(range)))));
  }
  std::size_t Below(std::size_t count) { return random_() % count; }

  std::shared_ptr<ParameterSpec> MakeParameter(bool isList) {
    const bool isInteger = Below(4) == 0;
    const ParameterType type =
        isInteger ? (isList ? Kestrel::CallSpec::IntList : Kestrel::CallSpec::Int)
                  : (isList ? Kestrel::CallSpec::StringList : Kestrel::CallSpec::String);
    const auto parameter = ParameterSpec::New("name", type);
    if (isInteger && Below(2) == 0) {
      const auto range = ParameterConstraint::New(Kestrel::CallSpec::IntRange);
      range->SetIntRange(Below(2) == 0 ? 1 : -5, 20);
      parameter->SetConstraint(range);
    } else if (!isInteger && Below(3) != 0) {
      static const std::string expressions[] = {
          "[a-z]+",    "[a-z ]+",   "[a-z -]+",   "[a-z;]+",     "[a-z']+",  "[a-z?]+",
          "[a-z{},]+", "[^'\"]+",   "[a-z\"; ]+", "-?[a-z]*",    " ?[a-z]+", "[a-z]+ ?",
          "[a-z=/ ]+", "[a-z$()]+", "[a-z#\\n]+", "[^ ]*",       "[a-z~]*",  "[a-z\\[\\]]+",
          "[a-z}]+",   "[a-z&|]+",  "[a-z`]+",    "[a-z\\\\ ]+", ".[a-z]*",  "[a-z]+.?"};
      const auto expression = ParameterConstraint::New(Kestrel::CallSpec::StringRegex);
      expression->SetStringRegex(Pick(expressions));
      parameter->SetConstraint(expression);
    }
    return parameter;
  }

  std::string MakeTemplate(bool isList) {
    static const std::string values[] = {"$val{name}",
                                         "'$val{name}'",
                                         "\"$val{name}\"",
                                         "--n=$val{name}",
                                         "--n='$val{name}'",
                                         "--n=\"$val{name}\"",
                                         "'a $val{name} b'",
                                         "'a'$val{name}'b'",
                                         "\"'$val{name}'\"",
                                         "\"a $val{name} b\"",
                                         "$val{name}s",
                                         "p$val{name}s",
                                         "-- $val{name}",
                                         "-- '$val{name}'",
                                         "; X=$val{name} words",
                                         "$if{name, --n='$val{name}'}",
                                         "$if{name, --n=$val{name}}",
                                         "$(words $val{name})",
                                         "\"$(words '$val{name}')\"",
                                         "''$val{name}''",
                                         "# $val{name}",
                                         "; $val{name} b",
                                         "x\"y\"$val{name}",
                                         "'a'\"$val{name}\"",
                                         "; (words $val{name})"};
    static const std::string lists[] = {
        "$list{name,',',true}",       "$list{name,',',false}",
        "--l=$list{name,',',true}",   "--l=$list{name,';',false}",
        "$list{name,' ',false}",      "$multilist{name,--l,true}",
        "$multilist{name,--l,false}", "$if{name, --l=$list{name,',',true}}",
        "$list{name,'',false}",       "$(words $list{name,',',false})"};
    static const std::string words[] = {"a",        "'b c'", "-v", "| words",  "; words b",
                                        "&& words", "\"d\"", "--", "\n words", "e\\ f"};
    std::string text = "words";
    for (std::size_t i = Below(3); i > 0; --i) {
      text += " " + Pick(words);
    }
    text += " " + (isList ? Pick(lists) : Pick(values));
    for (std::size_t i = Below(3); i > 0; --i) {
      text += " " + Pick(words);
    }
    return text;
  }

  std::string MakeValue() {
    static const std::string pieces[] = {
        "a",  "b",   "c",   " ",     "\t",        "\n",       "'",        "\"",  "\\",     "$",
        ";",  "&",   "|",   "(",     ")",         "#",        "-",        "?",   "[",      "]",
        "{",  "}",   ",",   "~",     "=",         "!",        "`",        "7",   "canary", "0",
        "ab", " -x", "'b'", "{a,b}", "$(canary)", "; canary", "\xC3\xA4", "x=1", "+"};
    std::string value;
    for (std::size_t i = Below(6); i > 0; --i) {
      value += Pick(pieces);
    }
    return value;
  }

 private:
  std::mt19937 random_;
};

bool IsAccepted(const ParameterSpec& parameter, const std::string& value) {
  const auto output = Output::New();
  return parameter.Validate({value}, output) && !output->HasError();
}

/// The effects that one value has in any of the shells, compared with a harmless value.
struct Difference {
  bool runsCommand = false;
  bool addsWord = false;
  bool addsOption = false;
};

/// Compares what vexil-lint says about values with what the shells do.
class Campaign {
 public:
  /// Tries every template whose number leaves the remainder `share` when divided by `shares`.
  Campaign(const std::string& wordsProgram, unsigned seed, unsigned share, unsigned shares)
      : laboratory_(wordsProgram), generator_(seed), share_(share), shares_(shares) {}

  /// Returns the number of values of the template, even if they belong to another share and are not
  /// tried.
  std::size_t RunTemplate() {
    const bool isList = generator_.Below(4) == 0;
    const auto parameter = generator_.MakeParameter(isList);
    return Run(generator_.MakeTemplate(isList), parameter, nullptr);
  }

  std::size_t RunGivenTemplate(const std::string& text, const std::string* value) {
    const bool isList = text.find("list{") != std::string::npos;
    return Run(text,
               ParameterSpec::New(
                   "name", isList ? Kestrel::CallSpec::StringList : Kestrel::CallSpec::String),
               value);
  }

  std::size_t templates = 0;
  std::size_t differences = 0;

 private:
  std::size_t Run(const std::string& text, const std::shared_ptr<ParameterSpec>& parameter,
                  const std::string* value) {
    parameter_ = parameter;
    text_ = text;
    seen_.clear();
    const auto input = InputSpec::New();
    input->AddParameter(parameter_);
    const Injection injection(text_, input);
    const Verdict whole = injection.Judge("name");
    if (whole.isUnknown) {
      return 0;
    }
    isShown_ = value != nullptr;
    const std::vector<std::string> values =
        value != nullptr ? std::vector{*value} : MakeValues(whole);
    const bool isOwn = ++templates % shares_ == share_;
    for (const std::string& each : isOwn ? values : std::vector<std::string>()) {
      TryValue(injection, whole, each);
    }
    return values.size();
  }

  std::vector<std::string> MakeValues(const Verdict& whole) {
    std::vector<std::string> values;
    for (const auto* witness : {&whole.runsCommand, &whole.addsWord, &whole.addsOption}) {
      if (witness->has_value()) {
        values.push_back(**witness);
      }
    }
    const std::vector<std::string> hostile = Kestrel::Lint::MakeHostileValues(*parameter_);
    for (std::size_t i = 0; i < kMaxValuesOfTemplate; ++i) {
      const std::string value =
          i % 2 == 0 && !hostile.empty() ? generator_.Pick(hostile) : generator_.MakeValue();
      if (IsAccepted(*parameter_, value)) {
        values.push_back(value);
      }
    }
    return values;
  }

  void TryValue(const Injection& injection, const Verdict& whole, const std::string& value) {
    Difference seen;
    for (const Condition& condition : MakeConditions()) {
      const auto line =
          injection.MakeLine({{"name", std::vector<std::string>(condition.count, value)}});
      if (!line) {
        return;
      }
      if (!condition.doWordsFail || line->find("||") != std::string::npos) {
        Observe(condition, *line, GetExpected(injection, condition), seen);
      }
    }
    const Verdict said = injection.JudgeValue("name", value);
    Expect("unsafe-command", seen.runsCommand, said.runsCommand.has_value(),
           whole.runsCommand.has_value(), value);
    Expect("unsafe-word", seen.addsWord, said.addsWord.has_value(), whole.addsWord.has_value(),
           value);
    Expect("unsafe-option", seen.addsOption, said.addsOption.has_value(),
           whole.addsOption.has_value(), value);
  }

  // A list is tried with one value and with two.
  std::vector<Condition> MakeConditions() const {
    std::vector<Condition> conditions;
    const std::size_t most = parameter_->AllowMultiple() ? 2 : 1;
    for (std::size_t count = 1; count <= most; ++count) {
      for (const char* shell : {"/bin/dash", "/bin/bash"}) {
        for (const bool doWordsFail : {false, true}) {
          conditions.push_back({shell, doWordsFail, count});
        }
      }
    }
    return conditions;
  }

  void Observe(const Condition& condition, const std::string& line, const Observation& expected,
               Difference& seen) {
    const Observation& own = Look(condition, line);
    if (isShown_) {
      std::cout << condition.shell << (condition.doWordsFail ? ", words fail: " : ": ")
                << Quote(line) << (own.runsCommand ? " runs a command, " : " runs no command, ")
                << own.words << " words instead of " << expected.words << ", " << own.options
                << " options instead of " << expected.options << std::endl;
    }
    seen.runsCommand = seen.runsCommand || own.runsCommand;
    seen.addsWord = seen.addsWord || (!own.runsCommand && own.words > expected.words);
    seen.addsOption = seen.addsOption || (!own.runsCommand && own.options > expected.options);
  }

  const Observation& GetExpected(const Injection& injection, const Condition& condition) {
    const auto line =
        injection.MakeLine({{"name", std::vector<std::string>(condition.count, kHarmless)}});
    return Look(condition, line.value_or(""));
  }

  // Returns what was seen when the line ran. In single quotes, a value loses its own single quotes,
  // so that "a'" and "a" make the same line; each line runs only once.
  const Observation& Look(const Condition& condition, const std::string& line) {
    const auto [found, isNew] = seen_.try_emplace({condition, line});
    if (isNew) {
      found->second = laboratory_.Run(condition, line);
    }
    return found->second;
  }

  void Expect(const char* rule, bool isSeen, bool isSaid, bool isSaidOfTemplate,
              const std::string& value) {
    if (isSeen == isSaid && (!isSeen || isSaidOfTemplate)) {
      return;
    }
    ++differences;
    const auto& constraint = parameter_->GetConstraint();
    std::cout << rule << ": " << (isSeen ? "seen" : "not seen") << ", "
              << (isSaid ? "said" : "not said")
              << (isSaidOfTemplate ? "" : ", not said of the template") << ": " << Quote(text_)
              << " with " << Quote(value) << ", "
              << (constraint ? constraint->ToString() : "no constraint") << std::endl;
  }

  Laboratory laboratory_;
  Generator generator_;
  const unsigned share_;
  const unsigned shares_;
  std::shared_ptr<ParameterSpec> parameter_;
  std::string text_;
  bool isShown_ = false;
  std::map<std::pair<Condition, std::string>, Observation> seen_;
};

struct Result {
  std::size_t count = 0;
  std::size_t templates = 0;
  std::size_t differences = 0;
};

Result RunShare(int argc, char** argv, unsigned share, unsigned shares) {
  const std::string value = argc > 5 ? argv[5] : "";
  const std::size_t wanted = argc > 5 ? 1 : std::strtoul(argv[2], nullptr, 10);
  const auto seed = static_cast<unsigned>(argc > 3 ? std::strtoul(argv[3], nullptr, 10) : 1);
  Campaign campaign(argv[1], seed, share, shares);
  Result result;
  while (result.count < wanted) {
    result.count += argc > 4 ? campaign.RunGivenTemplate(argv[4], argc > 5 ? &value : nullptr)
                             : campaign.RunTemplate();
  }
  result.templates = campaign.templates;
  result.differences = campaign.differences;
  return result;
}

}  // namespace

// Uses one process for each processor, each of which tries a share of the templates, or only one
// process for a given value.
int main(int argc, char** argv) {
  if (argc < 3) {
    std::cerr << "lint_campaign WORDS COUNT [SEED [TEMPLATE [VALUE]]]\n";
    return 2;
  }
  const unsigned shares = argc > 5 ? 1 : std::max(std::thread::hardware_concurrency(), 1U);
  std::vector<pid_t> others;
  for (unsigned share = 1; share < shares; ++share) {
    others.push_back(fork());
    if (others.back() == 0) {
      const Result own = RunShare(argc, argv, share, shares);
      return static_cast<int>(std::min<std::size_t>(own.differences, 255));
    }
  }
  Result result = RunShare(argc, argv, 0, shares);
  for (const pid_t id : others) {
    int status = 0;
    const bool hasEnded = waitpid(id, &status, 0) == id && WIFEXITED(status);
    result.differences += hasEnded ? static_cast<std::size_t>(WEXITSTATUS(status)) : 1;
  }
  std::cout << result.count << " values in " << result.templates << " templates, "
            << result.differences << " differences" << std::endl;
  return result.differences == 0 ? 0 : 1;
}
