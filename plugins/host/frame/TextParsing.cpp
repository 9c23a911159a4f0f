// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/TextParsing.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>

namespace Kestrel::Host {
namespace {

constexpr std::string_view kWhitespace = " \t\r\n";
// More than the kernel's largest number of processors.
constexpr unsigned long kMaxRange = 1 << 16;
constexpr long kMaxLong = std::numeric_limits<long>::max();
constexpr long kMinLong = std::numeric_limits<long>::min();

// Unsigned: the difference of two longs may not fit into a long.
bool IsShortRange(long first, long last) {
  return first <= last &&
         static_cast<unsigned long>(last) - static_cast<unsigned long>(first) < kMaxRange;
}

void AppendRange(std::string_view piece, std::vector<long>& numbers) {
  const std::size_t dash = piece.find('-', 1);  // the first character may be a minus sign
  const auto first = ParseNumber(piece.substr(0, dash));
  const auto last = dash == std::string_view::npos ? first : ParseNumber(piece.substr(dash + 1));
  if (!first || !last || !IsShortRange(*first, *last)) {
    return;
  }
  const long count = *last - *first;
  for (long offset = 0; offset <= count; ++offset) {
    numbers.push_back(*first + offset);
  }
}

}  // namespace

std::string LowerCase(std::string_view text) {
  std::string lower(text);
  for (char& letter : lower) {
    if (letter >= 'A' && letter <= 'Z') {
      letter = static_cast<char>(letter - 'A' + 'a');
    }
  }
  return lower;
}

bool StartsWith(std::string_view text, std::string_view prefix) {
  return text.substr(0, prefix.size()) == prefix;
}

std::string_view Trim(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kWhitespace);
  if (first == std::string_view::npos) {
    return {};
  }
  return text.substr(first, text.find_last_not_of(kWhitespace) - first + 1);
}

std::vector<std::string_view> Split(std::string_view text, char separator) {
  std::vector<std::string_view> pieces;
  for (;;) {
    const std::size_t end = text.find(separator);
    pieces.push_back(text.substr(0, end));
    if (end == std::string_view::npos) {
      return pieces;
    }
    text.remove_prefix(end + 1);
  }
}

std::vector<std::string_view> SplitWords(std::string_view text) {
  std::vector<std::string_view> words;
  std::size_t first = text.find_first_not_of(kWhitespace);
  while (first != std::string_view::npos) {
    const std::size_t end = std::min(text.find_first_of(kWhitespace, first), text.size());
    words.push_back(text.substr(first, end - first));
    first = text.find_first_not_of(kWhitespace, end);
  }
  return words;
}

std::vector<std::string_view> SplitLines(std::string_view text) {
  auto lines = Split(text, '\n');
  if (lines.back().empty()) {
    lines.pop_back();
  }
  return lines;
}

std::optional<long> ParseNumber(std::string_view text) {
  const std::string_view digits = Trim(text);
  long number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (error != std::errc() || end != digits.data() + digits.size()) {
    return std::nullopt;
  }
  return number;
}

std::vector<long> ParseNumberList(std::string_view text) {
  std::vector<long> numbers;
  for (const std::string_view piece : Split(Trim(text), ',')) {
    AppendRange(piece, numbers);
  }
  return numbers;
}

long ClampedSum(long left, long right) {
  long sum = 0;
  if (!__builtin_add_overflow(left, right, &sum)) {
    return sum;
  }
  return right < 0 ? kMinLong : kMaxLong;
}

long ClampedDifference(long left, long right) {
  long difference = 0;
  if (!__builtin_sub_overflow(left, right, &difference)) {
    return difference;
  }
  return right > 0 ? kMinLong : kMaxLong;
}

long ClampedProduct(long left, long right) {
  long product = 0;
  if (!__builtin_mul_overflow(left, right, &product)) {
    return product;
  }
  return (left < 0) == (right < 0) ? kMaxLong : kMinLong;
}

}  // namespace Kestrel::Host
