// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "callspec/TextValue.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <system_error>

namespace Kestrel::CallSpec {

namespace {

constexpr std::string_view kWhiteSpace(" \t\n\v\f\r");

constexpr std::array<std::string_view, 7> kTrueWords = {"1", "yes", "y", "true", "True", "t", "T"};
constexpr std::array<std::string_view, 7> kFalseWords = {"0",     "no", "n", "false",
                                                         "False", "f",  "F"};

template <std::size_t N>
bool IsOneOf(const std::array<std::string_view, N>& words, std::string_view text) {
  return std::find(words.begin(), words.end(), text) != words.end();
}

// Removes what `std::from_chars` does not accept: leading white space and a plus sign. In "+-5" the
// plus sign stays, so that the text is refused.
std::string_view WithoutSpaceAndPlus(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(kWhiteSpace), text.size()));
  const bool hasPlus = text.size() > 1 && text[0] == '+' && text[1] != '-';
  return hasPlus ? text.substr(1) : text;
}

}  // namespace

bool ReadInteger(std::string_view text, std::int64_t& out) {
  const std::string_view digits = WithoutSpaceAndPlus(text);
  const char* const end = digits.data() + digits.size();
  std::int64_t number = 0;
  const auto [stop, error] = std::from_chars(digits.data(), end, number, 10);
  if (stop != end || error == std::errc::invalid_argument) {
    return false;
  }
  if (error == std::errc::result_out_of_range) {
    number = digits[0] == '-' ? std::numeric_limits<std::int64_t>::min()
                              : std::numeric_limits<std::int64_t>::max();
  }
  out = number;
  return true;
}

bool ReadBoolean(std::string_view text, bool& out) {
  if (IsOneOf(kTrueWords, text)) {
    out = true;
    return true;
  }
  if (IsOneOf(kFalseWords, text)) {
    out = false;
    return true;
  }
  return false;
}

std::string TextOrEmpty(const char* text) { return text == nullptr ? "" : text; }

}  // namespace Kestrel::CallSpec
