// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/file/RegularFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <string>

#include "kestrel/KestrelException.h"
#include "plugins/host/support/PlainUser.h"
#include "support/Sanitizer.h"
#include "support/ScopedTempDir.h"

namespace Kestrel::Host {
namespace {

using Testing::ScopedTempDir;
using ::testing::ThrowsMessage;

auto Opening(const std::string& path) {
  return [path] { OpenRegularFile(path); };
}

auto Fails(const std::string& path, const std::string& reason) {
  return ThrowsMessage<KestrelException>("Unable to read " + path + ": " + reason);
}

TEST(RegularFileTest, OpensAFileWithAnyName) {
  const ScopedTempDir folder;
  for (const char* const name : {"plain", "a b", "it's", "\"", "-n", "$(x)", "li\nne", "\xFF"}) {
    const FileDescriptor file = OpenRegularFile(folder.Write(name, "text"));
    char text[8];
    EXPECT_EQ(file.Read(text, sizeof(text)), 4) << name;
  }
}

TEST(RegularFileTest, FollowsLinks) {
  const ScopedTempDir folder;
  folder.Write("file", "text");
  ASSERT_EQ(::symlink("file", folder.GetPath("link").c_str()), 0);
  EXPECT_TRUE(OpenRegularFile(folder.GetPath("link")).IsOpen());
}

TEST(RegularFileTest, OpensAPathOfAnyLength) {
  const ScopedTempDir folder;
  folder.Write("file", "text");
  std::string path = folder.GetPath();
  while (path.size() < 3 * PATH_MAX) {
    path += "/.";
  }
  EXPECT_TRUE(OpenRegularFile(path + "/file").IsOpen());
  EXPECT_THAT(Opening(path + "/absent"), Fails(path + "/absent", "No such file or directory"));
}

TEST(RegularFileTest, RefusesFilesThatAreNotRegular) {
  const ScopedTempDir folder;
  const std::string pipe = folder.GetPath("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  for (const std::string& path : {pipe, folder.GetPath(), std::string("/dev/zero")}) {
    EXPECT_THAT(Opening(path), Fails(path, "Not a regular file"));
  }
}

TEST(RegularFileTest, ReportsTheErrorOfTheSystem) {
  const ScopedTempDir folder;
  const std::string file = folder.Write("file", "");
  EXPECT_THAT(Opening(""), Fails("", "No such file or directory"));
  EXPECT_THAT(Opening(folder.GetPath("absent")),
              Fails(folder.GetPath("absent"), "No such file or directory"));
  EXPECT_THAT(Opening(file + "/x"), Fails(file + "/x", "Not a directory"));
  EXPECT_THAT(Opening(folder.GetPath("a\nb")),
              Fails(folder.GetPath("a\\x0ab"), "No such file or directory"));
}

TEST(RegularFileTest, ReportsAFileThatMayNotBeRead) {
  const ScopedTempDir folder;
  const std::string path = folder.Write("secret", "");
  ASSERT_EQ(::chmod(folder.GetPath().c_str(), 0755), 0);
  ASSERT_EQ(::chmod(path.c_str(), 0), 0);
  const Testing::PlainUser user;
  EXPECT_THAT(Opening(path), Fails(path, "Permission denied"));
}

TEST(RegularFileTest, ReportsThatTooManyFilesAreOpen) {
  if (Testing::kIsSanitized) {
    GTEST_SKIP() << "the sanitizer needs descriptors of its own";
  }
  rlimit before = {};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
  const rlimit none = {0, before.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
  EXPECT_THAT(Opening("/etc/passwd"), Fails("/etc/passwd", "Too many open files"));
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
}

}  // namespace
}  // namespace Kestrel::Host
