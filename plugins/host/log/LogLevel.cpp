// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/log/LogLevel.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace Kestrel::Host {
namespace {

struct LevelWord {
  std::string_view word;
  int level;
};

constexpr const char* kLevelNames[] = {"emerg",   "alert",  "crit", "err",
                                       "warning", "notice", "info", "debug"};

// Other common names of the levels.
constexpr LevelWord kOtherNames[] = {{"emergency", 0}, {"panic", 0}, {"critical", 2},
                                     {"error", 3},     {"warn", 4},  {"informational", 6}};

// Words that indicate the level of a line.
constexpr LevelWord kTellingWords[] = {
    {"emerg", 0},   {"emergency", 0}, {"panic", 0}, {"alert", 1},  {"crit", 2},    {"critical", 2},
    {"fatal", 2},   {"err", 3},       {"error", 3}, {"failed", 3}, {"failure", 3}, {"warn", 4},
    {"warning", 4}, {"notice", 5},    {"info", 6},  {"debug", 7}};
constexpr std::size_t kShortestTelling = 3;
constexpr std::size_t kLongestTelling = 9;

// A priority has at most three digits: it is 8 times the facility, plus the level.
constexpr std::size_t kMaxPriorityDigits = 3;
constexpr int kLevelsPerFacility = 8;

bool IsDigit(char letter) { return letter >= '0' && letter <= '9'; }

// Does not use the locale, which would cost a call for each letter of a log.
char ToLower(char letter) {
  return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

bool IsWordLetter(char letter) {
  const char lower = ToLower(letter);
  return (lower >= 'a' && lower <= 'z') || IsDigit(letter) || letter == '_';
}

bool EqualsInAnyCase(std::string_view text, std::string_view lowerCase) {
  return std::equal(text.begin(), text.end(), lowerCase.begin(), lowerCase.end(),
                    [](char letter, char lower) { return ToLower(letter) == lower; });
}

enum class ByteKind : unsigned char { Other, Word, TellingStart };

// Returns a table of all bytes: whether each is part of words, and whether a telling word may start
// with it. A table is fast, and every byte of a log is looked up.
std::array<ByteKind, 256> ClassifyBytes() {
  std::array<ByteKind, 256> kinds = {};
  for (std::size_t byte = 0; byte < kinds.size(); ++byte) {
    const auto letter = static_cast<char>(byte);
    const bool isTelling =
        std::any_of(std::begin(kTellingWords), std::end(kTellingWords),
                    [&](const LevelWord& each) { return each.word[0] == ToLower(letter); });
    kinds[byte] = isTelling              ? ByteKind::TellingStart
                  : IsWordLetter(letter) ? ByteKind::Word
                                         : ByteKind::Other;
  }
  return kinds;
}

int LevelOfWord(std::string_view word) {
  if (word.size() < kShortestTelling || word.size() > kLongestTelling) {
    return kLowestLevel + 1;
  }
  const char first = ToLower(word[0]);
  for (const LevelWord& telling : kTellingWords) {
    if (telling.word[0] == first && EqualsInAnyCase(word, telling.word)) {
      return telling.level;
    }
  }
  return kLowestLevel + 1;
}

int MostUrgentWord(std::string_view line) {
  static const std::array<ByteKind, 256> kinds = ClassifyBytes();
  const auto kindAt = [&](std::size_t at) { return kinds[static_cast<unsigned char>(line[at])]; };
  int level = kLowestLevel + 1;
  for (std::size_t position = 0; position < line.size(); ++position) {
    const std::size_t first = position;
    while (position < line.size() && kindAt(position) != ByteKind::Other) {
      ++position;
    }
    if (position > first && kindAt(first) == ByteKind::TellingStart) {
      level = std::min(level, LevelOfWord(line.substr(first, position - first)));
    }
  }
  return level;
}

}  // namespace

const char* const kLevelForms =
    "emerg, alert, crit, err, warning, notice, info, debug or a number from 0 to 7";

const char* LevelName(int level) { return kLevelNames[std::clamp(level, 0, kLowestLevel)]; }

std::optional<int> ParseLevel(std::string_view text) {
  if (text.size() == 1 && text[0] >= '0' && text[0] <= '0' + kLowestLevel) {
    return text[0] - '0';
  }
  for (int level = 0; level <= kLowestLevel; ++level) {
    if (EqualsInAnyCase(text, kLevelNames[level])) {
      return level;
    }
  }
  for (const LevelWord& other : kOtherNames) {
    if (EqualsInAnyCase(text, other.word)) {
      return other.level;
    }
  }
  return std::nullopt;
}

std::optional<LinePriority> ReadPriority(std::string_view line) {
  if (line.empty() || line[0] != '<') {
    return std::nullopt;
  }
  int number = 0;
  std::size_t size = 1;
  for (; size < line.size() && size <= kMaxPriorityDigits && IsDigit(line[size]); ++size) {
    number = 10 * number + (line[size] - '0');
  }
  if (size == 1 || size == line.size() || line[size] != '>') {
    return std::nullopt;
  }
  return LinePriority{number % kLevelsPerFacility, number / kLevelsPerFacility, size + 1};
}

int GuessLevel(std::string_view line) {
  if (const auto priority = ReadPriority(line)) {
    return priority->level;
  }
  const int level = MostUrgentWord(line);
  return level > kLowestLevel ? kInfoLevel : level;
}

}  // namespace Kestrel::Host
