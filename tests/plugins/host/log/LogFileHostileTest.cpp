// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "kestrel/KestrelException.h"
#include "plugins/host/frame/FileDescriptor.h"
#include "plugins/host/log/LogFile.h"
#include "support/Sanitizer.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

// Logs that no proper program writes, logs that change while they are read, and files that are not
// logs.
namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using Testing::ScopedTempDir;
using ::testing::ThrowsMessage;
using Testing::Witness;

std::vector<std::string> ReadAll(LogFile& file) {
  std::vector<std::string> lines;
  while (const auto line = file.PreviousLine()) {
    lines.emplace_back(*line);
  }
  return lines;
}

std::vector<std::string> LinesIn(const std::string& path) {
  LogFile file(path);
  return ReadAll(file);
}

auto Unreadable(const std::string& path, const std::string& reason) {
  return ThrowsMessage<KestrelException>("Unable to read " + path + ": " + reason);
}

std::string Bytes(const char* text, std::size_t size) { return std::string(text, size); }

// The content of a file, and the lines in it from the last to the first.
struct ContentCase {
  const char* name;
  std::string content;
  std::vector<std::string> lines;
};

const ContentCase kContents[] = {
    {"Empty", "", {}},
    {"ANewline", "\n", {""}},
    {"ThreeNewlines", "\n\n\n", {"", "", ""}},
    {"ALetter", "a", {"a"}},
    {"ALetterAndANewline", "a\n", {"a"}},
    {"ANewlineAndALetter", "\na", {"a", ""}},
    {"NoNewlineAtTheEnd", "one\ntwo", {"two", "one"}},
    {"AnEmptyLineAtTheEnd", "one\n\n", {"", "one"}},
    {"CarriageReturnsBeforeLineFeeds", "one\r\ntwo\r\n", {"two\r", "one\r"}},
    {"CarriageReturnsInsteadOfLineFeeds", "one\rtwo\r", {"one\rtwo\r"}},
    {"ANulByte", Bytes("\0", 1), {Bytes("\0", 1)}},
    {"NulBytesAroundANewline", Bytes("\0\n\0", 3), {Bytes("\0", 1), Bytes("\0", 1)}},
    {"NulBytesInALine", Bytes("a\0b\nc\0", 6), {Bytes("c\0", 2), Bytes("a\0b", 3)}},
    {"NotUtf8", "\xff\xfe\n\xc3\n\xed\xa0\x80\n", {"\xed\xa0\x80", "\xc3", "\xff\xfe"}},
    {"Utf16",
     Bytes("\xff\xfe"
           "a\0\n\0b\0",
           8),
     {Bytes("\0b\0", 3), Bytes("\xff\xfe"
                               "a\0",
                               4)}},
    {"AByteOrderMark",
     "\xef\xbb\xbf"
     "2026-01-01 x\n",
     {"\xef\xbb\xbf"
      "2026-01-01 x"}},
    {"SeparatorsOfUnicode",
     "a\xe2\x80\xa8"
     "b\xc2\x85"
     "c\n",
     {"a\xe2\x80\xa8"
      "b\xc2\x85"
      "c"}},
    {"FormFeedsAndVerticalTabs", "a\f\v\n", {"a\f\v"}},
    {"OnlySpaces", " \n  \n", {"  ", " "}},
    {"ATabAtTheEnd", "a\t\nb\t", {"b\t", "a\t"}},
    {"AControlCharacterAlone", "a\n\x04\nb\n", {"b", "\x04", "a"}},
    {"EscapesForTerminals", "\x1b[2J\x1b]0;x\x07\n", {"\x1b[2J\x1b]0;x\x07"}},
    {"AnArchive", Bytes("\x1f\x8b\x08\0\0\n\0", 7), {Bytes("\0", 1), Bytes("\x1f\x8b\x08\0\0", 5)}},
};

class LogContentTest : public ::testing::TestWithParam<ContentCase> {};

