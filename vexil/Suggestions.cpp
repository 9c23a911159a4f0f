// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/Suggestions.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <tuple>

#include "vexil/PathCost.h"
#include "vexil/Words.h"
namespace Kestrel::Vexil {

namespace {

constexpr std::size_t kMaxSuggestions = 3;

// The cost of a suggestion may exceed that of the best one by at most this much, which is less than
// the cost of an edit or of a missing name.
constexpr int kMaxExcess = 2;

struct Candidate {
  int cost;
  const Words* words;
};

bool IsBetter(const Candidate& left, const Candidate& right) {
  return std::forward_as_tuple(left.cost, left.words->size(), *left.words) <
         std::forward_as_tuple(right.cost, right.words->size(), *right.words);
}

// In results, the path of a namespace contains full stops: "storage.mount".
Words SplitAll(const Words& typed) { return SplitWords(JoinWords(typed, "."), "./"); }

std::vector<Candidate> FindCandidates(const std::vector<NodePath>& paths, const Words& typed) {
  std::vector<Candidate> candidates;
  for (const NodePath& path : paths) {
    if (const std::optional<int> cost = PathCost(typed, path)) {
      candidates.push_back({*cost, &path.words});
    }
  }
  return candidates;
}

}  // namespace

std::vector<std::string> SuggestPaths(const std::vector<NodePath>& paths, const Words& typed) {
  std::vector<Candidate> candidates = FindCandidates(paths, SplitAll(typed));
  std::sort(candidates.begin(), candidates.end(), IsBetter);
  std::vector<std::string> suggestions;
  for (const Candidate& candidate : candidates) {
    const bool isNear = candidate.cost <= candidates.front().cost + kMaxExcess;
    if (isNear && suggestions.size() < kMaxSuggestions) {
      suggestions.push_back(JoinWords(*candidate.words, " "));
    }
  }
  return suggestions;
}

std::string DidYouMean(const std::vector<std::string>& suggestions) {
  return suggestions.empty() ? std::string()
                             : "Did you mean: " + JoinWords(suggestions, ", ") + "?";
}

}  // namespace Kestrel::Vexil
