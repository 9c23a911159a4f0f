// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/log/LogLevel.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cstddef>
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

TEST(LogLevelTest, RejectsAnyOtherString) {
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

TEST(LogLevelTest, RefusesAnIncompleteOrInvalidPriority) {
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

constexpr Guess kTellingWords[] = {{"emerg", 0},   {"emergency", 0}, {"panic", 0},   {"alert", 1},
                                   {"crit", 2},    {"critical", 2},  {"fatal", 2},   {"err", 3},
                                   {"error", 3},   {"failed", 3},    {"failure", 3}, {"warn", 4},
                                   {"warning", 4}, {"notice", 5},    {"debug", 7}};

// Lines are examined in blocks. A word may be anywhere in a block, or at the end of a line.
TEST(LogLevelTest, FindsEveryWordAtEveryPlace) {
  for (const Guess& word : kTellingWords) {
    for (std::size_t before = 0; before < 40; ++before) {
      for (const std::size_t after : {0, 1, 2, 15, 16, 40}) {
        const std::string line = std::string(before, '.') + word.line + std::string(after, ' ');
        EXPECT_EQ(GuessLevel(line), word.level) << line;
      }
    }
  }
}

TEST(LogLevelTest, IgnoresPartsOfWordsAtEveryPlace) {
  for (const Guess& word : kTellingWords) {
    for (std::size_t before = 0; before < 40; ++before) {
      const std::string start(before, '.');
      for (const char letter : {'x', 'Z', '7', '_', 'a', '0', '9', 'A', 'z'}) {
        EXPECT_EQ(GuessLevel(start + letter + word.line), 6) << word.line;
        EXPECT_EQ(GuessLevel(start + letter + word.line + std::string(20, ' ')), 6) << word.line;
      }
    }
  }
}

TEST(LogLevelTest, AnyByteThatIsNotPartOfAWordSeparatesWords) {
  for (int byte = 0; byte < 256; ++byte) {
    const auto letter = static_cast<char>(byte);
    const bool isPart = byte < 128 && (std::isalnum(byte) != 0 || letter == '_');
    for (const std::size_t before : {0, 1, 14, 15, 16, 17, 31}) {
      const std::string line =
          std::string(before, ' ') + letter + "crit" + letter + "                 ";
      EXPECT_EQ(GuessLevel(line), isPart ? 6 : 2) << byte << " at " << before;
    }
  }
}

TEST(LogLevelTest, UsesTheMostUrgentOfManyWords) {
  std::string line;
  for (int word = 14; word >= 0; --word) {
    line += std::string("a page of data, ") + kTellingWords[word].line + " and so on; ";
    EXPECT_EQ(GuessLevel(line), kTellingWords[word].level) << line;
  }
}

TEST(LogLevelTest, IsThatOfThePriorityRegardlessOfWords) {
  EXPECT_EQ(GuessLevel("<30>disk error"), 6);
  EXPECT_EQ(GuessLevel("<3>[   12.345678] fine"), 3);
}

}  // namespace
}  // namespace Kestrel::Host