TEST_P(LogContentTest, IsSplitOnlyAtLineFeeds) {
  const ScopedTempDir folder;
  EXPECT_THAT(LinesIn(folder.Write("log", GetParam().content)), ElementsAreArray(GetParam().lines));
}

// Puts the same content far from the end of the file, so that a block boundary may be within it.
TEST_P(LogContentTest, IsTheSameBeforeALongLine) {
  const ScopedTempDir folder;
  for (const std::size_t length : {65530u, 65534u, 65535u, 65536u, 131070u}) {
    const std::string longLine(length, 'x');
    const std::string content = GetParam().content;
    const bool isEnded = content.empty() || content.back() == '\n';
    const auto lines =
        LinesIn(folder.Write("log", content + (isEnded ? "" : "\n") + longLine + "\n"));
    ASSERT_EQ(lines.size(), GetParam().lines.size() + 1) << length;
    EXPECT_TRUE(lines[0] == longLine) << length;
    EXPECT_TRUE(std::equal(lines.begin() + 1, lines.end(), GetParam().lines.begin())) << length;
  }
}

INSTANTIATE_TEST_SUITE_P(Contents, LogContentTest, ::testing::ValuesIn(kContents),
                         [](const auto& test) { return test.param.name; });

TEST(LogFileSizeTest, ALineFeedNearABlockBoundaryEndsALine) {
  const ScopedTempDir folder;
  // A line feed at several distances from a multiple of the block size.
  for (int distance = -3; distance <= 3; ++distance) {
    std::string text(std::size_t{3} << 16, 'y');
    const auto newline = static_cast<std::size_t>((2 << 16) + distance);
    text[newline] = '\n';
    const auto lines = LinesIn(folder.Write("log", text));
    ASSERT_EQ(lines.size(), 2u) << distance;
    EXPECT_EQ(lines[0].size(), text.size() - newline - 1) << distance;
    EXPECT_EQ(lines[1].size(), newline) << distance;
  }
}

TEST(LogFileSizeTest, LinesOfAnyLengthAreThoseOfTac) {
  const ScopedTempDir folder;
  std::string text;
  unsigned seed = 7;
  // Lines of many lengths, from empty ones to lines of several blocks. They contain no NULs, which
  // the shell would drop.
  for (const unsigned bound : {3u, 90u, 5000u, 70000u, 200000u, 2u, 300u}) {
    for (int line = 0; line < 12; ++line) {
      seed = seed * 1664525u + 1013904223u;
      text += std::string((seed >> 8) % bound, static_cast<char>('a' + line)) + "\n";
    }
  }
  const std::string path = folder.Write("log", text);
  EXPECT_TRUE(LinesIn(path) == Testing::WitnessLines("tac '" + path + "'"));
}

TEST(LogFileSizeTest, ALineMayHaveTheGreatestLength) {
  const ScopedTempDir folder;
  const std::string path = folder.Write("log", "first\n");
  // The new bytes are NULs without a line feed.
  ASSERT_EQ(::truncate(path.c_str(), static_cast<off_t>(6 + LogFile::kMaxLineSize)), 0);
  const auto lines = LinesIn(path);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].size(), LogFile::kMaxLineSize);
  EXPECT_EQ(lines[1], "first");
}

TEST(LogFileSizeTest, ALineOfOneByteMoreIsAnError) {
  const ScopedTempDir folder;
  for (const std::string before : {"", "\n", "first\n"}) {
    const std::string path = folder.Write("log", before);
    const std::size_t size = before.size() + LogFile::kMaxLineSize + 1;
    ASSERT_EQ(::truncate(path.c_str(), static_cast<off_t>(size)), 0);
    std::ofstream(path, std::ios::app) << "\nlast\n";
    LogFile file(path);
    EXPECT_EQ(file.PreviousLine(), "last");
    EXPECT_THAT([&] { file.PreviousLine(); }, Unreadable(path, "A line is longer than 64 MiB"));
  }
}

