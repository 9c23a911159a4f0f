// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/WordCost.h"

#include <algorithm>
#include <limits>

#include "autocli/text/StartsWith.h"
#include "vexil/EditDistance.h"

namespace Kestrel::Vexil {

namespace {

constexpr int kCaseCost = 1;
constexpr int kPluralCost = 2;
constexpr int kAbbreviationCost = 6;

// A longer word is not a mistyped name, and the time needed grows with the square of the length.
constexpr std::size_t kMaxWordLength = 64;
constexpr std::size_t kMinAbbreviationLength = 3;
constexpr std::size_t kMinNounLength = 3;

char LowerCase(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

std::string LowerCase(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) { return LowerCase(c); });
  return lower;
}

bool IsPluralOf(const std::string& plural, const std::string& word) {
  if (word.size() < kMinNounLength) {
    return false;
  }
  const bool endsInY = word.back() == 'y';
  return plural == word + "s" || plural == word + "es" ||
         (endsInY && plural == word.substr(0, word.size() - 1) + "ies");
}

bool IsAbbreviationOf(const std::string& typed, const std::string& name) {
  return typed.size() >= kMinAbbreviationLength && AutoCli::StartsWith(name, typed);
}

// One edit in three characters, two in seven, three in eleven. Shorter words allow no edit, because
// they could not be recognized after one.
std::size_t GetEditLimit(std::size_t length) { return length < 3 ? 0 : (length + 1) / 4; }

// Returns nothing if there are too many edits.
std::optional<int> GetEditCost(const std::string& typed, const std::string& name) {
  const auto [shorter, longer] = std::minmax({typed.size(), name.size()});
  const std::size_t limit = GetEditLimit(longer);
  if (longer - shorter > limit) {
    return std::nullopt;
  }
  const std::size_t edits = EditDistance(typed, name);
  return edits > limit ? std::nullopt : std::optional(static_cast<int>(edits) * kEditCost);
}

}  // namespace

std::optional<int> WordCost(std::string_view typed, std::string_view name) {
  if (typed == name) {
    return 0;
  }
  if (typed.size() > kMaxWordLength || name.size() > kMaxWordLength) {
    return std::nullopt;
  }
  const std::string typedLower = LowerCase(typed);
  const std::string nameLower = LowerCase(name);
  if (typedLower == nameLower) {
    return kCaseCost;
  }
  if (IsPluralOf(typedLower, nameLower) || IsPluralOf(nameLower, typedLower)) {
    return kPluralCost;
  }
  const std::optional<int> edits = GetEditCost(typedLower, nameLower);
  if (!IsAbbreviationOf(typedLower, nameLower)) {
    return edits;
  }
  return edits ? std::min(*edits, kAbbreviationCost) : kAbbreviationCost;
}

std::vector<std::string> NearestNames(std::string_view typed, const std::vector<std::string>& names,
                                      std::size_t limit) {
  int least = std::numeric_limits<int>::max();
  std::vector<std::string> nearest;
  for (const std::string& name : names) {
    const std::optional<int> cost = WordCost(typed, name);
    if (!cost || *cost > least) {
      continue;
    }
    if (*cost < least) {
      nearest.clear();
    }
    least = *cost;
    if (nearest.size() < limit) {
      nearest.push_back(name);
    }
  }
  return nearest;
}

}  // namespace Kestrel::Vexil
