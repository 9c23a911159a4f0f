// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/complete/Completion.h"

#include <gtest/gtest.h>

namespace Kestrel::Testing {

namespace {

using Complete::Completion;
using Complete::Directive;
using Complete::WriteCompletion;

TEST(CompletionTest, WritesALineForEachCandidateAndTheDirectiveLast) {
  Completion completion;
  completion.Add("", "list", "List them.");
  completion.Add("", "get");
  EXPECT_EQ("list\tList them.\nget\n:\n", WriteCompletion(completion));
  EXPECT_EQ(":\n", WriteCompletion(Completion()));
}

TEST(CompletionTest, NamesEachDirective) {
  EXPECT_EQ(":files\n", WriteCompletion({{}, Directive::Files}));
  EXPECT_EQ(":folders\n", WriteCompletion({{}, Directive::Folders}));
  EXPECT_EQ(":nospace\n", WriteCompletion({{}, Directive::NoSpace}));
}

TEST(CompletionTest, KeepsOnlyCandidatesThatBeginWithTheTypedText) {
  Completion completion;
  completion.Add("li", "list");
  completion.Add("li", "get");
  completion.Add("list", "li");
  EXPECT_EQ("list\n:\n", WriteCompletion(completion));
}

TEST(CompletionTest, OmitsWhatALineCannotContain) {
  Completion completion;
  completion.Add("", "a\nb");
  completion.Add("", "a\tb");
  completion.Add("", "a\x1b[2Jb");
  completion.Add("", "");
  completion.Add("", "ok", "two\nlines\tand a tab\n");
  completion.Add("", "ok", "again");
  completion.Add("", "\xc3\xa4 \xff", "\n");
  EXPECT_EQ("ok\ttwo lines and a tab\n\xc3\xa4 \xff\n:\n", WriteCompletion(completion));
}

}  // namespace

}  // namespace Kestrel::Testing
