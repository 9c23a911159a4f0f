// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/HostFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

#include "kestrel/KestrelException.h"
#include "plugins/host/support/PlainUser.h"
#include "support/ScopedTempDir.h"

namespace {

// The number of reads that succeed before all others fail; negative if none fails.
int readsUntilFailure = -1;

}  // namespace

// Replaces the function of the C library, so that reads can fail at the start or in the middle of a
// file.
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
using Testing::PlainUser;
using Testing::ScopedTempDir;
using ::testing::SizeIs;
using ::testing::ThrowsMessage;

TEST(HostFileTest, ReadsAFileOfAnySizeToItsEnd) {
  const ScopedTempDir folder;
  for (const std::size_t size : {0, 1, 4095, 4096, 4097, 300000}) {
    const std::string text(size, 'x');
    EXPECT_THAT(ReadFile(folder.Write("file", text)), Optional(text)) << size;
  }
}

TEST(HostFileTest, AFolderThatCannotBeReadIsNotAnEmptyOne) {
  const ScopedTempDir folder;
  EXPECT_THAT(ReadFolder(folder.GetPath()), Optional(IsEmpty()));
  EXPECT_EQ(ReadFolder(folder.GetPath("absent")), std::nullopt);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(ReadFolder(folder.Write("file", "")), std::nullopt);
  EXPECT_EQ(errno, ENOTDIR);
}

TEST(HostFileTest, ReturnsNothingForAMissingFileAndAFolder) {
  const ScopedTempDir folder;
  EXPECT_EQ(ReadFile(folder.GetPath("absent")), std::nullopt);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(ReadFile(folder.GetPath()), std::nullopt);
  EXPECT_EQ(errno, EISDIR);
}

TEST(HostFileTest, ReturnsNothingForAFileThatCannotBeReadToItsEnd) {
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

TEST(HostFileTest, ReportsWhyARequiredFileCannotBeRead) {
  EXPECT_THAT(
      [] { ReadRequiredFile("/nowhere/at all"); },
      ThrowsMessage<KestrelException>("Unable to read /nowhere/at all: No such file or directory"));
}

TEST(HostFileTest, ListsNamesInByteOrder) {
  const ScopedTempDir folder;
  for (const char* const name : {"b", "a", "Z", ".hidden", "10", "9"}) {
    folder.Write(name, "");
  }
  EXPECT_THAT(ListFolder(folder.GetPath()), ElementsAre(".hidden", "10", "9", "Z", "a", "b"));
  EXPECT_THAT(ListFolder(folder.GetPath("absent")), IsEmpty());
  EXPECT_THAT(ReadFolder(folder.GetPath()), Optional(ListFolder(folder.GetPath())));
}

TEST(HostFileTest, ReadsALinkOfAnyLength) {
  const ScopedTempDir folder;
  for (const std::size_t length : {1, 255, 256, 257, 1000}) {
    const std::string target(length, 't');
    const std::string link = folder.GetPath("link" + std::to_string(length));
    ASSERT_EQ(::symlink(target.c_str(), link.c_str()), 0);
    EXPECT_THAT(ReadLink(link), Optional(target));
  }
  EXPECT_EQ(ReadLink(folder.Write("file", "")), std::nullopt);
}

TEST(HostFileTest, ReadsALineWithoutTheSpaceAroundIt) {
  const ScopedTempDir folder;
  EXPECT_EQ(ReadLine(folder.Write("line", " a b\t\n")), "a b");
  EXPECT_EQ(ReadLine(folder.Write("empty", "")), "");
  EXPECT_EQ(ReadLine(folder.GetPath("absent")), "");
}

TEST(HostFileTest, RequireEntriesAcceptsAFolderWithAnEntry) {
  const ScopedTempDir folder;
  folder.Write("entry", "");
  RequireEntries(folder.GetPath());
}

TEST(HostFileTest, RequireEntriesRefusesAnEmptyOrMissingFolder) {
  const ScopedTempDir folder;
  const std::string start = "Unable to read " + folder.GetPath();
  EXPECT_THAT([&] { RequireEntries(folder.GetPath()); },
              ThrowsMessage<KestrelException>(start + ": nothing is there"));
  EXPECT_THAT([&] { RequireEntries(folder.GetPath("absent")); },
              ThrowsMessage<KestrelException>(start + "/absent: No such file or directory"));
}

TEST(HostFileTest, WhatCannotBeReadIsReported) {
  const ScopedTempDir folder;
  ::chmod(folder.GetPath().c_str(), 0755);
  const std::string file = folder.Write("file", "a");
  folder.MakeDirectory("folder");
  const std::string hidden = folder.GetPath("folder");
  const auto message = [](const std::string& path, const char* reason) {
    return ThrowsMessage<KestrelException>("Unable to read " + path + ": " + reason);
  };
  EXPECT_THAT([&] { ReadOptionalFile(hidden); }, message(hidden, "Is a directory"));
  EXPECT_THAT([&] { ListRequiredFolder(file); }, message(file, "Not a directory"));
  ::chmod(file.c_str(), 0);
  ::chmod(hidden.c_str(), 0);
  const PlainUser user;
  EXPECT_THAT([&] { ReadOptionalFile(file); }, message(file, "Permission denied"));
  EXPECT_THAT([&] { RequireReadable(file); }, message(file, "Permission denied"));
  EXPECT_THAT([&] { ListRequiredFolder(hidden); }, message(hidden, "Permission denied"));
}

TEST(HostFileTest, WhatIsRequiredMustExist) {
  EXPECT_THAT(
      [] { RequireReadable("/nowhere/x"); },
      ThrowsMessage<KestrelException>("Unable to read /nowhere/x: No such file or directory"));
  EXPECT_THAT(
      [] { ListRequiredFolder("/nowhere/x"); },
      ThrowsMessage<KestrelException>("Unable to read /nowhere/x: No such file or directory"));
  RequireReadable("/proc/self/stat");
}

TEST(HostFileTest, RecognizesTheErrorsOfAbsence) {
  for (const int error : {ENOENT, ENOTDIR, ESRCH, ENODEV}) {
    EXPECT_TRUE(IsAbsence(error)) << error;
  }
  for (const int error : {0, EACCES, EPERM, EMFILE, ENFILE, EIO, ENOMEM, EISDIR, ELOOP}) {
    EXPECT_FALSE(IsAbsence(error)) << error;
  }
}

TEST(HostFileTest, ReadsAnyBytes) {
  const ScopedTempDir folder;
  const std::string bytes("\0\xff\n\0", 4);
  EXPECT_THAT(ReadFile(folder.Write("file", bytes)), Optional(bytes));
}

TEST(HostFileTest, ListsNamesOfAnyBytes) {
  const ScopedTempDir folder;
  for (const char* const name : {"a b", "line\nend", "\xff", "...", "-n"}) {
    folder.Write(name, "");
  }
  EXPECT_THAT(ListFolder(folder.GetPath()), ElementsAre("-n", "...", "a b", "line\nend", "\xff"));
}

}  // namespace
}  // namespace Kestrel::Host
