// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/lint/BraceExpansion.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

namespace Kestrel::Lint {

namespace {

constexpr std::size_t kMaxWords = 64;
constexpr std::size_t kMaxDigits = 9;

bool Is(const RawByte& byte, char c) { return byte.byte == c && !byte.isQuoted; }

RawWord Part(const RawWord& word, std::size_t begin, std::size_t end) {
  return {word.begin() + static_cast<std::ptrdiff_t>(begin),
          word.begin() + static_cast<std::ptrdiff_t>(end)};
}

/// A block in braces and the commas in it that are in no inner block.
struct Braces {
  std::size_t begin;
  std::size_t end;  // of the "}"
  std::vector<std::size_t> commas;
};

std::optional<Braces> FindEnd(const RawWord& word, std::size_t begin) {
  Braces braces{begin, begin, {}};
  std::size_t depth = 0;
  for (std::size_t i = begin; i < word.size(); ++i) {
    if (Is(word[i], '{')) {
      ++depth;
    } else if (Is(word[i], ',') && depth == 1) {
      braces.commas.push_back(i);
    } else if (Is(word[i], '}') && --depth == 0) {
      braces.end = i;
      return braces;
    }
  }
  return std::nullopt;
}

std::optional<long> ReadNumber(const std::string& text) {
  const std::size_t sign = !text.empty() && (text[0] == '-' || text[0] == '+') ? 1 : 0;
  const bool isNumber = text.size() > sign && text.size() <= kMaxDigits &&
                        std::all_of(text.begin() + static_cast<std::ptrdiff_t>(sign), text.end(),
                                    [](unsigned char c) { return std::isdigit(c) != 0; });
  return isNumber ? std::optional(std::strtol(text.c_str(), nullptr, 10)) : std::nullopt;
}

bool IsLetter(const std::string& text) {
  return text.size() == 1 && std::isalpha(static_cast<unsigned char>(text[0])) != 0;
}

RawWord AsWord(const std::string& text) {
  RawWord word;
  for (const char c : text) {
    word.push_back({c, false});
  }
  return word;
}

std::vector<std::string> Count(long first, long last, long step, bool isLetters) {
  std::vector<std::string> items;
  const long size = std::max(1L, std::labs(step));
  for (long i = 0; i <= std::labs(last - first) && items.size() < kMaxWords; i += size) {
    const long value = first <= last ? first + i : first - i;
    items.push_back(isLetters ? std::string(1, static_cast<char>(value)) : std::to_string(value));
  }
  return items;
}

/// Returns the items of a sequence such as "1..3" or "a..e..2"; nothing for everything else.
std::vector<std::string> ReadSequence(const RawWord& inside) {
  std::string text;
  for (const RawByte& byte : inside) {
    if (byte.isQuoted) {
      return {};
    }
    text += byte.byte;
  }
  const std::size_t dots = text.find("..");
  if (dots == std::string::npos) {
    return {};
  }
  const std::size_t more = text.find("..", dots + 2);
  const std::string first = text.substr(0, dots);
  const std::string last =
      text.substr(dots + 2, more == std::string::npos ? more : more - dots - 2);
  const std::optional<long> step =
      more == std::string::npos ? std::optional(1L) : ReadNumber(text.substr(more + 2));
  if (!step) {
    return {};
  }
  if (IsLetter(first) && IsLetter(last)) {
    return Count(first[0], last[0], *step, true);
  }
  const std::optional<long> from = ReadNumber(first);
  const std::optional<long> to = ReadNumber(last);
  return from && to ? Count(*from, *to, *step, false) : std::vector<std::string>();
}

std::vector<RawWord> Alternatives(const RawWord& word, const Braces& braces) {
  std::vector<RawWord> items;
  if (braces.commas.empty()) {
    for (const std::string& item : ReadSequence(Part(word, braces.begin + 1, braces.end))) {
      items.push_back(AsWord(item));
    }
    return items;
  }
  std::size_t begin = braces.begin + 1;
  for (const std::size_t comma : braces.commas) {
    items.push_back(Part(word, begin, comma));
    begin = comma + 1;
  }
  items.push_back(Part(word, begin, braces.end));
  return items;
}

void AppendAll(const RawWord& prefix, const std::vector<RawWord>& middles,
               const std::vector<RawWord>& suffixes, std::vector<RawWord>& words) {
  for (const RawWord& middle : middles) {
    for (const RawWord& suffix : suffixes) {
      if (words.size() < kMaxWords) {
        RawWord word = prefix;
        word.insert(word.end(), middle.begin(), middle.end());
        word.insert(word.end(), suffix.begin(), suffix.end());
        words.push_back(std::move(word));
      }
    }
  }
}

}  // namespace

std::vector<RawWord> ExpandBraces(const RawWord& word) {
  for (std::size_t i = 0; i < word.size(); ++i) {
    if (!Is(word[i], '{')) {
      continue;
    }
    const std::optional<Braces> braces = FindEnd(word, i);
    const std::vector<RawWord> items =
        braces ? Alternatives(word, *braces) : std::vector<RawWord>();
    if (items.empty()) {
      continue;
    }
    const std::vector<RawWord> suffixes = ExpandBraces(Part(word, braces->end + 1, word.size()));
    std::vector<RawWord> words;
    for (const RawWord& item : items) {
      AppendAll(Part(word, 0, i), ExpandBraces(item), suffixes, words);
    }
    return words;
  }
  return {word};
}

}  // namespace Kestrel::Lint
