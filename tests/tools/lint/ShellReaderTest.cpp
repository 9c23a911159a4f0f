// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/lint/ShellReader.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace Kestrel::Lint {
namespace {

/// The words of all commands, each in brackets, the commands separated by a bar.
std::string Words(const std::string& line, Shell shell = Shell::Dash) {
  const ShellReading reading = ReadShellLine(line, shell);
  if (!reading.isUnderstood || !reading.isComplete) {
    return reading.isUnderstood ? "wrong" : "unknown";
  }
  std::string text;
  for (const ShellCommand& command : reading.commands) {
    text += text.empty() ? "" : "|";
    for (const ShellWord& word : command.words) {
      text += "[" + word.text + (word.isPattern ? "*" : "") + "]";
    }
  }
  return text;
}

TEST(ShellReaderTest, RemovesQuotesAndBackslashes) {
  EXPECT_EQ(Words("a 'b c' \"d\\\"e\" f\\ g ''"), "[a][b c][d\"e][f g][]");
  EXPECT_EQ(Words("a \"\\x\" '\\' \\\nb"), "[a][\\x][\\][b]");
  EXPECT_EQ(Words("a 'b"), "wrong");
  EXPECT_EQ(Words("a \"b"), "wrong");
}

TEST(ShellReaderTest, SeparatesCommands) {
  EXPECT_EQ(Words("a; b && c | d\ne &"), "[a]|[b]|[c]|[d]|[e]");
  EXPECT_EQ(Words("(a; b) | c"), "[a]|[b]|[c]");
  EXPECT_EQ(Words("; a"), "wrong");
  EXPECT_EQ(Words("a )"), "wrong");
  EXPECT_EQ(Words("a (b)"), "wrong");
  EXPECT_EQ(Words("if a; then b; fi"), "[a]|[b]");
  EXPECT_EQ(Words("{ a; }"), "[a]");
  EXPECT_EQ(Words("{ a"), "wrong");
}

TEST(ShellReaderTest, ReadsCommandsWithinCommands) {
  EXPECT_EQ(Words("a $(b c) \"$(d)\""), "[a][\1][\1]|[b][c]|[d]");
  EXPECT_EQ(Words("a `b c`"), "[a][\1]|[b][c]");
  EXPECT_EQ(Words("a `b \\`c\\` \\\\\\$d \\e`"), "[a][\1]|[b][\1][$d][e]|[c]");
  EXPECT_EQ(Words("a `b \\\"c\\\"` \"`d \\\"e\\\"`\""), "[a][\1][\1]|[b][\"c\"]|[d][e]");
  EXPECT_EQ(Words("a \"\\$(b)`\" c \"\\$(d)`\""), "[a][$(b)\1]|[d]|[ c \1]");
  EXPECT_EQ(Words("a `b"), "wrong");
}

TEST(ShellReaderTest, LeavesOutAssignmentsRedirectionsAndComments) {
  EXPECT_EQ(Words("X=1 Y='2 3' a 2>&1 >b <c d # e"), "[a][d]");
  EXPECT_EQ(Words("X=1 b X=2"), "[b][X=2]");
  EXPECT_EQ(Words("a#b #c\nd"), "[a#b]|[d]");
}

TEST(ShellReaderTest, ExpandsBracesAsBashDoes) {
  EXPECT_EQ(Words("a b{c,d}e {1..3} {x} '{f,g}' {,}", Shell::Bash),
            "[a][bce][bde][1][2][3][{x}][{f,g}]");
  EXPECT_EQ(Words("a {b,{c,d}}", Shell::Bash), "[a][b][c][d]");
  EXPECT_EQ(Words("a {b,c}"), "[a][{b,c}]");
}

TEST(ShellReaderTest, RecognizesPatternsOutsideOfQuotes) {
  EXPECT_EQ(Words("a b? '?' \\? [cd] [c] [ *"), "[a][b?*][?][?][[cd]*][[c]][[][**]");
}

TEST(ShellReaderTest, FindsPatternsThatMatchOptions) {
  const auto mayBeOption = [](const std::string& word) {
    return ReadShellLine("a " + word, Shell::Dash).commands.at(0).words.at(1).mayBeOption;
  };
  for (const char* word : {"*", "''*''", "?a", "''?a", "[-a]b"}) {
    EXPECT_TRUE(mayBeOption(word)) << word;
  }
  for (const char* word : {"'*'", "a*", "'a'*", "?", "[ab]c", "''"}) {
    EXPECT_FALSE(mayBeOption(word)) << word;
  }
}

TEST(ShellReaderTest, GivesUpOnWhatItDoesNotKnow) {
  for (const char* line :
       {"a <<b", "a $((1))", "case a in b) c;; esac", "a ${b:-c}", "a <(b)", "((1))"}) {
    EXPECT_EQ(Words(line), "unknown") << line;
  }
  EXPECT_EQ(Words("a $'b'", Shell::Bash), "unknown");
  EXPECT_EQ(Words("a $'b'", Shell::Dash), "[a][$b]");
}

}  // namespace
}  // namespace Kestrel::Lint
