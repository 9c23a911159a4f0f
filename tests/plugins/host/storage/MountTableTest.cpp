// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/storage/MountTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kestrel/KestrelException.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include "support/ScopedTempDir.h"

namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using ::testing::ThrowsMessage;

std::vector<Mount> Read(const std::string& text) {
  const Testing::ScopedTempDir folder;
  return ReadMounts(folder.Write("mountinfo", text));
}

std::vector<std::string> HiddenTargets(const std::string& text) {
  std::vector<std::string> targets;
  for (const Mount& mount : Read(text)) {
    if (mount.isHidden) {
      targets.push_back(std::to_string(mount.id) + " " + mount.target);
    }
  }
  return targets;
}

TEST(MountTableTest, ReadsEveryColumn) {
  const auto mounts = Read(
      "36 35 98:3 /mnt1 /mnt2 rw,noatime master:1 - ext3 /dev/sdz9 rw,errors=continue\n"
      "37 35 0:40 / /proc ro,nosuid shared:5 - proc proc rw\n");
  ASSERT_EQ(mounts.size(), 2u);
  EXPECT_EQ(mounts[0].id, 36);
  EXPECT_EQ(mounts[0].parentId, 35);
  EXPECT_EQ(mounts[0].device, makedev(98, 3));
  EXPECT_EQ(mounts[0].root, "/mnt1");
  EXPECT_EQ(mounts[0].target, "/mnt2");
  EXPECT_EQ(mounts[0].type, "ext3");
  EXPECT_EQ(mounts[0].source, "/dev/sdz9");
  EXPECT_THAT(mounts[0].options, ElementsAre("rw", "noatime", "errors=continue"));
  EXPECT_TRUE(mounts[1].HasOption("ro"));
  EXPECT_FALSE(mounts[1].HasOption("r"));
}

TEST(MountTableTest, UndoesTheEscapesOfNames) {
  const auto mounts = Read(
      "36 35 98:3 / /a\\040b rw - ext3 /dev/x\\011y rw\n"
      "37 35 98:3 / /back\\134slash rw - ext3 none rw\n"
      "38 35 98:3 / /two\\012lines rw - ext3 none rw\n"
      "39 35 98:3 / /\\134040 rw - ext3 none rw\n");
  ASSERT_EQ(mounts.size(), 4u);
  EXPECT_EQ(mounts[0].target, "/a b");
  EXPECT_EQ(mounts[0].source, "/dev/x\ty");
  EXPECT_EQ(mounts[1].target, "/back\\slash");
  EXPECT_EQ(mounts[2].target, "/two\nlines");
  EXPECT_EQ(mounts[3].target, "/\\040");
}

TEST(MountTableTest, KeepsCommasInQuotedOptions) {
  const auto mounts = Read("36 35 98:3 / /a rw,context=\"a:b,c\",x - tmpfs none rw,size=4k\n");
  ASSERT_EQ(mounts.size(), 1u);
  EXPECT_THAT(mounts[0].options, ElementsAre("rw", "context=\"a:b,c\"", "x", "size=4k"));
}

TEST(MountTableTest, IsReadOnlyWhenTheMountOrTheFileSystemIs) {
  const auto mounts = Read(
      "36 35 98:3 / /a ro,noexec - ext3 none rw,quota\n"
      "37 35 98:3 / /b rw,noexec - ext3 none ro\n"
      "38 35 98:3 / /c rw,noexec - ext3 none rw,noexec\n");
  ASSERT_EQ(mounts.size(), 3u);
  EXPECT_THAT(mounts[0].options, ElementsAre("ro", "noexec", "quota"));
  EXPECT_THAT(mounts[1].options, ElementsAre("ro", "noexec"));
  EXPECT_THAT(mounts[2].options, ElementsAre("rw", "noexec"));
}

