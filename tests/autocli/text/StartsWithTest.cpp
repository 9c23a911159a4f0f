// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/text/StartsWith.h"

#include <gtest/gtest.h>

#include <string_view>

namespace Kestrel::AutoCli {
namespace {

TEST(StartsWithTest, ComparesOnlyTheFirstBytes) {
  EXPECT_TRUE(StartsWith("fields:a", "fields:"));
  EXPECT_FALSE(StartsWith("xfields:", "fields:"));
  EXPECT_FALSE(StartsWith("Fields:", "fields:"));
}

TEST(StartsWithTest, AStringStartsWithItself) { EXPECT_TRUE(StartsWith("ab", "ab")); }

TEST(StartsWithTest, AShorterStringDoesNotStartWithALongerOne) {
  EXPECT_FALSE(StartsWith("ab", "abc"));
  EXPECT_FALSE(StartsWith("", "a"));
}

TEST(StartsWithTest, EveryStringStartsWithTheEmptyOne) {
  EXPECT_TRUE(StartsWith("a", ""));
  EXPECT_TRUE(StartsWith("", ""));
}

TEST(StartsWithTest, ComparesBytesAfterANul) {
  EXPECT_FALSE(StartsWith(std::string_view("a\0b", 3), std::string_view("a\0c", 3)));
}

}  // namespace
}  // namespace Kestrel::AutoCli
