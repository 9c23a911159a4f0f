// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The checks of meta-data, scripts and suppressions.

#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "tools/lint/Checks.h"
#include "tools/lint/MetaDataRules.h"

namespace Kestrel::Lint {

namespace {

// Returns the first word of a shell command, without its quotes; empty if the word is not a plain
// path.
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
  const std::vector<const Element*> elements = metaData->FindAll("meta-data-entry");
  std::vector<std::pair<std::string, std::string>> entries;
  entries.reserve(elements.size());
  for (const Element* entry : elements) {
    entries.emplace_back(entry->Get("name"), entry->GetContent());
  }
  std::vector<std::string> parameters;
  parameters.reserve(command.parameters.size());
  for (const auto& parameter : command.parameters) {
    parameters.push_back(parameter.first);
  }
  for (const MetaDataFault& fault : FindMetaDataFaults(entries, parameters)) {
    report.Add(fault.rule, *elements[fault.entry], fault.what, fault.advice);
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
