// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/Regex.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kestrel/KestrelException.h"

namespace Kestrel::Host {
namespace {

using ::testing::StartsWith;
using ::testing::ThrowsMessage;

TEST(RegexTest, LooksAnywhereInAText) {
  EXPECT_TRUE(Regex("b+").IsFoundIn("abbc"));
  EXPECT_FALSE(Regex("^b").IsFoundIn("abbc"));
  EXPECT_TRUE(Regex("").IsFoundIn(""));
  EXPECT_TRUE(Regex("\\d{3}$").IsFoundIn("x123"));
}

TEST(RegexTest, SaysWhatIsWrongWithAnExpression) {
  EXPECT_THAT([] { Regex("(a"); },
              ThrowsMessage<KestrelException>(StartsWith("'(a' is not a regular expression: ")));
}

TEST(RegexTest, GivesUpOnASearchWithoutEnd) {
  const Regex pattern("(a+a+)+b");
  EXPECT_THAT([&] { pattern.IsFoundIn(std::string(100, 'a')); },
              ThrowsMessage<KestrelException>(
                  "The regular expression '(a+a+)+b' is too costly to look for"));
}

}  // namespace
}  // namespace Kestrel::Host
