// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/lint/FileReport.h"

#include <algorithm>
#include <cstddef>

#include "vexil/EditDistance.h"

namespace Kestrel::Lint {

namespace {

constexpr std::size_t kMaxQuoted = 80;
constexpr std::size_t kMaxDistance = 2;

}  // namespace

void FileReport::Add(const char* rule, const Element& element, const std::string& what,
                     const std::string& advice) {
  AddAt(rule, &element, element.position, what, advice);
}

void FileReport::AddAt(const char* rule, const Element* element, Position position,
                       const std::string& what, const std::string& advice) {
  const Rule* const found = FindRule(rule);
  if (element != nullptr) {
    reported_.insert(element);
    places_.push_back({found, element});
  }
  if (!IsSuppressed(*found, element)) {
    findings_.push_back({file_, position, found, what + "; " + advice});
  }
}

bool FileReport::HasFindingBelow(const char* rule, const Element& element) const {
  return std::any_of(places_.begin(), places_.end(), [&](const Place& place) {
    const Element* at = place.element;
    while (at != nullptr && at != &element) {
      at = at->parent;
    }
    return at != nullptr && std::string_view(place.rule->id) == rule;
  });
}

bool FileReport::IsSuppressed(const Rule& rule, const Element* element) const {
  for (; element != nullptr; element = element->parent) {
    for (const auto& suppression : element->suppressions) {
      const auto& rules = suppression->rules;
      if (std::find(rules.begin(), rules.end(), rule.id) != rules.end()) {
        suppression->used.insert(rule.id);
        return true;
      }
    }
  }
  return suppressed_.count(rule.id) != 0;
}

std::string FindNearest(const std::string& word, const std::vector<std::string>& words) {
  std::size_t least = std::min(kMaxDistance, word.size() / 2) + 1;
  std::string nearest;
  for (const std::string& candidate : words) {
    // The distance is at least the difference of the sizes, which is computed much faster.
    const auto [shorter, longer] = std::minmax({word.size(), candidate.size()});
    const std::size_t distance =
        longer - shorter < least ? Vexil::EditDistance(word, candidate) : least;
    if (distance < least && distance != 0) {
      least = distance;
      nearest = candidate;
    }
  }
  return nearest;
}

std::string AdviseNearest(const std::string& word, const std::vector<std::string>& words,
                          const std::string& otherwise) {
  const std::string nearest = FindNearest(word, words);
  return nearest.empty() ? otherwise : "write " + Quote(nearest);
}

std::string Quote(const std::string& text) {
  constexpr const char* kDigits = "0123456789abcdef";
  std::string quoted = "'";
  for (const char c : text.substr(0, kMaxQuoted)) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\n') {
      quoted += "\\n";
    } else if (byte < 0x20 || byte == 0x7F) {
      quoted += std::string("\\x") + kDigits[byte >> 4U] + kDigits[byte & 0xFU];
    } else {
      quoted += c;
    }
  }
  return quoted + (text.size() > kMaxQuoted ? "...'" : "'");
}

}  // namespace Kestrel::Lint
