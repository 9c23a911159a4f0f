// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tools/lint/ExpressionSyntax.h"

namespace Kestrel::Lint {

/// The set of strings that an expression matches, as an automaton. Each position in the expression
/// that matches a byte is a state, which is entered by the bytes that match there.
class Language {
 public:
  /// Returns nothing if the expression is not understood or too large.
  static std::optional<Language> Parse(const std::string& expression);
  static std::optional<Language> Build(const ExpressionNode& expression);
  /// Returns the language that consists of these strings; there must be at least one.
  static std::optional<Language> Of(const std::vector<std::string>& strings);

  bool IsEmpty() const;
  /// Whether every string without a NUL is in the language; false if it would take too long to
  /// determine that.
  bool IsEverything() const;
  /// Whether a backtracking matcher may take exponential time, because a loop matches one string in
  /// two ways; false if it would take too long to determine that.
  bool IsExponential() const;
  /// Returns a shortest string that is in both languages; nothing if none is found.
  std::optional<std::string> FindCommon(const Language& other) const;

 private:
  struct State {
    ByteSet bytes;
    // How many transitions lead from here to each next state; 2 means two or more.
    std::map<std::size_t, int> next;
    bool isFinal = false;
  };
  class Builder;
  class PairGraph;
  using Subset = std::set<std::size_t>;

  bool HasFinal(const Subset& subset) const;
  Subset Step(const Subset& subset, std::size_t byte) const;

  std::vector<bool> FindUseful() const;
  /// Returns the number of the strongly connected component of each state.
  std::vector<std::size_t> FindComponents() const;

  std::vector<State> states_;  // the first is the initial one
};

}  // namespace Kestrel::Lint
