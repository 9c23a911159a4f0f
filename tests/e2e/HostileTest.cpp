// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Extreme input: very long lines, very many words, arbitrary bytes.

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "e2e/Plugins.h"
#include "support/VexilRun.h"

namespace Kestrel::Testing {

namespace {

using ::testing::EndsWith;
using ::testing::StartsWith;

TEST(HostileTest, ALineOfTenMegabytesIsHandled) {
  const std::string text(10 * 1024 * 1024, 'x');
  const VexilResult result =
      Try({}, {"--input=STDIN"}).WithInput("try say --text " + text + "\n").Run();
  EXPECT_TRUE(result.out == text + "\n");
  EXPECT_EQ("", result.err);
  EXPECT_EQ(0, result.status);
}

TEST(HostileTest, AnUnknownWordOfTenMegabytesIsReported) {
  const std::string word(10 * 1024 * 1024, 'x');
  const VexilResult result = VexilRun({"--input=STDIN"}).WithInput(word).Run();
  EXPECT_EQ("", result.out);
  EXPECT_THAT(result.err, StartsWith("Unable to find a command or namespace with the name 'xxx"));
  EXPECT_EQ(1, result.status);
}

TEST(HostileTest, AHundredThousandTokensAreHandled) {
  std::string line = "try say --text kept";
  for (int i = 0; i < 100000; ++i) {
    line += " x";
  }
  const VexilResult result = Try({}, {"--input=STDIN"}).WithInput(line).Run();
  EXPECT_EQ("", result.out);
  EXPECT_THAT(result.err,
              StartsWith("Errors: \nFound Extra non-parameter arguments at the end of input: "
                         "'x' 'x' "));
  EXPECT_THAT(result.err, EndsWith("'x' 'x' \n"));
  EXPECT_EQ(1, result.status);
}

TEST(HostileTest, TenThousandArgumentsAreHandled) {
  std::vector<std::string> words = {"try", "say"};
  for (int i = 0; i < 10000; ++i) {
    words.push_back("--text=" + std::to_string(i));
  }
  const VexilResult result = Try(words).Run();
  EXPECT_EQ("", result.out);
  EXPECT_EQ(
      "Errors: \n"
      "Found multiple values for text this parameter can only accept a single value.\n",
      result.err);
  EXPECT_EQ(1, result.status);
}

TEST(HostileTest, AHundredThousandLinesAreHandled) {
  std::string lines;
  for (int i = 0; i < 100000; ++i) {
    lines += "# " + std::to_string(i) + "\n\n";
  }
  const VexilResult result = Try({}, {"--input=STDIN"}).WithInput(lines + "try say -t x").Run();
  EXPECT_EQ("x\n", result.out);
  EXPECT_EQ(0, result.status);
}

TEST(HostileTest, ANulWithinALineIsAByteLikeAnyOther) {
  const std::string line("try say --text=a\0b\0\n", 20);
  const VexilResult result = Try({}, {"--input=STDIN"}).WithInput(line).Run();
  EXPECT_EQ(std::string("a\0b\0\n", 5), result.out);
  EXPECT_EQ("", result.err);
  EXPECT_EQ(0, result.status);
}

TEST(HostileTest, BytesThatAreNotTextPassThrough) {
  std::string bytes;
  for (int byte = 1; byte < 256; ++byte) {
    bytes += static_cast<char>(byte);
  }
  const VexilResult result = Try({"try", "say", "--text=" + bytes}).Run();
  EXPECT_EQ(bytes + "\n", result.out);
  EXPECT_EQ("", result.err);
  EXPECT_EQ(0, result.status);
}

TEST(HostileTest, ACarriageReturnBelongsToTheWord) {
  const VexilResult result = Try({}, {"--input=STDIN"}).WithInput("try say --text x\r\n").Run();
  EXPECT_EQ("x\r\n", result.out);
  EXPECT_EQ(0, result.status);
}

}  // namespace

}  // namespace Kestrel::Testing