TEST(LogFileSizeTest, AHoleAfterTheLastLineIsALineOfNulBytes) {
  // Such logs exist after a machine has lost power.
  const ScopedTempDir folder;
  const std::string path = folder.Write("log", "one\ntwo\n");
  ASSERT_EQ(::truncate(path.c_str(), 4104), 0);
  EXPECT_THAT(LinesIn(path), ElementsAre(std::string(4096, '\0'), "two", "one"));
}

TEST(LogFileSizeTest, OnlyTheEndOfALongFileIsRead) {
  const ScopedTempDir folder;
  const std::string path = folder.Write("log", "");
  ASSERT_EQ(::truncate(path.c_str(), off_t{1} << 40), 0);  // a tebibyte, without using space
  std::ofstream(path, std::ios::app) << "\nlast\n";
  LogFile file(path);
  EXPECT_EQ(file.PreviousLine(), "last");
}

// ---- changes of a log while it is read

class LogRotationTest : public ::testing::Test {
 protected:
  LogRotationTest() {
    std::string text = "first\n";
    text += std::string(200000, 'm') + "\nlast\n";
    path_ = folder_.Write("log", text);
  }

  const ScopedTempDir folder_;
  std::string path_;
};

TEST_F(LogRotationTest, ARenamedLogIsReadToItsStart) {
  LogFile file(path_);
  EXPECT_EQ(file.PreviousLine(), "last");
  ASSERT_EQ(std::rename(path_.c_str(), folder_.GetPath("log.1").c_str()), 0);
  folder_.Write("log", "the next log\n");
  EXPECT_EQ(ReadAll(file).back(), "first");
}

TEST_F(LogRotationTest, ADeletedLogIsReadToItsStart) {
  LogFile file(path_);
  EXPECT_EQ(file.PreviousLine(), "last");
  ASSERT_EQ(::unlink(path_.c_str()), 0);
  EXPECT_EQ(ReadAll(file).back(), "first");
}

TEST_F(LogRotationTest, AnEmptiedLogIsAnErrorAndNotAShorterList) {
  LogFile file(path_);
  EXPECT_EQ(file.PreviousLine(), "last");
  ASSERT_EQ(::truncate(path_.c_str(), 0), 0);
  EXPECT_THAT([&] { file.PreviousLine(); },
              Unreadable(path_, "It became shorter while it was read"));
}

TEST_F(LogRotationTest, ALogThatWasEmptiedBeforeTheFirstLineIsAnError) {
  LogFile file(path_);
  ASSERT_EQ(::truncate(path_.c_str(), 0), 0);
  EXPECT_THAT([&] { file.PreviousLine(); },
              Unreadable(path_, "It became shorter while it was read"));
}

TEST_F(LogRotationTest, ALogThatGrowsHasTheLinesFromWhenItWasOpened) {
  LogFile file(path_);
  for (int line = 0; line < 1000; ++line) {
    std::ofstream(path_, std::ios::app) << "line " << line << "\n";
  }
  EXPECT_EQ(file.PreviousLine(), "last");
  EXPECT_EQ(ReadAll(file).back(), "first");
}

TEST_F(LogRotationTest, ALineThatIsBeingWrittenIsALine) {
  std::ofstream(path_, std::ios::app) << "half of a li";
  LogFile file(path_);
  std::ofstream(path_, std::ios::app) << "ne\n";
  EXPECT_EQ(file.PreviousLine(), "half of a li");
  EXPECT_EQ(file.PreviousLine(), "last");
}

// ---- files that cannot be logs

TEST(LogPathTest, ALinkIsFollowed) {
  const ScopedTempDir folder;
  folder.Write("log", "a\n");
  const std::string link = folder.GetPath("link");
  ASSERT_EQ(::symlink("log", link.c_str()), 0);
  EXPECT_THAT(LinesIn(link), ElementsAre("a"));
}

