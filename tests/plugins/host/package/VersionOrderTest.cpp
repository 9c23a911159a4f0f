// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "plugins/host/package/DebianVersion.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

// Compares the order of versions with dpkg's order. One shell compares many pairs.
namespace Kestrel::Host {
namespace {

using Testing::ScopedTempDir;
using Testing::WitnessLines;

char Sign(int difference) { return difference < 0 ? '<' : difference > 0 ? '>' : '='; }

using Pair = std::pair<std::string, std::string>;

// Returns "<", "=" or ">" for each pair, according to dpkg.
std::vector<std::string> AskDpkg(const std::vector<Pair>& pairs) {
  std::string input;
  for (const auto& [left, right] : pairs) {
    input += left + " " + right + "\n";
  }
  const ScopedTempDir folder;
  return WitnessLines(
      "while read -r a b; do if dpkg --compare-versions \"$a\" lt \"$b\"; then echo '<'; "
      "elif dpkg --compare-versions \"$a\" eq \"$b\"; then echo '='; else echo '>'; fi; done <'" +
      folder.Write("pairs", input) + "'");
}

void ExpectTheOrderOfDpkg(const std::vector<Pair>& pairs) {
  const auto signs = AskDpkg(pairs);
  ASSERT_EQ(signs.size(), pairs.size());
  for (std::size_t index = 0; index < pairs.size(); ++index) {
    const auto& [left, right] = pairs[index];
    EXPECT_EQ(std::string(1, Sign(CompareVersions(left, right))), signs[index])
        << left << " and " << right;
  }
}

struct OrderCase {
  const char* name;
  std::vector<Pair> pairs;
};

const OrderCase kOrders[] = {
    {"Tilde",
     {{"1.0~", "1.0"},
      {"1.0~~", "1.0~"},
      {"1.0~~a", "1.0~"},
      {"1.0~rc1", "1.0"},
      {"1.0~rc1", "1.0~rc2"},
      {"1.0~rc10", "1.0~rc9"},
      {"1.0~-1", "1.0-1"},
      {"1.0-1~", "1.0-1"},
      {"1.0-1~bpo12+1", "1.0-1"},
      {"1.0~+", "1.0~"},
      {"1~1", "1~a"},
      {"1~", "1~0"}}},
    {"Epoch",
     {{"0:1.0", "1.0"},
      {"1:0", "99"},
      {"2:1", "10:1"},
      {"1:1.0-1", "1:1.0-2"},
      {"0:0", "0"},
      {"00:1", "1"},
      {"1:1:1", "1:1:2"}}},
    {"Revision",
     {{"1.0", "1.0-0"},
      {"1.0-0", "1.0-00"},
      {"1.0-1", "1.0"},
      {"1.0-1-1", "1.0-1"},
      {"1-0-2", "1-1"},
      {"1.0-1+b1", "1.0-1"},
      {"1.0-1+deb12u1", "1.0-1+b1"},
      {"1.0-1.1", "1.0-1"},
      {"1.0-a", "1.0-1"},
      {"1.0-1a", "1.0-1+"}}},
    {"LettersAndSigns",
     {{"1a", "1"},
      {"1a", "1+"},
      {"1.", "1a"},
      {"1+", "1."},
      {"1A", "1a"},
      {"1z", "1A"},
      {"1.a", "1.1"},
      {"1..1", "1.1"},
      {"1.+1", "1.-1"},
      {"1+-1", "1-1"}}},
    {"Numbers",
     {{"1.01", "1.1"},
      {"1.010", "1.10"},
      {"1.9", "1.10"},
      {"1.09", "1.9"},
      {"0", "00"},
      {"1.0", "1"},
      {"1.0", "1."},
      {"1.0.0", "1.0"},
      {"20261122", "9"},
      {"18446744073709551616", "18446744073709551615"},
      {"340282366920938463463374607431768211456", "340282366920938463463374607431768211455"}}},
    {"WhatDistributionsUse",
     {{"1.21.22", "1.21.1ubuntu2"},
      {"2.36-9+deb12u14", "2.36-9+deb12u9"},
      {"1:9.2p1-2+deb12u7", "1:9.2p1-2"},
      {"5.10.0-1~exp1", "5.10.0-1"},
      {"6.1.170-3", "6.1.1700-1"},
      {"0~20210102.1", "0~20210102"},
      {"3.0.19-1~deb12u2", "3.0.19-1"},
      {"1.0+git20200101.abcdef-1", "1.0+git20200101.abcdeg-1"},
      {"2:102.12+LibO7.4.7-1+deb12u8", "2:102.12+LibO7.4.7-1+deb12u10"},
      {"1.8.13p5-1", "1.8.13-1"},
      {"7.88.1-10+deb12u14", "7.88.1-10+deb12u8"},
      {"9.52~dfsg-1", "9.52-1"}}},
};

class VersionOrderTest : public ::testing::TestWithParam<OrderCase> {};

TEST_P(VersionOrderTest, AgreesWithDpkg) {
  std::vector<Pair> pairs = GetParam().pairs;
  for (const auto& [left, right] : GetParam().pairs) {
    pairs.emplace_back(right, left);
    pairs.emplace_back(left, left);
  }
  ExpectTheOrderOfDpkg(pairs);
}

INSTANTIATE_TEST_SUITE_P(Pairs, VersionOrderTest, ::testing::ValuesIn(kOrders),
                         [](const auto& test) { return test.param.name; });

/// Makes versions that no maintainer would choose. They are the same in each run.
class VersionMaker {
 public:
  std::string Next() {
    static const std::string kLetters = "0019aZ.+~-";
    std::string version(1, static_cast<char>('0' + Random(3)));
    for (unsigned length = Random(7); length > 0; --length) {
      version += kLetters[Random(static_cast<unsigned>(kLetters.size()))];
    }
    // A revision must not be empty.
    version += version.back() == '-' ? "1" : "";
    return (Random(4) == 0 ? std::to_string(Random(3)) + ":" : "") + version;
  }

