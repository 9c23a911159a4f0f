// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/text/Decimal.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstddef>
#include <random>
#include <string>

namespace Kestrel::AutoCli {
namespace {

std::string Write(long value) {
  char place[Decimal::kMaxLength];
  const char* const end = Decimal{value}.WriteTo(place);
  return {place, static_cast<std::size_t>(end - place)};
}

void ExpectWritten(long value) {
  const std::string expected = std::to_string(value);
  EXPECT_EQ(Write(value), expected);
  EXPECT_EQ(Decimal{value}.Length(), expected.size()) << value;
}

TEST(DecimalTest, WritesZeroAndTheLimits) {
  EXPECT_EQ(Write(0), "0");
  EXPECT_EQ(Write(-1), "-1");
  EXPECT_EQ(Write(LONG_MAX), "9223372036854775807");
  EXPECT_EQ(Write(LONG_MIN), "-9223372036854775808");
  EXPECT_EQ(Decimal{0}.Length(), 1u);
  EXPECT_EQ(Decimal{LONG_MAX}.Length(), 19u);
  EXPECT_EQ(Decimal{LONG_MIN}.Length(), Decimal::kMaxLength);
}

TEST(DecimalTest, WritesPowersOfTenAndTheirNeighbours) {
  for (long power = 1; power <= LONG_MAX / 10; power *= 10) {
    for (const long value : {power - 1, power, power + 1, 2 * power, 9 * power}) {
      ExpectWritten(value);
      ExpectWritten(-value);
    }
  }
}

TEST(DecimalTest, WritesPowersOfTwoAndTheirNeighbours) {
  for (int bit = 0; bit < 63; ++bit) {
    for (const long value : {(1L << bit) - 1, 1L << bit, (1L << bit) + 1}) {
      ExpectWritten(value);
      ExpectWritten(-value);
    }
  }
}

TEST(DecimalTest, WritesFourDigitsAtEachPlace) {
  for (long number = 0; number < 10000; ++number) {
    for (const long shift : {1L, 10000L, 100000000L, 1000000000000L}) {
      ASSERT_EQ(Write(number * shift), std::to_string(number * shift));
    }
  }
}

TEST(DecimalTest, WritesRandomNumbersOfEverySize) {
  std::mt19937_64 random(1);
  for (unsigned shift = 0; shift < 64; ++shift) {
    for (int i = 0; i < 100; ++i) {
      ExpectWritten(static_cast<long>(random()) >> shift);
    }
  }
}

TEST(DecimalTest, OverwritesNothingBeyondTheLengthOfTheLongestNumber) {
  for (const long value :
       {0L, -9L, -99999999L, 100000000L, -9999999999999999L, LONG_MAX, LONG_MIN}) {
    std::string place(Decimal::kMaxLength + 8, '#');
    Decimal{value}.WriteTo(place.data());
    EXPECT_EQ(place.substr(Decimal::kMaxLength), "########") << value;
  }
}

}  // namespace
}  // namespace Kestrel::AutoCli
