// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/package/PackageMarks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kestrel/KestrelException.h>
#include <sys/stat.h>

#include "plugins/host/support/PlainUser.h"
#include "support/ScopedTempDir.h"

namespace Kestrel::Host {
namespace {

using Testing::PlainUser;
using Testing::ScopedTempDir;
using ::testing::ThrowsMessage;

class PackageMarksTest : public ::testing::Test {
 protected:
  void WriteMarks(const std::string& text) { folder_.Write("extended_states", text); }

  bool IsAutomatic(const char* name, const char* architecture) const {
    Package package;
    package.name = name;
    package.architecture = architecture;
    return PackageMarks("amd64", folder_.GetPath()).IsAutomatic(package);
  }

  void ExpectError(const std::string& reason) const {
    EXPECT_THAT([this] { PackageMarks marks("amd64", folder_.GetPath()); },
                ThrowsMessage<KestrelException>("Unable to read " + folder_.GetPath() +
                                                "/extended_states: " + reason));
  }

  const ScopedTempDir folder_;
};

TEST_F(PackageMarksTest, KnowsWhatIsMarked) {
  WriteMarks(
      "Package: a\nArchitecture: amd64\nAuto-Installed: 1\n\n"
      "Package: b\nArchitecture: amd64\nAuto-Installed: 0\n\n"
      "Package: c\nArchitecture: amd64\n\n");
  EXPECT_TRUE(IsAutomatic("a", "amd64"));
  EXPECT_FALSE(IsAutomatic("b", "amd64"));
  EXPECT_FALSE(IsAutomatic("c", "amd64"));
  EXPECT_FALSE(IsAutomatic("d", "amd64"));
}

TEST_F(PackageMarksTest, DistinguishesArchitectures) {
  WriteMarks("Package: a\nArchitecture: i386\nAuto-Installed: 1\n\n");
  EXPECT_TRUE(IsAutomatic("a", "i386"));
  EXPECT_FALSE(IsAutomatic("a", "amd64"));
  EXPECT_FALSE(IsAutomatic("a", "all"));
}

TEST_F(PackageMarksTest, FindsPackagesOfTheArchitectureAll) {
  WriteMarks(
      "Package: a\nArchitecture: amd64\nAuto-Installed: 1\n\n"
      "Package: b\nArchitecture: all\nAuto-Installed: 1\n\n");
  EXPECT_TRUE(IsAutomatic("a", "all"));
  EXPECT_TRUE(IsAutomatic("b", "all"));
  EXPECT_FALSE(IsAutomatic("b", "amd64"));
}

TEST_F(PackageMarksTest, MarksNoneWithoutAFile) {
  EXPECT_FALSE(IsAutomatic("a", "amd64"));
  WriteMarks("");
  EXPECT_FALSE(IsAutomatic("a", "amd64"));
}

TEST_F(PackageMarksTest, RefusesATruncatedFile) {
  WriteMarks("Package: a\nArchitecture: amd64\nAuto-Inst");
  ExpectError("it ends in the middle of an entry");
}

TEST_F(PackageMarksTest, RefusesAnUnreadableFile) {
  WriteMarks("");
  ::chmod(folder_.GetPath("extended_states").c_str(), 0);
  ::chmod(folder_.GetPath().c_str(), 0755);
  const PlainUser user;
  ExpectError("Permission denied");
}

}  // namespace
}  // namespace Kestrel::Host
