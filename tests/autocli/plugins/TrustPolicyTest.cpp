// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/plugins/TrustPolicy.h"

#include <gtest/gtest.h>

#include <string>

namespace Kestrel::AutoCli {
namespace {

constexpr uid_t kRoot = 0;
constexpr uid_t kOwner = 5;
constexpr uid_t kStranger = 7;

struct stat Status(mode_t mode, uid_t user) {
  struct stat status = {};
  status.st_mode = mode;
  status.st_uid = user;
  return status;
}

// Returns why a file with this mode and user is not trusted if the program belongs to kOwner.
std::string Distrust(mode_t mode, uid_t user) {
  return FindDistrust(Status(mode, user), kOwner).value_or("");
}

constexpr const char* kGroup = "can be written by its group";
constexpr const char* kEveryone = "can be written by every user";
constexpr const char* kForeign =
    "belongs to user 7, who is neither root nor the owner of this program";

TEST(TrustPolicyTest, DistrustsEveryKindOfFileThatOthersMayWrite) {
  for (const mode_t kind : {S_IFREG, S_IFDIR, S_IFIFO, S_IFCHR, S_IFBLK, S_IFSOCK}) {
    for (mode_t mode = 0; mode < 01000; ++mode) {
      const std::string expected = (mode & 0002) != 0   ? kEveryone
                                   : (mode & 0020) != 0 ? kGroup
                                                        : "";
      EXPECT_EQ(Distrust(kind | mode, kRoot), expected) << std::oct << (kind | mode);
    }
  }
}

TEST(TrustPolicyTest, AStickyBitMakesOnlyAFolderTrusted) {
  EXPECT_EQ(Distrust(S_IFDIR | 01777, kRoot), "");
  EXPECT_EQ(Distrust(S_IFDIR | 01775, kOwner), "");
  EXPECT_EQ(Distrust(S_IFREG | 01777, kRoot), kEveryone);
  EXPECT_EQ(Distrust(S_IFDIR | 06777, kRoot), kEveryone) << "other bits are not sticky";
}

TEST(TrustPolicyTest, IgnoresTheModeOfALink) {
  EXPECT_EQ(Distrust(S_IFLNK | 0777, kRoot), "");
  EXPECT_EQ(Distrust(S_IFLNK | 0777, kStranger), kForeign);
}

TEST(TrustPolicyTest, OnlyRootAndTheOwnerOfTheProgramAreTrusted) {
  for (const mode_t kind : {S_IFREG, S_IFDIR, S_IFLNK}) {
    EXPECT_EQ(Distrust(kind | 0444, kRoot), "");
    EXPECT_EQ(Distrust(kind | 0444, kOwner), "");
    EXPECT_EQ(Distrust(kind | 0444, kStranger), kForeign);
    EXPECT_EQ(Distrust(kind | 01777, kStranger), kForeign) << "the owner is reported first";
  }
}

ProcessRights Rights(uid_t user, uid_t effectiveUser) {
  ProcessRights rights;
  rights.user = user;
  rights.effectiveUser = effectiveUser;
  return rights;
}

TEST(TrustPolicyTest, RootChecksTheDefaultFolders) {
  EXPECT_TRUE(IsTrustRequired(Rights(0, 0), true));
  EXPECT_FALSE(IsTrustRequired(Rights(0, 0), false));
}

TEST(TrustPolicyTest, AnOrdinaryUserChecksNothing) {
  EXPECT_FALSE(IsTrustRequired(Rights(7, 7), true));
  EXPECT_FALSE(IsTrustRequired(Rights(7, 7), false));
}

TEST(TrustPolicyTest, AProcessWithForeignRightsChecksEverything) {
  for (const bool isInDefaultFolder : {true, false}) {
    EXPECT_TRUE(IsTrustRequired(Rights(7, 0), isInDefaultFolder));
    EXPECT_TRUE(IsTrustRequired(Rights(0, 7), isInDefaultFolder)) << "root who gave up rights";
    EXPECT_TRUE(IsTrustRequired(Rights(7, 8), isInDefaultFolder));
    ProcessRights group = Rights(7, 7);
    group.effectiveGroup = 8;
    EXPECT_TRUE(IsTrustRequired(group, isInDefaultFolder));
    ProcessRights capable = Rights(7, 7);
    capable.isSecure = true;
    EXPECT_TRUE(IsTrustRequired(capable, isInDefaultFolder));
  }
}

TEST(TrustPolicyTest, TheRightsOfThisProcessAreThoseOfItsUser) {
  const ProcessRights rights = GetProcessRights();
  EXPECT_EQ(rights.user, getuid());
  EXPECT_EQ(rights.effectiveUser, geteuid());
  EXPECT_EQ(rights.group, getgid());
  EXPECT_EQ(rights.effectiveGroup, getegid());
  EXPECT_FALSE(HasForeignRights(rights));
}

}  // namespace
}  // namespace Kestrel::AutoCli
