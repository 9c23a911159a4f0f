// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The order of versions. The epoch is compared as a number. The two other parts are split into
// pieces that alternately have no digits and only digits, and are compared one by one. In a piece
// without digits, ~ sorts before everything, even the end, and letters sort before other
// characters.

#include "plugins/host/package/DebianVersion.h"

#include <algorithm>
#include <cstddef>

namespace Kestrel::Host {
namespace {

bool IsDigit(char letter) { return letter >= '0' && letter <= '9'; }

bool IsLetter(char letter) {
  return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z');
}

// Returns the rank of the first character of `text`, which is in a piece without digits; 0 if the
// piece has ended.
int Rank(std::string_view text) {
  if (text.empty() || IsDigit(text[0])) {
    return 0;
  }
  if (text[0] == '~') {
    return -1;
  }
  constexpr int kBeyondLetters = 256;
  const int code = static_cast<unsigned char>(text[0]);
  return IsLetter(text[0]) ? code : code + kBeyondLetters;
}

bool HasNonDigit(std::string_view text) { return !text.empty() && !IsDigit(text[0]); }

void RemoveFirst(std::string_view& text) { text.remove_prefix(text.empty() ? 0 : 1); }

int CompareNonDigits(std::string_view& left, std::string_view& right) {
  while (HasNonDigit(left) || HasNonDigit(right)) {
    const int difference = Rank(left) - Rank(right);
    if (difference != 0) {
      return difference;
    }
    RemoveFirst(left);
    RemoveFirst(right);
  }
  return 0;
}

// Removes the digits at the start of `text`, and returns them without leading zeros.
std::string_view TakeNumber(std::string_view& text) {
  const auto length =
      static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), IsDigit) - text.begin());
  std::string_view digits = text.substr(0, length);
  text.remove_prefix(length);
  digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
  return digits;
}

// Compares numbers of any length: the longer one is greater.
int CompareNumbers(std::string_view left, std::string_view right) {
  if (left.size() != right.size()) {
    return left.size() < right.size() ? -1 : 1;
  }
  return left.compare(right);
}

int ComparePart(std::string_view left, std::string_view right) {
  while (!left.empty() || !right.empty()) {
    int difference = CompareNonDigits(left, right);
    if (difference != 0) {
      return difference;
    }
    const std::string_view leftNumber = TakeNumber(left);
    difference = CompareNumbers(leftNumber, TakeNumber(right));
    if (difference != 0) {
      return difference;
    }
  }
  return 0;
}

struct Version {
  explicit Version(std::string_view text);

  std::string_view epoch;
  std::string_view upstream;
  std::string_view revision;
};

Version::Version(std::string_view text) {
  const std::size_t colon = text.find(':');
  if (colon != std::string_view::npos) {
    epoch = text.substr(0, colon);
    text.remove_prefix(colon + 1);
  }
  const std::size_t hyphen = text.rfind('-');
  upstream = text.substr(0, hyphen);
  if (hyphen != std::string_view::npos) {
    revision = text.substr(hyphen + 1);
  }
}

}  // namespace

int CompareVersions(std::string_view left, std::string_view right) {
  const Version one(left);
  const Version two(right);
  int difference = ComparePart(one.epoch, two.epoch);
  if (difference == 0) {
    difference = ComparePart(one.upstream, two.upstream);
  }
  return difference == 0 ? ComparePart(one.revision, two.revision) : difference;
}

}  // namespace Kestrel::Host
