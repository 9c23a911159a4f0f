// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "kestrel/KestrelException.h"
#include "plugins/host/frame/HostFile.h"
#include "plugins/host/support/PlainUser.h"
#include "support/Sanitizer.h"
#include "support/ScopedTempDir.h"

namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Optional;
using Testing::PlainUser;
using Testing::ScopedTempDir;
using ::testing::ThrowsMessage;

/// Prevents this process from opening files while an object of this class exists.
class NoMoreFiles {
 public:
  NoMoreFiles() {
    EXPECT_EQ(::getrlimit(RLIMIT_NOFILE, &limit_), 0);
    struct rlimit few = limit_;
    few.rlim_cur = 0;
    EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
  }
  NoMoreFiles(const NoMoreFiles&) = delete;
  NoMoreFiles& operator=(const NoMoreFiles&) = delete;
  ~NoMoreFiles() { EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &limit_), 0); }

 private:
  struct rlimit limit_ = {};
};

TEST(OptionalFileTest, ReadsWhatExists) {
  const ScopedTempDir folder;
  const std::string file = folder.Write("b", "text\n");
  folder.Write("a", "");
  folder.Write(".hidden", "");
  EXPECT_THAT(ReadOptionalFile(file), Optional(std::string("text\n")));
  EXPECT_THAT(ListOptionalFolder(folder.GetPath()), Optional(ElementsAre(".hidden", "a", "b")));
  EXPECT_TRUE(Exists(file));
}

TEST(OptionalFileTest, AMissingFileOrFolderHasNoContent) {
  const ScopedTempDir folder;
  const std::string file = folder.Write("file", "");
  for (const std::string& path : {folder.GetPath("no"), folder.GetPath("no/no"), file + "/no"}) {
    EXPECT_EQ(ReadOptionalFile(path), std::nullopt) << path;
    EXPECT_EQ(ListOptionalFolder(path), std::nullopt) << path;
    EXPECT_FALSE(Exists(path)) << path;
  }
}

TEST(OptionalFileTest, AnEmptyFolderIsNotAMissingOne) {
  const ScopedTempDir folder;
  EXPECT_THAT(ListOptionalFolder(folder.GetPath()), Optional(IsEmpty()));
  EXPECT_THAT(ReadOptionalFile(folder.Write("empty", "")), Optional(std::string()));
}

TEST(OptionalFileTest, ALinkWithoutATargetExistsButHasNoContent) {
  const ScopedTempDir folder;
  const std::string link = folder.GetPath("link");
  ASSERT_EQ(::symlink("/nowhere/at/all", link.c_str()), 0);
  EXPECT_TRUE(Exists(link));
  EXPECT_EQ(ReadOptionalFile(link), std::nullopt);
  EXPECT_EQ(ListOptionalFolder(link), std::nullopt);
}

TEST(OptionalFileTest, WhatMayNotBeReadIsAnError) {
  const ScopedTempDir folder;
  ASSERT_EQ(::chmod(folder.GetPath().c_str(), 0755), 0);
  const std::string file = folder.Write("closed/file", "text");
  const std::string closed = folder.GetPath("closed");
  ASSERT_EQ(::chmod(closed.c_str(), 0), 0);
  {
    const PlainUser user;
    const auto denied = [](const std::string& path) {
      return ThrowsMessage<KestrelException>("Unable to read " + path + ": Permission denied");
    };
    EXPECT_THAT([&] { ListOptionalFolder(closed); }, denied(closed));
    EXPECT_THAT([&] { ReadOptionalFile(file); }, denied(file));
    EXPECT_THAT([&] { Exists(file); }, denied(file));
  }
  ASSERT_EQ(::chmod(closed.c_str(), 0755), 0);
}

TEST(OptionalFileTest, ALoopOfLinksIsAnError) {
  const ScopedTempDir folder;
  const std::string link = folder.GetPath("loop");
  ASSERT_EQ(::symlink("loop", link.c_str()), 0);
  const auto loops = ThrowsMessage<KestrelException>("Unable to read " + link +
                                                     ": Too many levels of symbolic links");
  EXPECT_THAT([&] { ReadOptionalFile(link); }, loops);
  EXPECT_THAT([&] { ListOptionalFolder(link); }, loops);
}

TEST(OptionalFileTest, TooManyOpenFilesAreAnError) {
  if (Testing::kIsSanitized) {
    GTEST_SKIP() << "the sanitizer needs descriptors of its own";
  }
  const ScopedTempDir folder;
  const std::string file = folder.Write("file", "text");
  const NoMoreFiles none;
  EXPECT_THAT([&] { ReadOptionalFile(file); },
              ThrowsMessage<KestrelException>("Unable to read " + file + ": Too many open files"));
  EXPECT_THAT([&] { ListOptionalFolder(folder.GetPath()); },
              ThrowsMessage<KestrelException>("Unable to read " + folder.GetPath() +
                                              ": Too many open files"));
}

TEST(OptionalFileTest, ListsAFolderOfManyNamesCompletely) {
  const ScopedTempDir folder;
  for (int i = 0; i < 3000; ++i) {
    folder.Write("name " + std::to_string(i), "");
  }
  const auto names = ListOptionalFolder(folder.GetPath());
  ASSERT_TRUE(names.has_value());
  EXPECT_EQ(names->size(), 3000u);
  EXPECT_TRUE(std::is_sorted(names->begin(), names->end()));
}

}  // namespace
}  // namespace Kestrel::Host
