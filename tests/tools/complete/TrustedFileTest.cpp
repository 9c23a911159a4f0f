// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/complete/TrustedFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "support/ScopedTempDir.h"

namespace Kestrel::Testing {

namespace {

using Complete::IsTrustedFile;

constexpr uid_t kSomebodyElse = 12345;

class TrustedFileTest : public ::testing::Test {
 protected:
  TrustedFileTest() {
    chmod(folder_.GetPath().c_str(), 0755);
    chmod(file_.c_str(), 0644);
  }

  ScopedTempDir folder_;
  std::string file_ = folder_.Write("plugin.so", "");
};

TEST_F(TrustedFileTest, BelongsToTheUserWhoAloneCanWriteIt) {
  EXPECT_TRUE(IsTrustedFile(file_));
  chmod(file_.c_str(), 0666);
  EXPECT_FALSE(IsTrustedFile(file_));
  chmod(file_.c_str(), 0664);
  EXPECT_FALSE(IsTrustedFile(file_));
  chmod(file_.c_str(), 0400);
  EXPECT_TRUE(IsTrustedFile(file_));
}

TEST_F(TrustedFileTest, MayBelongToRoot) { EXPECT_TRUE(IsTrustedFile("/etc/passwd")); }

TEST_F(TrustedFileTest, DoesNotBelongToAnotherUser) {
  if (geteuid() != 0) {
    GTEST_SKIP() << "only root can change the owner of a file";
  }
  ASSERT_EQ(0, chown(file_.c_str(), kSomebodyElse, 0));
  EXPECT_FALSE(IsTrustedFile(file_));
}

TEST_F(TrustedFileTest, IsInFoldersThatNobodyElseCanWriteOrThatAreSticky) {
  for (const mode_t mode : {0777, 0775, 0757}) {
    chmod(folder_.GetPath().c_str(), mode);
    EXPECT_FALSE(IsTrustedFile(file_)) << mode;
  }
  chmod(folder_.GetPath().c_str(), 01777);
  EXPECT_TRUE(IsTrustedFile(file_));
}

TEST_F(TrustedFileTest, ALinkIsTrustedIfItsTargetIs) {
  const std::string link = folder_.GetPath("link.so");
  ASSERT_EQ(0, symlink(file_.c_str(), link.c_str()));
  EXPECT_TRUE(IsTrustedFile(link));
  chmod(file_.c_str(), 0666);
  EXPECT_FALSE(IsTrustedFile(link));
}

TEST_F(TrustedFileTest, IsAFileWithAnAbsolutePath) {
  EXPECT_FALSE(IsTrustedFile(""));
  EXPECT_FALSE(IsTrustedFile("plugin.so"));
  EXPECT_FALSE(IsTrustedFile(folder_.GetPath()));
  EXPECT_FALSE(IsTrustedFile(folder_.GetPath("nosuch")));
  ASSERT_EQ(0, chdir(folder_.GetPath().c_str()));
  EXPECT_FALSE(IsTrustedFile("plugin.so"));
  EXPECT_FALSE(IsTrustedFile("./plugin.so"));
  ASSERT_EQ(0, chdir("/"));
}

}  // namespace

}  // namespace Kestrel::Testing
