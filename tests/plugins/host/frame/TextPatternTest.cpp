// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/TextPattern.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kestrel/KestrelException.h"

namespace Kestrel::Host {
namespace {

using ::testing::StartsWith;
using ::testing::ThrowsMessage;

TEST(TextPatternTest, LooksAnywhereInAText) {
  EXPECT_TRUE(TextPattern("b+").IsIn("abbc"));
  EXPECT_FALSE(TextPattern("^b").IsIn("abbc"));
  EXPECT_TRUE(TextPattern("").IsIn(""));
  EXPECT_TRUE(TextPattern("\\d{3}$").IsIn("x123"));
}

TEST(TextPatternTest, SaysWhatIsWrongWithAnExpression) {
  EXPECT_THAT([] { TextPattern("(a"); },
              ThrowsMessage<KestrelException>(StartsWith("'(a' is not a regular expression: ")));
}

TEST(TextPatternTest, GivesUpOnASearchWithoutEnd) {
  const TextPattern pattern("(a+a+)+b");
  EXPECT_THAT([&] { pattern.IsIn(std::string(100, 'a')); },
              ThrowsMessage<KestrelException>(
                  "The regular expression '(a+a+)+b' is too costly to look for"));
}

}  // namespace
}  // namespace Kestrel::Host
