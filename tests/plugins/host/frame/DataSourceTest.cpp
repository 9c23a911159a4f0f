// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/DataSource.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

#include "kestrel/KestrelException.h"
#include "support/ScopedTempDir.h"

namespace {

// How many reads of this program still succeed; none fails while it is negative.
int readsUntilFailure = -1;

}  // namespace

// Stands before the C library's, so that a read can fail in the middle of a file.
extern "C" ssize_t read(int file, void* buffer, size_t size) {
  if (readsUntilFailure == 0) {
    errno = EIO;
    return -1;
  }
  if (readsUntilFailure > 0) {
    --readsUntilFailure;
  }
  return ::syscall(SYS_read, file, buffer, size);
}

namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Optional;
using Testing::ScopedTempDir;
using ::testing::SizeIs;
using ::testing::ThrowsMessage;

TEST(DataSourceTest, ReadsAFileOfAnySizeToItsEnd) {
  const ScopedTempDir folder;
  for (const std::size_t size : {0, 1, 4095, 4096, 4097, 300000}) {
    const std::string text(size, 'x');
    EXPECT_THAT(ReadFile(folder.Write("file", text)), Optional(text)) << size;
  }
}

TEST(DataSourceTest, ReadsNothingFromWhatIsNoFile) {
  const ScopedTempDir folder;
  EXPECT_EQ(ReadFile(folder.GetPath("absent")), std::nullopt);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(ReadFile(folder.GetPath()), std::nullopt);
  EXPECT_EQ(errno, EISDIR);
}

TEST(DataSourceTest, APartOfAFileIsNotTheFile) {
  const ScopedTempDir folder;
  const std::string path = folder.Write("file", std::string(10'000, 'x'));
  ASSERT_THAT(ReadFile(path), Optional(SizeIs(10'000)));
  for (int good = 0; good < 3; ++good) {
    readsUntilFailure = good;
    const auto text = ReadFile(path);
    const int error = errno;
    readsUntilFailure = -1;
    EXPECT_EQ(text, std::nullopt) << good;
    EXPECT_EQ(error, EIO) << good;
  }
}

TEST(DataSourceTest, SaysWhyANeededFileCannotBeRead) {
  EXPECT_THAT(
      [] { ReadNeededFile("/nowhere/at all"); },
      ThrowsMessage<KestrelException>("Unable to read /nowhere/at all: No such file or directory"));
}

TEST(DataSourceTest, ListsNamesInByteOrder) {
  const ScopedTempDir folder;
  for (const char* const name : {"b", "a", "Z", ".hidden", "10", "9"}) {
    folder.Write(name, "");
  }
  EXPECT_THAT(ListFolder(folder.GetPath()), ElementsAre(".hidden", "10", "9", "Z", "a", "b"));
  EXPECT_THAT(ListFolder(folder.GetPath("absent")), IsEmpty());
}

TEST(DataSourceTest, FollowsALinkOfAnyLength) {
  const ScopedTempDir folder;
  for (const std::size_t length : {1, 255, 256, 257, 1000}) {
    const std::string target(length, 't');
    const std::string link = folder.GetPath("link" + std::to_string(length));
    ASSERT_EQ(::symlink(target.c_str(), link.c_str()), 0);
    EXPECT_THAT(ReadLink(link), Optional(target));
  }
  EXPECT_EQ(ReadLink(folder.Write("file", "")), std::nullopt);
}

TEST(DataSourceTest, ReadsNumbersThatAreTheWholeText) {
  EXPECT_THAT(ParseNumber("0"), Optional(0L));
  EXPECT_THAT(ParseNumber(" 12\n"), Optional(12L));
  EXPECT_THAT(ParseNumber("-7"), Optional(-7L));
  EXPECT_THAT(ParseNumber("9223372036854775807"), Optional(9223372036854775807L));
  for (const char* const text : {"", " ", "-", "+1", "1x", "1 2", "0x1", "9223372036854775808"}) {
    EXPECT_EQ(ParseNumber(text), std::nullopt) << text;
  }
}

TEST(DataSourceTest, ReadsNumberLists) {
  EXPECT_THAT(ParseNumberList("0\n"), ElementsAre(0));
  EXPECT_THAT(ParseNumberList("0-2,5,8-9\n"), ElementsAre(0, 1, 2, 5, 8, 9));
  EXPECT_THAT(ParseNumberList("\n"), IsEmpty());
  EXPECT_THAT(ParseNumberList("x,3,4-,-,5-4,6"), ElementsAre(3, 6));
  EXPECT_THAT(ParseNumberList("0-9223372036854775807,1"), ElementsAre(1));
}

TEST(DataSourceTest, SplitsKeepingEmptyPieces) {
  EXPECT_THAT(Split("a,,b,", ','), ElementsAre("a", "", "b", ""));
  EXPECT_THAT(Split("", ','), ElementsAre(""));
}

TEST(DataSourceTest, SplitsWordsAndLines) {
  EXPECT_THAT(SplitWords("  a\tb \n c"), ElementsAre("a", "b", "c"));
  EXPECT_THAT(SplitWords(" \n"), IsEmpty());
  EXPECT_THAT(SplitLines("a\n\nb\n"), ElementsAre("a", "", "b"));
  EXPECT_THAT(SplitLines("a\nb"), ElementsAre("a", "b"));
  EXPECT_THAT(SplitLines(""), IsEmpty());
}

TEST(DataSourceTest, TrimsBothEnds) {
  EXPECT_EQ(Trim(" \ta b\r\n"), "a b");
  EXPECT_EQ(Trim(" \n"), "");
  EXPECT_EQ(Trim(""), "");
}

TEST(DataSourceTest, MakesOutsideTextSafeToPrint) {
  EXPECT_EQ(OutsideText("plain \xc3\xa9")->GetValue(), "plain \xc3\xa9");
  EXPECT_EQ(OutsideText("a\nb\x1b[2J\x7f\t")->GetValue(), "a\\x0ab\\x1b[2J\\x7f\\x09");
  EXPECT_EQ(OutsideText("\xc2\x9b")->GetValue(), "\\xc2\\x9b") << "a terminal's command in UTF-8";
  EXPECT_EQ(OutsideText("\xc2\xa0")->GetValue(), "\xc2\xa0");
  EXPECT_EQ(OutsideText("bad \xff\xc3")->GetValue(), "bad \\xff\\xc3");
  EXPECT_EQ(OutsideText(std::string_view("a\0b", 3))->GetValue(), "a\\x00b");
  EXPECT_EQ(OutsideText("")->GetValue(), "");
}

TEST(DataSourceTest, KeepsLinesAndTabsWhereATextHasThem) {
  EXPECT_EQ(OutsideLines("a\tb\nc\r\x1b")->GetValue(), "a\tb\nc\\x0d\\x1b");
}

}  // namespace
}  // namespace Kestrel::Host
