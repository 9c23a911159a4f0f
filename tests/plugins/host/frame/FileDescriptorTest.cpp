// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/FileDescriptor.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "support/ScopedTempDir.h"

namespace Kestrel::Host {
namespace {

using Testing::ScopedTempDir;

bool IsOpenInThisProcess(int number) { return ::fcntl(number, F_GETFD) >= 0; }

FileDescriptor Open(const char* path) { return FileDescriptor(::open(path, O_RDWR | O_CLOEXEC)); }

TEST(FileDescriptorTest, ClosesWhatItOwns) {
  int number = -1;
  {
    const FileDescriptor file = Open("/dev/null");
    number = file.Get();
    EXPECT_TRUE(file.IsOpen());
    EXPECT_TRUE(IsOpenInThisProcess(number));
  }
  EXPECT_FALSE(IsOpenInThisProcess(number));
}

TEST(FileDescriptorTest, OwnsNothingAfterAFailedOpen) {
  const FileDescriptor file = Open("/nowhere/at/all");
  EXPECT_FALSE(file.IsOpen());
}

TEST(FileDescriptorTest, KeepsTheErrorNumberOfTheCaller) {
  {
    const FileDescriptor file = Open("/dev/null");
    ASSERT_EQ(::close(file.Get()), 0);  // so that the destructor's close fails
    errno = ENOSPC;
  }
  EXPECT_EQ(errno, ENOSPC);
}

TEST(FileDescriptorTest, IsClosedOnce) {
  FileDescriptor file = Open("/dev/null");
  const int number = file.Get();
  EXPECT_EQ(file.Close(), 0);
  EXPECT_FALSE(file.IsOpen());
  EXPECT_FALSE(IsOpenInThisProcess(number));
  EXPECT_EQ(file.Close(), 0) << "there is nothing left to close";
}

TEST(FileDescriptorTest, ReportsAFailedClose) {
  FileDescriptor file = Open("/dev/null");
  ASSERT_EQ(::close(file.Get()), 0);
  EXPECT_EQ(file.Close(), EBADF);
}

TEST(FileDescriptorTest, MovingTransfersTheOwnership) {
  FileDescriptor first = Open("/dev/null");
  const int number = first.Get();
  {
    const FileDescriptor second = std::move(first);
    EXPECT_EQ(second.Get(), number);
  }
  EXPECT_FALSE(IsOpenInThisProcess(number));
}

TEST(FileDescriptorTest, ReadsAndWritesBytes) {
  const ScopedTempDir folder;
  const FileDescriptor file = Open(folder.Write("file", "").c_str());
  const std::string bytes("a\0b", 3);
  EXPECT_EQ(file.Write(bytes.data(), bytes.size()), 3);
  ASSERT_EQ(::lseek(file.Get(), 0, SEEK_SET), 0);
  std::string buffer(8, 'x');
  EXPECT_EQ(file.Read(buffer.data(), buffer.size()), 3);
  EXPECT_EQ(buffer.substr(0, 3), bytes);
  EXPECT_EQ(file.Read(buffer.data(), buffer.size()), 0) << "the end of the file";
}

TEST(FileDescriptorTest, ReportsAFailedWrite) {
  const FileDescriptor file = Open("/dev/full");
  EXPECT_EQ(file.Write("x", 1), -1);
  EXPECT_EQ(errno, ENOSPC);
}

}  // namespace
}  // namespace Kestrel::Host
