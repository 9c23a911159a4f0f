// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/WordCost.h"

#include <gmock/gmock.h>

#include <optional>
#include <string>

namespace Kestrel::Testing {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Vexil::kEditCost;
using Vexil::NearestNames;
using Vexil::WordCost;

TEST(WordCostTest, GrowsFromTheSameWordToAWordWithTwoEdits) {
  EXPECT_EQ(0, WordCost("mount", "mount"));
  EXPECT_LT(0, WordCost("Mount", "mount"));
  EXPECT_LT(WordCost("Mount", "mount"), WordCost("mounts", "mount"));
  EXPECT_LT(WordCost("mounts", "mount"), WordCost("mout", "mount"));
  EXPECT_LT(WordCost("mout", "mount"), WordCost("netw", "network"));
  EXPECT_EQ(WordCost("netwo", "network"), WordCost("netw", "network"));
  EXPECT_LT(WordCost("netwo", "network"), WordCost("nexwozk", "network"));
}

TEST(WordCostTest, KnowsSingularAndPlural) {
  for (const auto& [plural, word] :
       {std::pair("mounts", "mount"), std::pair("addresses", "address"),
        std::pair("policies", "policy")}) {
    EXPECT_LT(WordCost(plural, word), kEditCost) << plural;
    EXPECT_EQ(WordCost(plural, word), WordCost(word, plural)) << plural;
  }
}

TEST(WordCostTest, AllowsMoreEditsInALongerWord) {
  EXPECT_EQ(kEditCost, WordCost("gt", "get"));
  EXPECT_EQ(std::nullopt, WordCost("gx", "get"));
  EXPECT_EQ(kEditCost, WordCost("storag", "storage"));
  EXPECT_EQ(2 * kEditCost, WordCost("stoarg", "storage"));
  EXPECT_EQ(std::nullopt, WordCost("stxxxge", "storage"));
  EXPECT_EQ(3 * kEditCost, WordCost("konnektion", "connection2"));
}

TEST(WordCostTest, HasNoValueForWordsThatAreNotSimilar) {
  for (const char* word : {"", "x", "nosuch", "ip", "storage"}) {
    EXPECT_EQ(std::nullopt, WordCost(word, "mount")) << word;
  }
  EXPECT_EQ(std::nullopt, WordCost("i", "is"));
  EXPECT_EQ(std::nullopt, WordCost("ne", "network"));
  EXPECT_EQ(std::nullopt, WordCost(std::string(1000000, 'm'), "mount"));
}

TEST(WordCostTest, NearestNamesHaveTheLeastCost) {
  EXPECT_THAT(NearestNames("tabel", {"json", "table", "xml"}, 2), ElementsAre("table"));
  EXPECT_THAT(NearestNames("xet", {"get", "let", "set"}, 2), ElementsAre("get", "let"));
  EXPECT_THAT(NearestNames("Sizes", {"sizes", "sized"}, 2), ElementsAre("sizes"));
  EXPECT_THAT(NearestNames("nosuch", {"json", "table", "xml"}, 2), IsEmpty());
}

}  // namespace

}  // namespace Kestrel::Testing
