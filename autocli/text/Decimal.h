// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Kestrel::AutoCli {

/// A number in decimal, with a sign if it is negative.
struct Decimal {
  /// The length of the longest number.
  static constexpr std::size_t kMaxLength = 20;

  /// Returns how many bytes the number takes, without writing it.
  std::size_t Length() const {
    // A number of n bits has n * log10(2) digits, rounded down, or one more. 1233 / 4096 is close
    // enough to log10(2).
    const std::uint64_t magnitude = Magnitude();
    const int bits = 64 - __builtin_clzll(magnitude | 1);
    const auto digits = static_cast<std::size_t>(bits * 1233 >> 12);
    return digits + (magnitude >= kPowersOfTen[digits] ? 1 : 0) + (value < 0 ? 1 : 0);
  }

  /// Writes the number to `place`, where there must be room for kMaxLength bytes, and returns its
  /// end.
  char* WriteTo(char* place) const {
    *place = '-';
    place += value < 0 ? 1 : 0;
    const std::uint64_t magnitude = Magnitude();
    return magnitude < kEightDigits ? WriteFirst8(static_cast<std::uint32_t>(magnitude), place)
                                    : WriteLong(magnitude, place);
  }

  long value;

 private:
  static constexpr std::uint64_t kEightDigits = 100'000'000;  // the first number with nine digits

  // The first is 0 instead of 1, so that the number 0 has one digit.
  static constexpr std::array<std::uint64_t, 20> kPowersOfTen = []() {
    std::array<std::uint64_t, 20> powers{};
    std::uint64_t power = 1;
    for (std::size_t i = 1; i < powers.size(); ++i) {
      power *= 10;
      powers[i] = power;
    }
    return powers;
  }();

  /// The numbers from 00 to 99.
  static constexpr std::array<char, 200> kPairs = [] {
    std::array<char, 200> pairs{};
    for (std::size_t i = 0; i < 100; ++i) {
      pairs[2 * i] = static_cast<char>('0' + i / 10);
      pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
  }();

  std::uint64_t Magnitude() const {
    const auto number = static_cast<std::uint64_t>(value);
    return value < 0 ? 0 - number : number;
  }

  // Write2, Write4 and Write8 write exactly 2, 4 and 8 digits. WriteFirst2, WriteFirst4 and
  // WriteFirst8 write a number of at most 2, 4 and 8 digits. Each function splits the digits into
  // two halves. So the digits are found from the first one on, without knowing how many there are,
  // and few divisions depend on the result of another one.

  static char* Write2(std::uint32_t number, char* place) {
    std::memcpy(place, &kPairs[number * 2], 2);
    return place + 2;
  }
  static char* Write4(std::uint32_t number, char* place) {
    return Write2(number % 100, Write2(number / 100, place));
  }
  static char* Write8(std::uint32_t number, char* place) {
    return Write4(number % 10000, Write4(number / 10000, place));
  }

  static char* WriteFirst2(std::uint32_t number, char* place) {
    if (number >= 10) {
      return Write2(number, place);
    }
    *place = static_cast<char>('0' + number);
    return place + 1;
  }
  static char* WriteFirst4(std::uint32_t number, char* place) {
    return number < 100 ? WriteFirst2(number, place)
                        : Write2(number % 100, WriteFirst2(number / 100, place));
  }
  static char* WriteFirst8(std::uint32_t number, char* place) {
    return number < 10000 ? WriteFirst4(number, place)
                          : Write4(number % 10000, WriteFirst4(number / 10000, place));
  }

  static char* WriteLong(std::uint64_t number, char* place) {
    const std::uint64_t upper = number / kEightDigits;
    const auto lower = static_cast<std::uint32_t>(number % kEightDigits);
    if (upper < kEightDigits) {
      return Write8(lower, WriteFirst8(static_cast<std::uint32_t>(upper), place));
    }
    place = WriteFirst4(static_cast<std::uint32_t>(upper / kEightDigits), place);
    return Write8(lower, Write8(static_cast<std::uint32_t>(upper % kEightDigits), place));
  }
};

}  // namespace Kestrel::AutoCli
