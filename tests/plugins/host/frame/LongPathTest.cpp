// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/LongPath.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <climits>
#include <optional>
#include <string>

#include "support/ScopedTempDir.h"

namespace Kestrel::Host {
namespace {

using Testing::ScopedTempDir;

ino_t InodeOf(int file) {
  struct stat status = {};
  EXPECT_EQ(::fstat(file, &status), 0);
  return status.st_ino;
}

// Creates nested folders and returns the inode of the innermost one.
ino_t MakeFolders(const std::string& top, const std::string& name, int count) {
  std::optional<FileDescriptor> folder(std::in_place, ::open(top.c_str(), O_PATH | O_CLOEXEC));
  for (int i = 0; i < count; ++i) {
    EXPECT_EQ(::mkdirat(folder->Get(), name.c_str(), 0755), 0);
    folder.emplace(::openat(folder->Get(), name.c_str(), O_PATH | O_CLOEXEC));
  }
  return InodeOf(folder->Get());
}

std::string Repeat(const std::string& text, int count) {
  std::string repeated;
  for (int i = 0; i < count; ++i) {
    repeated += text;
  }
  return repeated;
}

TEST(LongPathTest, OpensAnOrdinaryPath) {
  const ScopedTempDir folder;
  const FileDescriptor file = OpenPath(folder.Write("a b/'c", "text"), 0);
  ASSERT_TRUE(file.IsOpen());
  char text[8];
  EXPECT_EQ(file.Read(text, sizeof(text)), 4);
  EXPECT_NE(::fcntl(file.Get(), F_GETFD) & FD_CLOEXEC, 0);
}

TEST(LongPathTest, ReportsTheErrorOfTheSystem) {
  const ScopedTempDir folder;
  EXPECT_FALSE(OpenPath("", 0).IsOpen());
  EXPECT_EQ(errno, ENOENT);
  EXPECT_FALSE(OpenPath(folder.GetPath("nowhere"), 0).IsOpen());
  EXPECT_EQ(errno, ENOENT);
  EXPECT_FALSE(OpenPath(folder.Write("file", ""), O_DIRECTORY).IsOpen());
  EXPECT_EQ(errno, ENOTDIR);
}

TEST(LongPathTest, OpensAPathThatIsLongerThanTheSystemsLimit) {
  const ScopedTempDir folder;
  const std::string name(200, 'n');
  const ino_t inode = MakeFolders(folder.GetPath(), name, 60);
  const std::string path = folder.GetPath() + Repeat("/" + name, 60);
  ASSERT_GT(path.size(), 2 * PATH_MAX);
  ASSERT_LT(::open(path.c_str(), O_RDONLY | O_CLOEXEC), 0);
  for (const char* const end : {"", "/", "/.", "///"}) {
    const FileDescriptor last = OpenPath(path + end, O_DIRECTORY);
    ASSERT_TRUE(last.IsOpen()) << end;
    EXPECT_EQ(InodeOf(last.Get()), inode);
  }
  EXPECT_FALSE(OpenPath(path + "/x", O_DIRECTORY).IsOpen());
  EXPECT_EQ(errno, ENOENT);
}

TEST(LongPathTest, OpensPathsOfEveryLengthAroundTheLimit) {
  const ScopedTempDir folder;
  const ino_t inode = InodeOf(OpenPath(folder.GetPath(), 0).Get());
  for (std::size_t size = PATH_MAX - 3; size < PATH_MAX + 4; ++size) {
    std::string slashes = folder.GetPath();
    slashes += std::string(size - slashes.size(), '/');
    EXPECT_EQ(InodeOf(OpenPath(slashes, O_DIRECTORY).Get()), inode) << size;
    std::string dots = folder.GetPath();
    dots += size % 2 == dots.size() % 2 ? "" : "/";
    while (dots.size() < size) {
      dots += "/.";
    }
    EXPECT_EQ(InodeOf(OpenPath(dots, O_DIRECTORY).Get()), inode) << size;
  }
}

TEST(LongPathTest, ALongNameIsAnError) {
  EXPECT_FALSE(OpenPath(std::string(PATH_MAX + 1, 'n'), 0).IsOpen());
  EXPECT_EQ(errno, ENAMETOOLONG);
  EXPECT_FALSE(OpenPath("/" + std::string(3 * PATH_MAX, 'n') + "/x", 0).IsOpen());
  EXPECT_EQ(errno, ENAMETOOLONG);
}

TEST(LongPathTest, LeavesNoFolderOpen) {
  const ScopedTempDir folder;
  const int before = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
  ::close(before);
  { const FileDescriptor last = OpenPath(folder.GetPath() + std::string(3 * PATH_MAX, '/'), 0); }
  const FileDescriptor after(::open("/dev/null", O_RDONLY | O_CLOEXEC));
  EXPECT_EQ(after.Get(), before);
}

}  // namespace
}  // namespace Kestrel::Host
