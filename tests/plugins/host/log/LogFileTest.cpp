// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/log/LogFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <string>
#include <vector>

#include "kestrel/KestrelException.h"
#include "plugins/host/support/PlainUser.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Testing::ScopedTempDir;
using ::testing::ThrowsMessage;

std::vector<std::string> LinesFromTheEnd(const std::string& path) {
  std::vector<std::string> lines;
  LogFile file(path);
  while (const auto line = file.PreviousLine()) {
    lines.emplace_back(*line);
  }
  EXPECT_EQ(file.PreviousLine(), std::nullopt);
  return lines;
}

std::vector<std::string> LinesOf(const std::string& text) {
  const ScopedTempDir folder;
  return LinesFromTheEnd(folder.Write("log", text));
}

TEST(LogFileTest, HasItsLinesFromTheLastToTheFirst) {
  EXPECT_THAT(LinesOf("one\ntwo\nthree\n"), ElementsAre("three", "two", "one"));
}

TEST(LogFileTest, NeedsNoNewlineAtItsEnd) {
  EXPECT_THAT(LinesOf("one\ntwo"), ElementsAre("two", "one"));
  EXPECT_THAT(LinesOf("one"), ElementsAre("one"));
}

TEST(LogFileTest, MayHaveEmptyLines) {
  EXPECT_THAT(LinesOf(""), IsEmpty());
  EXPECT_THAT(LinesOf("\n"), ElementsAre(""));
  EXPECT_THAT(LinesOf("\n\na\n\n"), ElementsAre("", "a", "", ""));
}

TEST(LogFileTest, KeepsEveryByte) {
  const std::string odd("\0\xFF\r\t\x1B", 5);
  EXPECT_THAT(LinesOf("a\n" + odd + "\n"), ElementsAre(odd, "a"));
}

TEST(LogFileTest, JoinsLinesAcrossBlocks) {
  // Sizes around multiples of a block, where a line feed is the first or last byte.
  for (const std::size_t size : {65534u, 65535u, 65536u, 65537u, 131071u, 131072u, 131073u}) {
    const std::string a(size, 'a');
    const std::string b(size, 'b');
    EXPECT_TRUE(LinesOf(a + "\n" + b + "\nc\n") == std::vector<std::string>({"c", b, a})) << size;
  }
}

TEST(LogFileTest, HasTheLinesThatTacHas) {
  const ScopedTempDir folder;
  std::string text;
  unsigned length = 1;
  while (text.size() < 3000000) {
    length = (length * 1103515245u + 12345u) % 700u;
    text += std::string(length, static_cast<char>('a' + length % 26)) + "\n";
  }
  const std::string path = folder.Write("log", text);
  EXPECT_TRUE(LinesFromTheEnd(path) == Testing::WitnessLines("tac " + path));
}

TEST(LogFileTest, MayHaveALineOfTenMillionBytes) {
  const std::string line(10000000, 'x');
  const auto lines = LinesOf("first\n" + line + "\nlast\n");
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_TRUE(lines[1] == line);
  EXPECT_EQ(lines[2], "first");
}

TEST(LogFileTest, RefusesALineThatHasNoEnd) {
  const ScopedTempDir folder;
  const std::string path = folder.Write("log", "a\n");
  ASSERT_EQ(::truncate(path.c_str(), off_t{1} << 40), 0);  // the file needs no space
  EXPECT_THAT(
      [&] { LinesFromTheEnd(path); },
      ThrowsMessage<KestrelException>("Unable to read " + path + ": A line is longer than 64 MiB"));
}

TEST(LogFileTest, IgnoresLinesThatAreWrittenAfterItWasOpened) {
  const ScopedTempDir folder;
  const std::string path = folder.Write("log", "one\ntwo\n");
  LogFile file(path);
  std::ofstream(path, std::ios::app) << "three\n";
  EXPECT_EQ(file.PreviousLine(), "two");
  EXPECT_EQ(file.PreviousLine(), "one");
  EXPECT_EQ(file.PreviousLine(), std::nullopt);
}

TEST(LogFileTest, ReportsAFileThatBecomesShorter) {
  const ScopedTempDir folder;
  const std::string path = folder.Write("log", std::string(200000, 'a') + "\nlast\n");
  LogFile file(path);
  EXPECT_EQ(file.PreviousLine(), "last");
  ASSERT_EQ(::truncate(path.c_str(), 10), 0);
  EXPECT_THAT([&] { file.PreviousLine(); },
              ThrowsMessage<KestrelException>("Unable to read " + path +
                                              ": It became shorter while it was read"));
}

TEST(LogFileTest, ReportsTheErrorOfTheSystem) {
  const ScopedTempDir folder;
  const std::string absent = folder.GetPath("absent");
  EXPECT_THAT(
      [&] { LogFile file(absent); },
      ThrowsMessage<KestrelException>("Unable to read " + absent + ": No such file or directory"));
  EXPECT_THAT(
      [&] { LogFile file(folder.GetPath()); },
      ThrowsMessage<KestrelException>("Unable to read " + folder.GetPath() + ": Is a directory"));
}

TEST(LogFileTest, ReportsAFileThatMayNotBeRead) {
  const ScopedTempDir folder;
  ASSERT_EQ(::chmod(folder.GetPath().c_str(), 0755), 0);
  const std::string path = folder.Write("log", "a\n");
  ASSERT_EQ(::chmod(path.c_str(), 0), 0);
  const Testing::PlainUser user;
  EXPECT_THAT([&] { LogFile file(path); },
              ThrowsMessage<KestrelException>("Unable to read " + path + ": Permission denied"));
}

TEST(LogFileTest, RefusesPipesDevicesAndFilesOfTheKernel) {
  const ScopedTempDir folder;
  const std::string pipe = folder.GetPath("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  for (const std::string& path : {pipe, std::string("/dev/zero"), std::string("/dev/null"),
                                  std::string("/proc/kmsg"), std::string("/proc/version")}) {
    EXPECT_THAT([&] { LogFile file(path); },
                ThrowsMessage<KestrelException>("Unable to read " + path + ": Not a regular file"));
  }
}

TEST(LogFileTest, MayBeNamedByAnyPath) {
  const ScopedTempDir folder;
  const std::string odd = folder.Write("it's \"a\" {log}\n$(x)", "a\n");
  EXPECT_THAT(LinesFromTheEnd(odd), ElementsAre("a"));
}

}  // namespace
}  // namespace Kestrel::Host
