// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "kestrel/testing/Golden.h"
#include "kestrel/testing/GoogleTest.h"
#include "support/ScopedEnvironment.h"
#include "support/ScopedTempDir.h"

namespace Kestrel::Testing {
namespace {

using ::testing::ElementsAre;

TEST(ExpectGoldenTest, AcceptsTheSameBytes) {
  const ScopedTempDir folder;
  const std::string text = std::string("a\0b\r\n \n\xff", 8);
  EXPECT_TRUE(Passes(ExpectGolden(text, folder.Write("golden.txt", text))));
}

TEST(ExpectGoldenTest, NamesTheFirstLineThatDiffers) {
  const ScopedTempDir folder;
  const std::string file = folder.Write("golden.txt", "one\ntwo\n");
  EXPECT_THAT(ExpectGolden("one\ntoo\n", file).GetProblems(),
              ElementsAre("line 2 differs from " + file + ": expected 'two', got 'too'"));
  EXPECT_THAT(ExpectGolden("one\ntwo", file).GetProblems(),
              ElementsAre("line 2 differs from " + file + ": expected 'two', got 'two'"));
  EXPECT_FALSE(ExpectGolden("", file));
}

TEST(ExpectGoldenTest, ReportsAMissingFile) {
  EXPECT_THAT(ExpectGolden("", "/no/such.txt").GetProblems(),
              ElementsAre("cannot read /no/such.txt; KESTREL_REWRITE_GOLDEN=1 creates it"));
}

TEST(ExpectGoldenTest, WritesTheFileOnRequest) {
  const ScopedTempDir folder;
  const std::string file = folder.GetPath("new/golden.txt");
  {
    const ScopedEnvironment rewrite("KESTREL_REWRITE_GOLDEN", "1");
    EXPECT_TRUE(Passes(ExpectGolden("text\n", file)));
    EXPECT_FALSE(ExpectGolden("text\n", "/dev/null/golden.txt")) << "a folder that cannot be made";
  }
  EXPECT_TRUE(Passes(ExpectGolden("text\n", file)));
}

}  // namespace
}  // namespace Kestrel::Testing