TEST(MountTableTest, TheDeviceOfTheRootIsCalledByItsName) {
  const Testing::ScopedTempDir folder;
  const std::string table = folder.Write("mountinfo",
                                         "1 0 8:1 / / rw - ext4 /dev/root rw\n"
                                         "2 1 8:2 / /a rw - ext4 /dev/root rw\n"
                                         "3 1 8:3 / /b rw - ext4 /dev/root rw\n"
                                         "4 1 8:1 / /c rw - ext4 /dev/x rw\n");
  const std::string links = folder.MakeDirectory("sys/dev/block");
  ASSERT_EQ(::symlink("../../devices/sda/sda1", (links + "/8:1").c_str()), 0);
  ASSERT_EQ(::symlink("../../devices/cciss!c0d0", (links + "/8:2").c_str()), 0);
  const auto mounts = ReadMounts(table, folder.GetPath("sys"));
  ASSERT_EQ(mounts.size(), 4u);
  EXPECT_EQ(mounts[0].source, "/dev/sda1");
  EXPECT_EQ(mounts[1].source, "/dev/cciss/c0d0");
  EXPECT_EQ(mounts[2].source, "/dev/root");
  EXPECT_EQ(mounts[3].source, "/dev/x");
}

TEST(MountTableTest, LeavesOutADamagedLine) {
  const auto mounts = Read(
      "36 35 98:3 / /a rw - ext3 none rw\n"
      "what is this\n"
      "37 35 98:3 / /b rw - ext3 none rw\n");
  ASSERT_EQ(mounts.size(), 2u);
  EXPECT_EQ(mounts[1].target, "/b");
}

TEST(MountTableTest, AnEmptyTableHasNoMounts) { EXPECT_THAT(Read(""), IsEmpty()); }

TEST(MountTableTest, AMissingTableIsAnError) {
  EXPECT_THAT(
      [] { ReadMounts("/nonexistent/mountinfo"); },
      ThrowsMessage<KestrelException>(
          "Unable to read the mounts in /nonexistent/mountinfo: No such file or directory"));
}

TEST(MountTableTest, AMountIsHiddenByOneOnTheSameDirectory) {
  EXPECT_THAT(HiddenTargets("1 0 8:1 / / rw - ext3 none rw\n"
                            "2 1 8:2 / /a rw - ext3 none rw\n"
                            "3 2 8:3 / /a rw - ext3 none rw\n"),
              ElementsAre("2 /a"));
}

TEST(MountTableTest, AMountIsHiddenByOneOnADirectoryAboveIt) {
  EXPECT_THAT(HiddenTargets("1 0 8:1 / / rw - ext3 none rw\n"
                            "2 1 8:2 / /a/b rw - ext3 none rw\n"
                            "3 2 8:3 / /a/b/c rw - ext3 none rw\n"
                            "4 1 8:4 / /a rw - ext3 none rw\n"
                            "5 1 8:4 / /ab rw - ext3 none rw\n"),
              ElementsAre("2 /a/b", "3 /a/b/c"));
}

TEST(MountTableTest, WhatLiesBelowAHiddenMountIsHidden) {
  EXPECT_THAT(HiddenTargets("1 0 8:1 / / rw - ext3 none rw\n"
                            "2 1 8:2 / /a rw - ext3 none rw\n"
                            "3 2 8:3 / /a/b rw - ext3 none rw\n"
                            "4 3 8:4 / /a/b/c rw - ext3 none rw\n"
                            "5 2 8:5 / /a rw - ext3 none rw\n"
                            "6 5 8:6 / /a/b rw - ext3 none rw\n"),
              ElementsAre("2 /a", "3 /a/b", "4 /a/b/c"));
}

TEST(MountTableTest, AMountOverTheRootHidesAllThatLayInTheOldOne) {
  EXPECT_THAT(HiddenTargets("1 0 8:1 / / rw - ext3 none rw\n"
                            "2 1 8:2 / /a rw - ext3 none rw\n"
                            "3 1 8:3 / / rw - ext3 none rw\n"
                            "4 3 8:4 / /a rw - ext3 none rw\n"),
              ElementsAre("1 /", "2 /a"));
}

TEST(MountTableTest, ACircleOfParentsEnds) {
  EXPECT_THAT(HiddenTargets("1 1 8:1 / / rw - ext3 none rw\n"
                            "2 3 8:2 / /a rw - ext3 none rw\n"
                            "3 2 8:3 / /a/b rw - ext3 none rw\n"),
              IsEmpty());
}

}  // namespace
}  // namespace Kestrel::Host
