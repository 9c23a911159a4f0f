// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/storage/MountTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kestrel/KestrelException.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "support/Random.h"
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

TEST(MountTableTest, ReplacesDevRootWithTheNameOfTheDevice) {
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

TEST(MountTableTest, SkipsADamagedLine) {
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

TEST(MountTableTest, AMountBelowAHiddenMountIsHidden) {
  EXPECT_THAT(HiddenTargets("1 0 8:1 / / rw - ext3 none rw\n"
                            "2 1 8:2 / /a rw - ext3 none rw\n"
                            "3 2 8:3 / /a/b rw - ext3 none rw\n"
                            "4 3 8:4 / /a/b/c rw - ext3 none rw\n"
                            "5 2 8:5 / /a rw - ext3 none rw\n"
                            "6 5 8:6 / /a/b rw - ext3 none rw\n"),
              ElementsAre("2 /a", "3 /a/b", "4 /a/b/c"));
}

TEST(MountTableTest, AMountOverTheRootHidesEverythingInTheOldRoot) {
  EXPECT_THAT(HiddenTargets("1 0 8:1 / / rw - ext3 none rw\n"
                            "2 1 8:2 / /a rw - ext3 none rw\n"
                            "3 1 8:3 / / rw - ext3 none rw\n"
                            "4 3 8:4 / /a rw - ext3 none rw\n"),
              ElementsAre("1 /", "2 /a"));
}

TEST(MountTableTest, ACycleOfParentsEnds) {
  EXPECT_THAT(HiddenTargets("1 1 8:1 / / rw - ext3 none rw\n"
                            "2 3 8:2 / /a rw - ext3 none rw\n"
                            "3 2 8:3 / /a/b rw - ext3 none rw\n"),
              IsEmpty());
}

struct DamagedMount {
  const char* name;
  const char* line;
};

// Lines that are damaged in one way.
const DamagedMount kDamagedMounts[] = {
    {"Empty", ""},
    {"Spaces", "     "},
    {"IdIsAWord", "x 35 98:3 / /a rw - ext3 none rw"},
    {"IdBeyond64Bits", "99999999999999999999 35 98:3 / /a rw - ext3 none rw"},
    {"ParentIsAWord", "36 x 98:3 / /a rw - ext3 none rw"},
    {"DeviceWithoutMinor", "36 35 98 / /a rw - ext3 none rw"},
    {"DeviceWithThreeNumbers", "36 35 98:3:1 / /a rw - ext3 none rw"},
    {"DeviceIsAWord", "36 35 a:b / /a rw - ext3 none rw"},
    {"NoDash", "36 35 98:3 / /a rw ext3 none rw"},
    {"DashTooEarly", "36 35 98:3 / /a - ext3 none rw"},
    {"NothingAfterTheDash", "36 35 98:3 / /a rw -"},
    {"NoSource", "36 35 98:3 / /a rw - ext3"},
    {"NoOptionsOfTheFileSystem", "36 35 98:3 / /a rw - ext3 none"},
    {"TwoSpaces", "36  35 98:3 / /a rw - ext3 none rw"},
};

class DamagedMountTest : public ::testing::TestWithParam<DamagedMount> {};

TEST_P(DamagedMountTest, IsSkipped) {
  const auto mounts = Read(std::string("1 0 8:1 / / rw - ext3 none rw\n") + GetParam().line + "\n" +
                           "2 1 8:2 / /b rw - ext3 none rw\n");
  ASSERT_EQ(mounts.size(), 2u);
  EXPECT_EQ(mounts[0].target, "/");
  EXPECT_EQ(mounts[1].target, "/b");
}

INSTANTIATE_TEST_SUITE_P(Lines, DamagedMountTest, ::testing::ValuesIn(kDamagedMounts),
                         [](const auto& line) { return line.param.name; });

TEST(MountTableTest, EveryShorterLineIsReadWithoutHarm) {
  const std::string line = "36 35 98:3 /r /a\\040b ro,x master:1 - ext3 /dev/sdz9 rw,y";
  for (std::size_t size = 0; size <= line.size(); ++size) {
    const auto mounts = Read(line.substr(0, size));
    EXPECT_EQ(mounts.size(), size > line.find("rw,y") - 1 ? 1u : 0u) << size;
  }
}

struct OptionsCase {
  const char* name;
  const char* ofMount;
  const char* ofFilesystem;
  std::vector<std::string> merged;
};

const OptionsCase kOptions[] = {
    {"Same", "rw,a", "rw,a", {"rw", "a"}},
    {"Different", "rw,a", "rw,b", {"rw", "a", "b"}},
    {"SameOptionInBoth", "rw,a,b", "rw,b", {"rw", "a", "b", "b"}},
    {"NoneOfTheFileSystem", "ro,a", "", {"ro", "a"}},
    {"NoneAtAll", "", "", {"rw"}},
    {"OnlyCommas", ",,", ",", {"rw", "", "", ""}},
    {"NeitherSaysWhetherItCanBeWritten", "a", "b", {"rw", "a", "b"}},
    {"ReadOnlyLast", "a,ro", "b,ro", {"ro", "a", "b"}},
    {"ValueWithAnEqualsSign", "rw,a=b=c", "rw", {"rw", "a=b=c"}},
    {"QuotesThatNeverEnd", "rw,a=\"b,c", "rw", {"rw", "a=\"b,c"}},
    {"TwoQuotedValues", "rw,a=\"b,c\",d=\"e,f\"", "rw", {"rw", "a=\"b,c\"", "d=\"e,f\""}},
    {"EscapedComma", "rw,a=b\\054c", "rw", {"rw", "a=b", "c"}},
};

class MountOptionsTest : public ::testing::TestWithParam<OptionsCase> {};

TEST_P(MountOptionsTest, AreMerged) {
  const auto mounts = Read("36 35 98:3 / /a " + std::string(GetParam().ofMount) + " - ext3 none " +
                           GetParam().ofFilesystem);
  ASSERT_EQ(mounts.size(), 1u);
  EXPECT_EQ(mounts[0].options, GetParam().merged);
}

INSTANTIATE_TEST_SUITE_P(Options, MountOptionsTest, ::testing::ValuesIn(kOptions),
                         [](const auto& row) { return row.param.name; });

// Returns "/", "/a" and "/a/b" for "/a/b".
std::vector<std::string> PathsOnTheWay(const std::string& path) {
  std::vector<std::string> paths = {"/"};
  for (std::size_t end = 0; path.size() > 1 && end != std::string::npos;) {
    end = path.find('/', end + 1);
    paths.push_back(path.substr(0, end));
  }
  return paths;
}

// Returns the mount that a path leads to: each step enters the mount attached at that point, and
// then any mount on top of it.
long Resolve(const std::vector<Mount>& mounts, const std::string& path) {
  long current = 0;
  for (const std::string& step : PathsOnTheWay(path)) {
    const auto attached = [&] {
      return std::find_if(mounts.begin(), mounts.end(), [&](const Mount& mount) {
        return mount.parentId == current && mount.target == step;
      });
    };
    for (auto next = attached(); next != mounts.end(); next = attached()) {
      current = next->id;
    }
  }
  return current;
}

TEST(MountTableTest, AMountIsHiddenWhenNoPathLeadsToIt) {
  Testing::Random random;
  const std::vector<std::string> places = {"/", "/a", "/a/b", "/a/b/c", "/ab", "/a/c"};
  for (int round = 0; round < 500; ++round) {
    std::vector<Mount> mounts;
    std::string table;
    const int count = random.Between(1, 8);
    for (int id = 1; id <= count; ++id) {
      Mount mount;
      mount.id = id;
      mount.target = id == 1 ? "/" : places[random.Below(places.size())];
      mount.parentId = Resolve(mounts, mount.target);
      mounts.push_back(mount);
      table += std::to_string(id) + " " + std::to_string(mount.parentId) + " 8:1 / " +
               mount.target + " rw - ext3 none rw\n";
    }
    for (const Mount& mount : Read(table)) {
      EXPECT_EQ(mount.isHidden, Resolve(mounts, mount.target) != mount.id)
          << "mount " << mount.id << " in\n"
          << table << random.HowToRepeat();
    }
  }
}

}  // namespace
}  // namespace Kestrel::Host
