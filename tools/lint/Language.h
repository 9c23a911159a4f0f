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

/// The set of strings that an expression matches, as an automaton: a state for each place of a byte
/// in the expression, entered by the bytes of that place.
class Language {
 public:
  /// Nothing when the expression is not understood or too large.
  static std::optional<Language> Parse(const std::string& expression);
  static std::optional<Language> Build(const ExpressionNode& expression);
  /// These strings, of which there is at least one.
  static std::optional<Language> Of(const std::vector<std::string>& strings);

  bool IsEmpty() const;
  /// Whether every string is in the language; false when that takes too long to find out.
  bool IsEverything() const;
  /// Whether a matcher that goes back to try alternatives may take exponential time: there is a
  /// loop that matches one string in two ways.
  bool IsExponential() const;
  /// A shortest string that is in both languages.
  std::optional<std::string> FindCommon(const Language& other) const;

 private:
  struct State {
    ByteSet bytes;
    std::map<std::size_t, int> next;  // the number of ways to each state, at most 2
    bool isFinal = false;
  };
  class Builder;
  class PairGraph;
  using Subset = std::set<std::size_t>;

  bool HasFinal(const Subset& subset) const;
  Subset Step(const Subset& subset, std::size_t byte) const;

  std::vector<bool> FindUseful() const;
  /// The number of the strongly connected component of each state.
  std::vector<std::size_t> FindComponents() const;

  std::vector<State> states_;  // the first is the initial one
};

}  // namespace Kestrel::Lint
