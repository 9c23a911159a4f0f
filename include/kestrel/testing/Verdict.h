// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

namespace Kestrel::Testing {

/// The result of a check: nothing, or a message for each problem. The adapters for test frameworks
/// turn it into an assertion; without a framework, evaluate it as a condition and print `ToString`.
class Verdict {
 public:
  /// A check without problems.
  Verdict() = default;

  /// Adds a problem.
  void Add(std::string problem) { problems_.push_back(std::move(problem)); }

  /// Adds the problems of another check, each after `context`.
  void Add(const Verdict& other, const std::string& context) {
    for (const std::string& problem : other.problems_) {
      problems_.push_back(context + ": " + problem);
    }
  }

  /// Whether there is no problem.
  explicit operator bool() const { return problems_.empty(); }

  /// The problems, in the order in which they were found.
  const std::vector<std::string>& GetProblems() const { return problems_; }

  /// The problems, one per line.
  std::string ToString() const {
    std::string text;
    for (const std::string& problem : problems_) {
      text += problem + "\n";
    }
    return text;
  }

 private:
  std::vector<std::string> problems_;
};

}  // namespace Kestrel::Testing
