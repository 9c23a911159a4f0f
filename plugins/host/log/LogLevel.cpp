// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/log/LogLevel.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <utility>

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

// The first two letters of a word of kTellingWords.
struct WordStart {
  unsigned char first;
  unsigned char second;
};
constexpr WordStart kTellingStarts[] = {{'e', 'm'}, {'p', 'a'}, {'a', 'l'}, {'c', 'r'}, {'f', 'a'},
                                        {'e', 'r'}, {'w', 'a'}, {'n', 'o'}, {'i', 'n'}, {'d', 'e'}};

constexpr std::make_index_sequence<std::size(kTellingStarts)> kStartIndices;

constexpr bool HasTellingStart(std::string_view word) {
  for (const WordStart& start : kTellingStarts) {
    if (word[0] == start.first && word[1] == start.second) {
      return true;
    }
  }
  return false;
}

constexpr bool HaveAllTellingStarts() {
  for (const LevelWord& telling : kTellingWords) {
    if (!HasTellingStart(telling.word)) {
      return false;
    }
  }
  return true;
}
static_assert(HaveAllTellingStarts());

// A priority is 8 times the facility plus the level. It has at most three digits.
constexpr std::size_t kMaxPriorityDigits = 3;
constexpr int kLevelsPerFacility = 8;

bool IsDigit(char letter) { return letter >= '0' && letter <= '9'; }

// Does not use the locale: that would cost a call for each letter of a log.
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

// Returns the level that the word at `first` indicates; kLowestLevel + 1 if it indicates none.
int LevelOfWordAt(std::string_view line, std::size_t first) {
  if (IsDigit(line[first])) {
    return kLowestLevel + 1;
  }
  std::size_t last = first;
  while (last < line.size() && IsWordLetter(line[last])) {
    ++last;
  }
  return LevelOfWord(line.substr(first, last - first));
}

// Returns the level that the most urgent of the words beginning before `end` indicates. Looks at
// each byte.
int MostUrgentWordBefore(std::string_view line, std::size_t end) {
  int level = kLowestLevel + 1;
  for (std::size_t first = 0; first < end; ++first) {
    if (first == 0 || !IsWordLetter(line[first - 1])) {
      level = std::min(level, LevelOfWordAt(line, first));
    }
  }
  return level;
}

// Sixteen bytes of a line, for which the compiler uses one register.
constexpr std::size_t kBlockSize = 16;
using Block = unsigned char __attribute__((vector_size(kBlockSize)));

Block Load(const char* bytes) {
  Block block;
  std::memcpy(&block, bytes, sizeof block);
  return block;
}

template <std::size_t... kIndices>
auto FindTellingStarts(const Block& first, const Block& second,
                       std::index_sequence<kIndices...> /*indices*/) {
  return (
      ((first == kTellingStarts[kIndices].first) & (second == kTellingStarts[kIndices].second)) |
      ...);
}

// Fast path: the first two letters of most words show that the word is not in kTellingWords.
// Returns a byte for each of the 16 bytes; it is not 0 if a word of kTellingWords may begin there.
// Also reads the byte before the 16 and the byte after them.
std::array<char, kBlockSize> FindCandidates(const char* bytes) {
  constexpr unsigned char kToLower = 'a' - 'A';
  const Block before = Load(bytes - 1);
  const auto afterLetter = (before | kToLower) - 'a' < 26;
  const auto afterOther = (before - '0' < 10) | (before == '_');
  const auto candidates =
      FindTellingStarts(Load(bytes) | kToLower, Load(bytes + 1) | kToLower, kStartIndices) &
      ~(afterLetter | afterOther);
  std::array<char, kBlockSize> found;
  std::memcpy(found.data(), &candidates, sizeof found);
  return found;
}

bool HasCandidates(const std::array<char, kBlockSize>& found) {
  std::uint64_t halves[2];
  std::memcpy(halves, found.data(), sizeof halves);
  return (halves[0] | halves[1]) != 0;
}

int MostUrgentWordInBlock(std::string_view line, std::size_t start) {
  int level = kLowestLevel + 1;
  const std::array<char, kBlockSize> found = FindCandidates(line.data() + start);
  if (HasCandidates(found)) {
    for (std::size_t index = 0; index < kBlockSize; ++index) {
      level = found[index] == 0 ? level : std::min(level, LevelOfWordAt(line, start + index));
    }
  }
  return level;
}

int MostUrgentWord(std::string_view line) {
  // A block needs a byte before it and one after it. No word of kTellingWords begins at the last
  // byte of the line, because each has at least two letters.
  constexpr std::size_t kMinSize = kBlockSize + 2;
  if (line.size() < kMinSize) {
    return MostUrgentWordBefore(line, line.size());
  }
  int level = MostUrgentWordBefore(line, 1);
  const std::size_t lastStart = line.size() - kBlockSize - 1;
  for (std::size_t start = 1; start < line.size() - 1; start += kBlockSize) {
    level = std::min(level, MostUrgentWordInBlock(line, std::min(start, lastStart)));
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
