// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/EditDistance.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>

#include "support/Random.h"

namespace Kestrel::Testing {

namespace {

using Vexil::EditDistance;

// Computes the distance from its definition, without a table.
std::size_t Define(std::string_view left, std::string_view right) {
  if (left.empty() || right.empty()) {
    return left.size() + right.size();
  }
  const std::string_view leftRest = left.substr(1);
  const std::string_view rightRest = right.substr(1);
  std::size_t edits = std::min({Define(leftRest, rightRest) + (left[0] == right[0] ? 0 : 1),
                                Define(leftRest, right) + 1, Define(left, rightRest) + 1});
  if (left.size() > 1 && right.size() > 1 && left[0] == right[1] && left[1] == right[0]) {
    edits = std::min(edits, Define(left.substr(2), right.substr(2)) + 1);
  }
  return edits;
}

TEST(EditDistanceTest, CountsEachEditOnce) {
  EXPECT_EQ(0U, EditDistance("", ""));
  EXPECT_EQ(0U, EditDistance("mount", "mount"));
  EXPECT_EQ(5U, EditDistance("", "mount"));
  EXPECT_EQ(5U, EditDistance("mount", ""));
  EXPECT_EQ(1U, EditDistance("mout", "mount"));
  EXPECT_EQ(1U, EditDistance("mounnt", "mount"));
  EXPECT_EQ(1U, EditDistance("mould", "mound"));
  EXPECT_EQ(1U, EditDistance("muont", "mount"));
  EXPECT_EQ(2U, EditDistance("oumnt", "mount"));
  EXPECT_EQ(3U, EditDistance("kitten", "sitting"));
}

TEST(EditDistanceTest, EditsNoByteTwice) { EXPECT_EQ(3U, EditDistance("ca", "abc")); }

TEST(EditDistanceTest, AgreesWithTheDefinition) {
  Random random;
  for (int round = 0; round < Rounds(500, 20000); ++round) {
    const std::string left = random.Text("abc", 6);
    const std::string right = random.Text("abc", 6);
    EXPECT_EQ(Define(left, right), EditDistance(left, right))
        << "'" << left << "' and '" << right << "': " << random.HowToRepeat();
  }
}

}  // namespace

}  // namespace Kestrel::Testing
