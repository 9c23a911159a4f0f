// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <exception>
#include <filesystem>
#include <random>
#include <string>
#include <system_error>
#include <vector>

#include "kestrel/callspec/ParameterSpec.h"
#include "kestrel/testing/Examples.h"
#include "kestrel/testing/Shape.h"
#include "kestrel/testing/TestTool.h"
#include "kestrel/testing/Verdict.h"

namespace Kestrel::Testing {

/// A path in the folder for temporary files. A hostile value that runs in a shell creates this
/// file.
class Canary {
 public:
  Canary()
      : path_(std::filesystem::temp_directory_path() /
              ("kestrel-canary-" + std::to_string(std::random_device()()))) {}
  Canary(const Canary&) = delete;
  Canary& operator=(const Canary&) = delete;
  ~Canary() { Disappear(); }

  /// The path; there is no such file at first.
  const std::string& GetPath() const { return path_.native(); }

  /// Removes the file. Returns whether it was there.
  bool Disappear() {
    std::error_code error;
    return std::filesystem::remove(path_, error);
  }

 private:
  std::filesystem::path path_;
};

/// Returns values with which commands are known to fail: strings with a special meaning to the
/// shell, to printf, to terminals, in documents or in file names, and numbers at their limits. The
/// values that run `touch` in a shell create the file `canary`.
inline std::vector<std::string> ListHostileValues(const std::string& canary) {
  const std::string touch = "touch " + canary;
  std::vector<std::string> values = {"",
                                     " ",
                                     "-",
                                     "--",
                                     "-x",
                                     "--help",
                                     "a b",
                                     "a\tb",
                                     "'",
                                     "\"",
                                     "\\",
                                     "`",
                                     "$",
                                     "$HOME",
                                     "*",
                                     "~",
                                     "#",
                                     "!",
                                     "%s%n%s%n",
                                     "../../../../etc/passwd",
                                     "/",
                                     ".",
                                     "\n",
                                     "\r\n",
                                     "0",
                                     "-0",
                                     " 7",
                                     "-1",
                                     "1e9",
                                     "0x10",
                                     "9223372036854775807",
                                     "9223372036854775808",
                                     "99999999999999999999999999",
                                     "true",
                                     "no",
                                     "<&>]]>",
                                     "&amp;",
                                     "\x1b[31m",
                                     "\x7f",
                                     "\x80\xff",
                                     "\xc2\x9b",
                                     "\xf0\x9f\x98\x80",
                                     "\xe2\x80\xae",
                                     std::string("a\0b", 3),
                                     std::string(5000, 'x')};
  for (const char* const form : {"$(@)", "`@`", ";@;", "|@|", "&@&", "\n@\n", "';@;'", "\";@;\"",
                                 "\\\";@;\\\"", "'\"$(@)\"'", "${x:=$(@)}", "#\n@\n"}) {
    std::string value = form;
    value.replace(value.find('@'), 1, touch);
    values.push_back(value);
  }
  return values;
}

/// Returns the words of a call with `value` as the only value of a parameter.
inline Words Replace(const Words& words, const CallSpec::ParameterSpec& parameter,
                     const std::string& value) {
  const std::string name = "--" + parameter.GetName();
  Words replaced;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const bool isShort =
        !parameter.GetShortName().empty() && words[i] == "-" + parameter.GetShortName();
    if (words[i] == name || isShort) {
      ++i;
    } else if (words[i].rfind(name + "=", 0) != 0) {
      replaced.push_back(words[i]);
    }
  }
  if (value.empty()) {
    replaced.insert(replaced.end(), {name, ""});
  } else {
    replaced.push_back(name + "=" + value);  // as a separate word, "-x" would be an option
  }
  return replaced;
}

/// Runs a command line and returns its problems: the value ran in a shell, the result does not have
/// the declared shape, or a formatter cannot print it. A refused value is not a problem. The table
/// formatter is tried only if it is that of the command.
inline Verdict CheckHostileRun(const TestTool& tool, const Words& words, Canary& canary) {
  Verdict verdict;
  const CommandRun run = tool.Run(words);
  if (canary.Disappear()) {
    verdict.Add("the value runs as a command of the shell");
  }
  if (run.Status() != 0) {
    return verdict;  // a refusal is fine
  }
  verdict.Add(CheckShape(run), "accepted");
  for (const auto& formatter : tool.GetDispatcher().GetFormatters()) {
    const bool isTable = formatter->GetName() == "table";
    const bool isForHelp = formatter->GetName() == "commandhelp";
    try {
      if (!isForHelp && (!isTable || run.GetFormat().GetFormatter() == "table")) {
        Printed(run, formatter->GetName(), {}, 80);
      }
    } catch (const std::exception& error) {
      verdict.Add("the formatter " + formatter->GetName() + " fails: " + error.what());
    }
  }
  return verdict;
}

/// Calls a command of the plug-in under test with hostile values, for each of its parameters that
/// takes a value, and checks that the values are refused or treated as data.
///
/// `words` are the parameters of a valid call. Without them, those of the command's first example
/// are used. A command that changes something is not run: each call is only checked by `Explain`,
/// and its problems are not reported.
inline Verdict RunHostileValues(const TestTool& tool, const std::string& path, Words words = {}) {
  Verdict verdict;
  const auto commands = tool.GetCommands();
  const auto found = commands.find(path);
  if (found == commands.end()) {
    verdict.Add("the plug-in has no command '" + path + "'");
    return verdict;
  }
  const auto& command = found->second;
  if (words.empty() && !command->GetExamples().empty()) {
    words = SplitShellWords(command->GetExamples().front().first);
  }
  const Words pathWords = SplitShellWords(path);
  words.insert(words.begin(), pathWords.begin(), pathWords.end());
  Canary canary;
  for (const auto& parameter : command->GetInputSpec()->GetParameters()) {
    if (parameter->GetType() == CallSpec::Flag || parameter->GetName() == "help") {
      continue;
    }
    for (const std::string& value : ListHostileValues(canary.GetPath())) {
      const Words line = Replace(words, *parameter, value);
      if (Changes(*command)) {
        Explain(tool, line);
      } else {
        verdict.Add(CheckHostileRun(tool, line, canary),
                    path + " --" + parameter->GetName() + " '" + value + "'");
      }
    }
  }
  return verdict;
}

}  // namespace Kestrel::Testing
