// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdlib>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

namespace Kestrel::Testing {

/// Returns the number of rounds of a test with random input. It is `full` when the environment
/// contains KESTREL_CAMPAIGN, otherwise `ordinary`.
inline int Rounds(int ordinary, int full) {
  return std::getenv("KESTREL_CAMPAIGN") == nullptr ? ordinary : full;
}

/// A source of random values. Each run has a different seed, unless KESTREL_SEED sets it.
class Random {
 public:
  Random() : Random(ChooseSeed()) {}
  explicit Random(unsigned seed) : seed_(seed), engine_(seed) {}

  /// Says how to repeat the run, for the messages of failed tests.
  std::string HowToRepeat() const { return "repeat with KESTREL_SEED=" + std::to_string(seed_); }

  /// Returns a number from 0 to `end` - 1; `end` is at least 1.
  std::size_t Below(std::size_t end) { return engine_() % end; }

  /// Returns a number from `first` to `last`; `last` is at least `first`.
  int Between(int first, int last) {
    return first + static_cast<int>(Below(static_cast<std::size_t>(last - first) + 1));
  }

  /// Returns true with a probability of `percent` percent.
  bool Chance(unsigned percent) { return Below(100) < percent; }

  /// Returns one of the elements of `choices`.
  template <typename Choices>
  const auto& Pick(const Choices& choices) {
    return std::data(choices)[Below(std::size(choices))];
  }

  /// Returns a string of at most `length` bytes from `alphabet`.
  std::string Text(std::string_view alphabet, std::size_t length) {
    std::string text(Below(length + 1), '\0');
    for (char& c : text) {
      c = Pick(alphabet);
    }
    return text;
  }

 private:
  static unsigned ChooseSeed() {
    const char* const given = std::getenv("KESTREL_SEED");
    return given == nullptr ? std::random_device()()
                            : static_cast<unsigned>(std::strtoul(given, nullptr, 10));
  }

  unsigned seed_;
  std::mt19937_64 engine_;
};

}  // namespace Kestrel::Testing
