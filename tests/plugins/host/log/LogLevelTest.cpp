// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/log/LogLevel.h"

#include <gtest/gtest.h>

#include <string>

namespace Kestrel::Host {
namespace {

TEST(LogLevelTest, HasANameAndADigit) {
  for (int level = 0; level <= kLowestLevel; ++level) {
    EXPECT_EQ(ParseLevel(LevelName(level)), level);
    EXPECT_EQ(ParseLevel(std::to_string(level)), level);
  }
  EXPECT_STREQ(LevelName(0), "emerg");
  EXPECT_STREQ(LevelName(7), "debug");
}

TEST(LogLevelTest, IsNamedInAnyCaseAndAsPeopleSpellIt) {
  EXPECT_EQ(ParseLevel("ERR"), 3);
  EXPECT_EQ(ParseLevel("Error"), 3);
  EXPECT_EQ(ParseLevel("warn"), 4);
  EXPECT_EQ(ParseLevel("WARNING"), 4);
  EXPECT_EQ(ParseLevel("panic"), 0);
  EXPECT_EQ(ParseLevel("emergency"), 0);
  EXPECT_EQ(ParseLevel("Critical"), 2);
  EXPECT_EQ(ParseLevel("informational"), 6);
}

TEST(LogLevelTest, RejectsEveryOtherString) {
  for (const char* const text : {"", "8", "-1", "07", "3 ", "er", "errors", "failed", "warn\n"}) {
    EXPECT_EQ(ParseLevel(text), std::nullopt) << text;
  }
}

TEST(LogLevelTest, IsReadFromAPriority) {
  const auto priority = ReadPriority("<30>text");
  ASSERT_TRUE(priority.has_value());
  EXPECT_EQ(priority->level, 6);
  EXPECT_EQ(priority->facility, 3);
  EXPECT_EQ(priority->size, 4u);
  EXPECT_EQ(ReadPriority("<191>")->level, 7);
}

TEST(LogLevelTest, NeedsAWholePriority) {
  for (const char* const text : {"", "<", "<>", "<3", "<30", "<x>", "<-1>", "< 3>", "<1910>"}) {
    EXPECT_FALSE(ReadPriority(text).has_value()) << text;
  }
}

struct Guess {
  const char* line;
  int level;
};

TEST(LogLevelTest, IsGuessedFromTheMostUrgentWord) {
  for (const Guess& guess : {
           Guess{"", 6},
           Guess{"all is well", 6},
           Guess{"kernel: Kernel PANIC - not syncing", 0},
           Guess{"[alert] warning", 1},
           Guess{"a fatal thing", 2},
           Guess{"disk error", 3},
           Guess{"Job failed.", 3},
           Guess{"level=warn msg=\"x\"", 4},
           Guess{"WARNING: old", 4},
           Guess{"notice", 5},
           Guess{"INFO debug is on", 6},
           Guess{"debug", 7},
       }) {
    EXPECT_EQ(GuessLevel(guess.line), guess.level) << guess.line;
  }
}

TEST(LogLevelTest, IsNotGuessedFromPartsOfWords) {
  EXPECT_EQ(GuessLevel("errors panicking error_log alerted no_error debugging"), 6);
}

TEST(LogLevelTest, IsThatOfThePriorityRegardlessOfWords) {
  EXPECT_EQ(GuessLevel("<30>disk error"), 6);
  EXPECT_EQ(GuessLevel("<3>[   12.345678] fine"), 3);
}

}  // namespace
}  // namespace Kestrel::Host
