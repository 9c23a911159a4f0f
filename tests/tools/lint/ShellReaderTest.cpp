// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/lint/ShellReader.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace Kestrel::Lint {
namespace {

/// Returns the words of all commands. Each word is in brackets, with a star if it is a pattern, and
/// a bar separates two commands. Returns "unknown" for a line that the reader does not understand,
/// and "wrong" for one with a syntax error.
std::string Words(const std::string& line, Shell shell = Shell::Dash) {
  const ShellReading reading = ReadShellLine(line, shell);
  if (!reading.isUnderstood || !reading.isCorrect) {
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

TEST(ShellReaderTest, ExpectsACommandAfterEachOperator) {
  for (const char* line : {"a |", "a && # b", "(a ||)", "a | ; b", "()", "( \n )", "{ }", "{ a | }",
                           "a | ! b", "a ;; b", "(a) b", "(a) (b)", "(a) { b; }"}) {
    for (const Shell shell : {Shell::Dash, Shell::Bash}) {
      EXPECT_EQ(Words(line, shell), "wrong") << line;
    }
  }
  EXPECT_EQ(Words("a |\n\n# b\nc"), "[a]|[c]");
  EXPECT_EQ(Words("$() \"$( )\""), "[\1][\1]");
}

TEST(ShellReaderTest, KnowsOperatorsOfBash) {
  EXPECT_EQ(Words("a |& b", Shell::Bash), "[a]|[b]");
  EXPECT_EQ(Words("a |& b"), "wrong");
  EXPECT_EQ(Words("a; !", Shell::Bash), "[a]");
  EXPECT_EQ(Words("a; !"), "wrong");
}

TEST(ShellReaderTest, ReadsKeywordsAtTheBeginningOfACommand) {
  EXPECT_EQ(Words("X=1 { a"), "[{][a]");
  EXPECT_EQ(Words(">x if a"), "[if][a]");
  EXPECT_EQ(Words("! { a; }; { (b) }"), "[a]|[b]");
  EXPECT_EQ(Words("while a; do b; done | c"), "[a]|[b]|[c]");
  EXPECT_EQ(Words("for x in a b; do c; done"), "[for][x][in][a][b]|[c]");
  for (const char* line : {"if a", "a; fi", "if a; then b; done", "{ a; } b", "then a"}) {
    EXPECT_EQ(Words(line), "wrong") << line;
  }
}

// Returns the commands that run although there is a mistake in the line.
std::vector<std::string> CommandsBeforeMistake(const std::string& line, Shell shell) {
  const ShellReading reading = ReadShellLine(line, shell);
  EXPECT_FALSE(reading.isCorrect && reading.isUnderstood) << line;
  std::vector<std::string> names;
  for (const ShellCommand& command : reading.commands) {
    names.push_back(command.words.front().text);
  }
  return names;
}

TEST(ShellReaderTest, KeepsTheCommandsInLinesBeforeAMistake) {
  using testing::ElementsAre;
  for (const Shell shell : {Shell::Dash, Shell::Bash}) {
    EXPECT_THAT(CommandsBeforeMistake("a $(b)\nc; ;", shell), ElementsAre("a", "b"));
    EXPECT_THAT(CommandsBeforeMistake("a\nb \\\n'", shell), ElementsAre("a"));
    EXPECT_THAT(CommandsBeforeMistake("a &&\nb; ;", shell), ElementsAre());
    EXPECT_THAT(CommandsBeforeMistake("{ a\nb; ;", shell), ElementsAre());
    EXPECT_THAT(CommandsBeforeMistake("a $(b\nc", shell), ElementsAre());
    EXPECT_THAT(CommandsBeforeMistake("a\nb; c $((1))", shell), ElementsAre("a"));
  }
}

TEST(ShellReaderTest, ReadsBackquotesWhenTheShellDoes) {
  EXPECT_EQ(Words("a `b\nc (`", Shell::Bash), "[a][\1]|[b]");
  EXPECT_EQ(Words("a `b\nc (`"), "wrong");
  EXPECT_EQ(Words("a `b) c`"), "[a][\1]|[b]");
  EXPECT_EQ(Words("a `b) c`", Shell::Bash), "[a][\1]");
}

TEST(ShellReaderTest, ReadsDollarsBeforeQuotesAndBraces) {
  EXPECT_EQ(Words("a $'b'", Shell::Bash), "[a][b]");
  EXPECT_EQ(Words("a $'b'"), "[a][$b]");
  EXPECT_EQ(Words("a $\"-b\"", Shell::Bash), "[a][-b]");
  EXPECT_EQ(Words("a $\"-b\""), "[a][$-b]");
  EXPECT_EQ(Words("a {b,c}${d,e}", Shell::Bash), "[a][b\1][c\1]");
  EXPECT_EQ(Words("a {b,c}${d,e}"), "unknown");
  EXPECT_EQ(Words("a $${b,c}", Shell::Bash), "[a][\1{b,c}]");
  EXPECT_EQ(Words("a ${b"), "wrong");
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
  for (const char* line : {"a $'\\b'", "a $[1]", "a &>b", "X=(a)"}) {
    EXPECT_EQ(Words(line, Shell::Bash), "unknown") << line;
  }
}

}  // namespace
}  // namespace Kestrel::Lint
