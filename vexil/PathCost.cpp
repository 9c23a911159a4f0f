// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Words and names are aligned in the same way as bytes in an edit distance: a table contains the
// cost of aligning each prefix of the typed words with each prefix of the names.

#include "vexil/PathCost.h"

#include <algorithm>
#include <cstddef>
#include <string>

#include "vexil/WordCost.h"

namespace Kestrel::Vexil {

namespace {

constexpr int kSplitCost = 3;
constexpr int kSwapCost = 5;
constexpr int kMissingCost = 3;
constexpr int kForeignCost = 8;
constexpr int kSurplusCost = 6;

// Allows six missing names, so that the name of a command alone finds it on any level of a usual
// tree.
constexpr int kMaxCost = 20;
constexpr int kFar = 1000;
constexpr std::size_t kMaxForeignWords = 2;
constexpr std::size_t kMaxTypedWords = 16;

class Alignment {
 public:
  Alignment(const Words& typed, std::size_t begin, const Words& names)
      : typed_(typed.begin() + static_cast<std::ptrdiff_t>(begin), typed.end()),
        names_(names),
        costs_((typed_.size() + 1) * (names.size() + 1), kFar) {}

  /// Returns the total cost; `kFar` or more if the words cannot be aligned with the path.
  int Measure() {
    At(0, 0) = 0;
    for (std::size_t i = 0; i <= typed_.size(); ++i) {
      for (std::size_t j = 1; j <= names_.size(); ++j) {
        At(i, j) = std::min({MissName(i, j), MatchWord(i, j), MatchSwapped(i, j), MatchJoined(i, j),
                             MatchSplit(i, j)});
      }
    }
    return costs_.back();
  }

 private:
  int& At(std::size_t i, std::size_t j) { return costs_[i * (names_.size() + 1) + j]; }

  int MissName(std::size_t i, std::size_t j) { return At(i, j - 1) + kMissingCost; }

  int MatchWord(std::size_t i, std::size_t j) {
    if (i == 0 || At(i - 1, j - 1) > kMaxCost) {
      return kFar;
    }
    return At(i - 1, j - 1) + WordCost(typed_[i - 1], names_[j - 1]).value_or(kFar);
  }

  int MatchSwapped(std::size_t i, std::size_t j) {
    const bool isSwapped =
        i > 1 && j > 1 && typed_[i - 1] == names_[j - 2] && typed_[i - 2] == names_[j - 1];
    return isSwapped ? At(i - 2, j - 2) + kSwapCost : kFar;
  }

  int MatchJoined(std::size_t i, std::size_t j) {
    const bool isJoined = i > 0 && j > 1 && typed_[i - 1] == names_[j - 2] + names_[j - 1];
    return isJoined ? At(i - 1, j - 2) + kSplitCost : kFar;
  }

  int MatchSplit(std::size_t i, std::size_t j) {
    const bool isSplit = i > 1 && typed_[i - 2] + typed_[i - 1] == names_[j - 1];
    return isSplit ? At(i - 2, j - 1) + kSplitCost : kFar;
  }

  Words typed_;
  const Words& names_;
  std::vector<int> costs_;
};

// Returns the cost if the first `foreign` words do not belong to this path. If only one word
// remains after such words, it must be the whole path.
int MeasureAfter(std::size_t foreign, const Words& typed, const Words& names) {
  const int cost = Alignment(typed, foreign, names).Measure();
  const bool isEnough = foreign == 0 || cost == 0 || typed.size() - foreign > 1;
  return isEnough ? cost + static_cast<int>(foreign) * kForeignCost : kFar;
}

bool ContinuesBeyond(const Words& typed, const NodePath& path) {
  return path.isCommand && typed.size() > path.words.size() &&
         std::equal(path.words.begin(), path.words.end(), typed.begin());
}

}  // namespace

std::optional<int> PathCost(const Words& typed, const NodePath& path) {
  if (typed.empty() || typed.size() > kMaxTypedWords) {
    return std::nullopt;
  }
  int cost = ContinuesBeyond(typed, path) ? kSurplusCost : kFar;
  for (std::size_t foreign = 0; foreign < std::min(typed.size(), kMaxForeignWords + 1); ++foreign) {
    cost = std::min(cost, MeasureAfter(foreign, typed, path.words));
  }
  return cost > kMaxCost ? std::nullopt : std::optional(cost);
}

}  // namespace Kestrel::Vexil
