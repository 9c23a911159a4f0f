// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/network/NumberNames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr NumberName kNames[] = {{0, "none"}, {4, "four"}, {1, "one"}, {0x80000000, "last"}};

TEST(NumberNamesTest, NamesANumberOfTheTable) {
  EXPECT_EQ(NameOf(kNames, 0), "none");
  EXPECT_EQ(NameOf(kNames, 1), "one");
  EXPECT_EQ(NameOf(kNames, 0x80000000), "last");
}

TEST(NumberNamesTest, WritesAnotherNumberInDigits) {
  EXPECT_EQ(NameOf(kNames, 2), "2");
  EXPECT_EQ(NameOf(kNames, 5), "5") << "numbers are no sets of bits";
  EXPECT_EQ(NameOf(kNames, 0xffffffff), "4294967295");
}

TEST(NumberNamesTest, NamesTheBitsThatAreSetInTheOrderOfTheTable) {
  EXPECT_THAT(NamesOfBits(kNames, 5), ElementsAre("four", "one"));
  EXPECT_THAT(NamesOfBits(kNames, 0x80000002), ElementsAre("last")) << "one bit has no name";
  EXPECT_THAT(NamesOfBits(kNames, 0), IsEmpty());
}

}  // namespace
}  // namespace Kestrel::Host