 private:
  unsigned Random(unsigned bound) {
    state_ = state_ * 1664525u + 1013904223u;
    return (state_ >> 16) % bound;
  }

  unsigned state_ = 20261122;
};

TEST(VersionPropertyTest, RandomVersionsHaveTheOrderOfDpkg) {
  VersionMaker maker;
  std::vector<Pair> pairs;
  for (int count = 0; count < 400; ++count) {
    const std::string left = maker.Next();
    pairs.emplace_back(left, maker.Next());
  }
  ExpectTheOrderOfDpkg(pairs);
}

TEST(VersionPropertyTest, TheOrderIsTotal) {
  VersionMaker maker;
  std::vector<std::string> versions;
  for (int count = 0; count < 120; ++count) {
    versions.push_back(maker.Next());
  }
  for (const std::string& one : versions) {
    EXPECT_EQ(CompareVersions(one, one), 0) << one;
    for (const std::string& two : versions) {
      const char sign = Sign(CompareVersions(one, two));
      const char opposite = sign == '<' ? '>' : sign == '>' ? '<' : '=';
      ASSERT_EQ(Sign(CompareVersions(two, one)), opposite) << one << " and " << two;
      for (const std::string& three : versions) {
        if (sign != '>' && CompareVersions(two, three) <= 0) {
          ASSERT_LE(CompareVersions(one, three), 0) << one << ", " << two << ", " << three;
        }
      }
    }
  }
}

TEST(VersionPropertyTest, VersionsHaveTheOrderOfSortV) {
  std::vector<std::string> versions;
  std::string input;
  for (int count = 0; count < 60; ++count) {
    const std::string part = std::to_string(count * 7919 % 61);
    versions.push_back(part + "." + std::to_string(count % 5) + "-" + std::to_string(count % 3));
    input += versions.back() + "\n";
  }
  std::sort(versions.begin(), versions.end(), [](const std::string& one, const std::string& two) {
    return CompareVersions(one, two) < 0;
  });
  const ScopedTempDir folder;
  EXPECT_EQ(versions, WitnessLines("sort -V '" + folder.Write("versions", input) + "'"));
}

}  // namespace
}  // namespace Kestrel::Host
