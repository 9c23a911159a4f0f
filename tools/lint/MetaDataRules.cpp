// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/lint/MetaDataRules.h"

#include <algorithm>

#include "tools/lint/FileReport.h"

namespace Kestrel::Lint {

namespace {

const std::string kComplete = "complete:";

bool StartsWith(const std::string& text, const std::string& prefix) {
  return text.compare(0, prefix.size(), prefix) == 0;
}

class Finder {
 public:
  explicit Finder(const std::vector<std::string>& parameters) : parameters_(parameters) {}

  void Check(const std::string& name, const std::string& value) {
    if (std::find(names_.begin(), names_.end(), name) != names_.end()) {
      Add("meta-data-twice", "only the last entry " + Quote(name) + " counts",
          "remove one of them");
    }
    if (name == "changes") {
      CheckChanges(value);
    } else if (StartsWith(name, kComplete)) {
      CheckCompletion(name.substr(kComplete.size()), value);
    } else {
      CheckFreeName(name);
    }
    names_.push_back(name);
  }

  std::vector<MetaDataFault> faults;

 private:
  void Add(const char* rule, const std::string& what, const std::string& advice) {
    faults.push_back({rule, names_.size(), what, advice});
  }

  void CheckChanges(const std::string& value) {
    if (value != "true" && value != "false") {
      Add("meta-data-value", Quote(value) + " is neither 'true' nor 'false'",
          "write 'true' if the command changes something");
    }
  }

  void CheckCompletion(const std::string& parameter, const std::string& value) {
    if (std::find(parameters_.begin(), parameters_.end(), parameter) == parameters_.end()) {
      Add("meta-data-parameter", "there is no parameter " + Quote(parameter),
          AdviseNearest(parameter, parameters_, "name a parameter of the command"));
    }
    if (value != "file" && value != "directory" && value.find(' ') == std::string::npos) {
      Add("meta-data-value", Quote(value) + " says nothing about completion",
          "write 'file', 'directory', or a command, a space and a field of its result");
    }
  }

  void CheckFreeName(const std::string& name) {
    const std::string prefix = name.substr(0, name.find(':') + 1);
    if (!FindNearest(prefix, {kComplete}).empty()) {
      Add("meta-data-key", Quote(name) + " has no meaning",
          "write 'complete:' before the parameter");
    } else if (!FindNearest(name, {"changes"}).empty()) {
      Add("meta-data-key", Quote(name) + " has no meaning", "write 'changes'");
    }
  }

  const std::vector<std::string>& parameters_;
  std::vector<std::string> names_;  // of the earlier entries
};

}  // namespace

std::vector<MetaDataFault> FindMetaDataFaults(
    const std::vector<std::pair<std::string, std::string>>& entries,
    const std::vector<std::string>& parameters) {
  Finder finder(parameters);
  for (const auto& [name, value] : entries) {
    finder.Check(name, value);
  }
  return std::move(finder.faults);
}

}  // namespace Kestrel::Lint