TEST(LogPathTest, BrokenLinksAreErrors) {
  const ScopedTempDir folder;
  const std::string lost = folder.GetPath("lost");
  ASSERT_EQ(::symlink("nowhere", lost.c_str()), 0);
  EXPECT_THAT([&] { LinesIn(lost); }, Unreadable(lost, "No such file or directory"));
  const std::string loop = folder.GetPath("loop");
  ASSERT_EQ(::symlink("loop", loop.c_str()), 0);
  EXPECT_THAT([&] { LinesIn(loop); }, Unreadable(loop, "Too many levels of symbolic links"));
}

TEST(LogPathTest, LinksToPipesAndDevicesAreRefused) {
  const ScopedTempDir folder;
  ASSERT_EQ(::mkfifo(folder.GetPath("pipe").c_str(), 0600), 0);
  for (const char* const target : {"pipe", "/dev/zero", "/dev/tty", "/dev/kmsg"}) {
    const std::string link = folder.GetPath("link");
    ::unlink(link.c_str());
    ASSERT_EQ(::symlink(target, link.c_str()), 0);
    EXPECT_THAT([&] { LinesIn(link); }, Unreadable(link, "Not a regular file")) << target;
  }
}

TEST(LogPathTest, ASocketIsRefused) {
  const ScopedTempDir folder;
  const std::string path = folder.GetPath("s");
  const FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM, 0));
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  ASSERT_LT(path.size(), sizeof(address.sun_path));
  std::strcpy(address.sun_path, path.c_str());
  void* const pointer = &address;
  ASSERT_EQ(::bind(socket.Get(), static_cast<const sockaddr*>(pointer), sizeof(address)), 0);
  EXPECT_THAT([&] { LinesIn(path); }, Unreadable(path, "Not a regular file"));
}

TEST(LogPathTest, AFolderIsRefusedHoweverItIsNamed) {
  const ScopedTempDir folder;
  const std::string path = folder.MakeDirectory("logs.d");
  EXPECT_THAT([&] { LinesIn(path); }, Unreadable(path, "Is a directory"));
  EXPECT_THAT([&] { LinesIn(path + "/"); }, Unreadable(path + "/", "Is a directory"));
  EXPECT_THAT([&] { LinesIn("."); }, Unreadable(".", "Is a directory"));
}

TEST(LogPathTest, APathThatContinuesAfterAFileIsAnError) {
  const ScopedTempDir folder;
  const std::string path = folder.Write("log", "a\n");
  EXPECT_THAT([&] { LinesIn(path + "/"); }, Unreadable(path + "/", "Not a directory"));
  EXPECT_THAT([&] { LinesIn(path + "/b"); }, Unreadable(path + "/b", "Not a directory"));
}

TEST(LogPathTest, ANameThatIsTooLongIsAnError) {
  const ScopedTempDir folder;
  const std::string path = folder.GetPath(std::string(256, 'n'));
  EXPECT_THAT([&] { LinesIn(path); }, Unreadable(path, "File name too long"));
  EXPECT_THAT(LinesIn(folder.Write(std::string(255, 'n'), "a\n")), ElementsAre("a"));
}

TEST(LogPathTest, TooManyOpenFilesAreAnError) {
  if (Testing::kIsSanitized) {
    GTEST_SKIP() << "the sanitizer needs descriptors of its own";
  }
  const ScopedTempDir folder;
  const std::string path = folder.Write("log", "a\n");
  struct rlimit limit = {};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
  struct rlimit none = limit;
  none.rlim_cur = 0;
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
  EXPECT_THAT([&] { LinesIn(path); }, Unreadable(path, "Too many open files"));
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
}

TEST(LogPathTest, AFileOfTheKernelIsRefusedUnderAnyName) {
  const ScopedTempDir folder;
  const std::string link = folder.GetPath("link");
  ASSERT_EQ(::symlink("/proc/self/status", link.c_str()), 0);
  EXPECT_THAT([&] { LinesIn(link); }, Unreadable(link, "Not a regular file"));
  EXPECT_THAT([] { LinesIn("/sys/kernel/mm/transparent_hugepage/enabled"); },
              ::testing::Throws<KestrelException>());
}

}  // namespace
}  // namespace Kestrel::Host
