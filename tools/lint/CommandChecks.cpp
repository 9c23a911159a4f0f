// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Meta-data, scripts and suppressions.

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "tools/lint/Checks.h"

namespace Kestrel::Lint {

namespace {

const std::string kComplete = "complete:";

bool StartsWith(const std::string& text, const std::string& prefix) {
  return text.compare(0, prefix.size(), prefix) == 0;
}

void CheckCompletion(const Element& entry, const CommandParts& command, FileReport& report) {
  const std::string parameter = entry.Get("name").substr(kComplete.size());
  const std::string value = entry.GetContent();
  std::vector<std::string> names;
  names.reserve(command.parameters.size());
  for (const auto& known : command.parameters) {
    names.push_back(known.first);
  }
  if (command.parameters.count(parameter) == 0) {
    report.Add("meta-data-parameter", entry, "there is no parameter " + Quote(parameter),
               AdviseNearest(parameter, names, "name a parameter of the command"));
  }
  if (value != "file" && value != "directory" && value.find(' ') == std::string::npos) {
    report.Add("meta-data-value", entry, Quote(value) + " says nothing about completion",
               "write 'file', 'directory', or a command, a space and a field of its result");
  }
}

void CheckEntry(const Element& entry, const CommandParts& command, FileReport& report) {
  const std::string& name = entry.Get("name");
  const std::string value = entry.GetContent();
  const std::string prefix = name.substr(0, name.find(':') + 1);
  if (name == "changes") {
    if (value != "true" && value != "false") {
      report.Add("meta-data-value", entry, Quote(value) + " is neither 'true' nor 'false'",
                 "write 'true' if the command changes something");
    }
  } else if (StartsWith(name, kComplete)) {
    CheckCompletion(entry, command, report);
  } else if (!FindNearest(prefix, {kComplete}).empty()) {
    report.Add("meta-data-key", entry, Quote(name) + " has no meaning",
               "write 'complete:' before the parameter");
  } else if (!FindNearest(name, {"changes"}).empty()) {
    report.Add("meta-data-key", entry, Quote(name) + " has no meaning", "write 'changes'");
  }
}

// The first word of a shell command, without its quotes; empty when it is more than a path.
std::string FirstWord(const std::string& command) {
  const std::size_t begin = command.find_first_not_of(" \t\r\n");
  if (begin == std::string::npos) {
    return {};
  }
  const char quote = command[begin];
  const bool isQuoted = quote == '\'' || quote == '"';
  const std::size_t start = begin + (isQuoted ? 1 : 0);
  const std::size_t end =
      isQuoted ? command.find(quote, start) : command.find_first_of(" \t\r\n;&|<>()$", start);
  const std::string word = command.substr(start, end - start);
  return word.find_first_of("$`\\*?['\"") == std::string::npos ? word : std::string();
}

}  // namespace

void CheckMetaData(const CommandParts& command, FileReport& report) {
  const Element* const metaData = command.element->Find("meta-data");
  if (metaData == nullptr) {
    return;
  }
  std::vector<std::string> seen;
  for (const Element* entry : metaData->FindAll("meta-data-entry")) {
    const std::string& name = entry->Get("name");
    if (std::find(seen.begin(), seen.end(), name) != seen.end()) {
      report.Add("meta-data-twice", *entry, "only the last entry " + Quote(name) + " counts",
                 "remove one of them");
    }
    seen.push_back(name);
    CheckEntry(*entry, command, report);
  }
}

void CheckScript(const CommandParts& command, FileReport& report) {
  const Element* const execute = command.element->Find("execute");
  const std::string script = execute == nullptr ? "" : FirstWord(execute->GetContent());
  if (script.find('/') == std::string::npos) {
    return;
  }
  struct stat status;
  if (script[0] != '/') {
    report.Add("script-relative", *execute,
               Quote(script) + " is looked for in the folder of the user",
               "write the absolute path of the program");
  } else if (stat(script.c_str(), &status) != 0) {
    report.Add("script-missing", *execute, "there is no file " + Quote(script),
               "install it, or correct the path");
  } else if (!S_ISREG(status.st_mode) || (status.st_mode & 0111U) == 0) {
    report.Add("script-not-executable", *execute, Quote(script) + " is not executable",
               "make it an executable file");
  }
}

void CheckSuppressions(const Document& document, FileReport& report) {
  for (const auto& suppression : document.GetSuppressions()) {
    if (!suppression->hasReason) {
      report.AddAt("suppression-reason", nullptr, suppression->position,
                   "the suppression has no reason", "write ': ' and the reason after the rule");
    }
    for (const std::string& rule : suppression->rules) {
      if (FindRule(rule) == nullptr) {
        report.AddAt("suppression-unknown", nullptr, suppression->position,
                     "there is no rule " + Quote(rule), "see vexil-lint --rules");
      } else if (suppression->used.count(rule) == 0) {
        report.AddAt("suppression-unused", nullptr, suppression->position,
                     "the suppression of '" + rule + "' has no effect",
                     "remove it, or write it directly before the element");
      }
    }
  }
}

}  // namespace Kestrel::Lint
