// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/storage/TreeUsage.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kestrel/KestrelException.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <vector>

#include "plugins/host/support/FileLimit.h"
#include "plugins/host/support/Namespaces.h"
#include "plugins/host/support/PlainUser.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using Testing::FileLimit;
using ::testing::IsEmpty;
using Testing::ScopedTempDir;
using ::testing::ThrowsMessage;
using ::testing::UnorderedElementsAre;
using Testing::Witness;

constexpr TreeOptions kWholeTree = {1000000, true, false};

std::vector<std::string> PathsIn(const TreeUsage& tree) {
  std::vector<std::string> paths;
  for (const TreeEntry& entry : tree.entries) {
    paths.push_back(entry.path);
  }
  return paths;
}

std::vector<std::string> UnreadIn(const TreeUsage& tree) {
  std::vector<std::string> paths;
  for (const UnreadFolder& folder : tree.unread) {
    paths.push_back(folder.path);
  }
  return paths;
}

TreeEntry EntryAt(const TreeUsage& tree, const std::string& path) {
  for (const TreeEntry& entry : tree.entries) {
    if (entry.path == path) {
      return entry;
    }
  }
  ADD_FAILURE() << "There is no entry for " << path;
  return {};
}

// Returns the lines that du prints for `path` with these options, sorted.
std::vector<std::string> DuLines(const std::string& options, const std::string& path) {
  std::vector<std::string> lines =
      Testing::WitnessLines("du --one-file-system " + options + " '" + path + "'");
  std::sort(lines.begin(), lines.end());
  return lines;
}

std::vector<std::string> Lines(const TreeUsage& tree, long SpaceUsage::*figure, long unit) {
  std::vector<std::string> lines;
  for (const TreeEntry& entry : tree.entries) {
    lines.push_back(std::to_string(entry.usage.*figure / unit) + "\t" + entry.path);
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

// Makes a folder in `folder`. Until this object is destroyed, the new folder has the mode `mode`,
// which by default denies an ordinary user everything.
class LockedFolder {
 public:
  LockedFolder(const ScopedTempDir& folder, const std::string& name, mode_t mode = 0)
      : path_(folder.MakeDirectory(name)) {
    EXPECT_EQ(::chmod(folder.GetPath().c_str(), 0755), 0);
    EXPECT_EQ(::chmod(path_.c_str(), mode), 0);
  }
  LockedFolder(const LockedFolder&) = delete;
  LockedFolder& operator=(const LockedFolder&) = delete;
  ~LockedFolder() { ::chmod(path_.c_str(), 0755); }

  const std::string& GetPath() const { return path_; }

 private:
  std::string path_;
};

// Creates `count` nested folders that all have the name `name`.
void MakeChain(const std::string& top, const std::string& name, int count) {
  int folder = ::open(top.c_str(), O_PATH | O_CLOEXEC);
  for (int i = 0; i < count; ++i) {
    ASSERT_EQ(::mkdirat(folder, name.c_str(), 0755), 0);
    const int next = ::openat(folder, name.c_str(), O_PATH | O_CLOEXEC);
    ::close(folder);
    folder = next;
  }
  ::close(folder);
}

// A folder whose content is deleted with rm, because the paths are too long for the standard
// library.
struct DeletedByRm {
  ScopedTempDir folder;
  ~DeletedByRm() { Witness("rm -r '" + folder.GetPath() + "'/*"); }
};

void MakeSampleTree(const ScopedTempDir& folder) {
  folder.Write("small/file", "x");
  folder.Write("large/deep/file", std::string(100000, 'x'));
  folder.Write("large/sparse", "");
  ASSERT_EQ(::truncate(folder.GetPath("large/sparse").c_str(), 5000000), 0);
  folder.MakeDirectory("empty");
  ASSERT_EQ(::symlink("large", folder.GetPath("link").c_str()), 0);
  ASSERT_EQ(::mkfifo(folder.GetPath("pipe").c_str(), 0600), 0);
}

TEST(TreeUsageTest, AddsUpDiskSizesAsDuDoes) {
  const ScopedTempDir folder;
  MakeSampleTree(folder);
  EXPECT_EQ(Lines(MeasureTree(folder.GetPath(), kWholeTree), &SpaceUsage::diskSize, 1024),
            DuLines("--all --block-size=1024", folder.GetPath()));
}

TEST(TreeUsageTest, AddsUpTheLengthsOfFilesAndFolders) {
  const ScopedTempDir folder;
  MakeSampleTree(folder);
  const TreeUsage tree = MeasureTree(folder.GetPath(), kWholeTree);
  EXPECT_EQ(EntryAt(tree, folder.GetPath("large/sparse")).usage.apparentSize, 5000000);
  EXPECT_EQ(EntryAt(tree, folder.GetPath("large/sparse")).usage.diskSize, 0);
  const long fileLengths = 1 + 100000 + 5000000 + 5;  // a link is as long as its target
  long folderLengths = 0;
  for (const char* const name : {"", "small", "large", "large/deep", "empty"}) {
    struct stat status = {};
    ASSERT_EQ(::stat(folder.GetPath(name).c_str(), &status), 0);
    folderLengths += status.st_size;
  }
  EXPECT_EQ(EntryAt(tree, folder.GetPath()).usage.apparentSize, fileLengths + folderLengths);
}

TEST(TreeUsageTest, CountsFilesAndFolders) {
  const ScopedTempDir folder;
  MakeSampleTree(folder);
  const TreeUsage tree = MeasureTree(folder.GetPath(), kWholeTree);
  EXPECT_EQ(Lines(tree, &SpaceUsage::files, 1), DuLines("--all --inodes", folder.GetPath()));
  EXPECT_EQ(EntryAt(tree, folder.GetPath("empty")).usage.files, 1);
  EXPECT_EQ(EntryAt(tree, folder.GetPath()).usage.files, 10);
}

TEST(TreeUsageTest, MarksFoldersAndFiles) {
  const ScopedTempDir folder;
  MakeSampleTree(folder);
  const TreeUsage tree = MeasureTree(folder.GetPath(), kWholeTree);
  EXPECT_TRUE(EntryAt(tree, folder.GetPath("large")).isFolder);
  EXPECT_TRUE(EntryAt(tree, folder.GetPath("empty")).isFolder);
  EXPECT_FALSE(EntryAt(tree, folder.GetPath("link")).isFolder);
  EXPECT_FALSE(EntryAt(tree, folder.GetPath("pipe")).isFolder);
}

struct DepthCase {
  const char* name;
  TreeOptions options;
  std::vector<std::string> listed;  // the rest of each path after that of the top
};

class TreeUsageDepthTest : public ::testing::TestWithParam<DepthCase> {};

TEST_P(TreeUsageDepthTest, LimitsTheEntriesButNotTheSizes) {
  const ScopedTempDir folder;
  folder.Write("a/b/c/file", "x");
  folder.Write("a/file", "x");
  folder.Write("file", "x");
  const TreeUsage tree = MeasureTree(folder.GetPath(), GetParam().options);
  std::vector<std::string> expected;
  for (const std::string& name : GetParam().listed) {
    expected.push_back(folder.GetPath() + name);
  }
  EXPECT_THAT(PathsIn(tree), ::testing::UnorderedElementsAreArray(expected));
  EXPECT_EQ(EntryAt(tree, folder.GetPath()).usage.files, 7);
}

const DepthCase kDepths[] = {
    {"TopOnly", {0, false, false}, {""}},
    {"TopOnlyWithFiles", {0, true, false}, {""}},
    {"OneLevel", {1, false, false}, {"", "/a"}},
    {"OneLevelWithFiles", {1, true, false}, {"", "/a", "/file"}},
    {"TwoLevels", {2, false, false}, {"", "/a", "/a/b"}},
    {"TwoLevelsWithFiles", {2, true, false}, {"", "/a", "/a/b", "/a/file", "/file"}},
    {"DeeperThanTheTree", {99, false, false}, {"", "/a", "/a/b", "/a/b/c"}},
};
INSTANTIATE_TEST_SUITE_P(Depths, TreeUsageDepthTest, ::testing::ValuesIn(kDepths),
                         [](const auto& row) { return row.param.name; });

TEST(TreeUsageTest, CountsAFileWithSeveralNamesOnce) {
  const ScopedTempDir folder;
  folder.Write("a/first", std::string(50000, 'x'));
  folder.MakeDirectory("b/c");
  for (const char* const name : {"a/second", "b/third", "b/c/fourth", "fifth"}) {
    ASSERT_EQ(::link(folder.GetPath("a/first").c_str(), folder.GetPath(name).c_str()), 0);
  }
  const TreeUsage tree = MeasureTree(folder.GetPath(), {0, false, false});
  EXPECT_EQ(Lines(tree, &SpaceUsage::diskSize, 1024),
            DuLines("-s --block-size=1024", folder.GetPath()));
  EXPECT_EQ(EntryAt(tree, folder.GetPath()).usage.files, 5);
}

TEST(TreeUsageTest, CountsDifferentFilesWithTheSameNumberOfNames) {
  const ScopedTempDir folder;
  for (const char* const name : {"a", "b", "c"}) {
    folder.Write(name, std::string(9000, 'x'));
    ASSERT_EQ(::link(folder.GetPath(name).c_str(), folder.GetPath(name + std::string("2")).c_str()),
              0);
  }
  const TreeUsage tree = MeasureTree(folder.GetPath(), kWholeTree);
  EXPECT_EQ(tree.entries.size(), 4U);
  EXPECT_EQ(EntryAt(tree, folder.GetPath()).usage.files, 4);
}

TEST(TreeUsageTest, PathsBeginAsTheUserWroteThem) {
  const ScopedTempDir folder;
  folder.Write("a/file", "");
  const std::string before = Witness("pwd");
  ASSERT_EQ(::chdir(folder.GetPath().c_str()), 0);
  EXPECT_THAT(PathsIn(MeasureTree(".", kWholeTree)), UnorderedElementsAre(".", "./a", "./a/file"));
  EXPECT_THAT(PathsIn(MeasureTree("a/", kWholeTree)), UnorderedElementsAre("a/", "a/file"));
  EXPECT_THAT(PathsIn(MeasureTree("a/../a", kWholeTree)),
              UnorderedElementsAre("a/../a", "a/../a/file"));
  ASSERT_EQ(::chdir(before.substr(0, before.size() - 1).c_str()), 0);
}

TEST(TreeUsageTest, FollowsALinkOnlyAtTheTop) {
  const ScopedTempDir folder;
  folder.Write("target/file", "x");
  ASSERT_EQ(::symlink("target", folder.GetPath("link").c_str()), 0);
  ASSERT_EQ(::symlink("..", folder.GetPath("target/up").c_str()), 0);
  const std::string link = folder.GetPath("link");
  EXPECT_THAT(PathsIn(MeasureTree(link, kWholeTree)),
              UnorderedElementsAre(link, link + "/file", link + "/up"));
}

TEST(TreeUsageTest, TakesOddNames) {
  const ScopedTempDir folder;
  const std::string top = folder.MakeDirectory("a $b`\"&<\n ;'*");
  for (const char* const name :
       {"-n", "tab\there", "line\nend", "'", "\xFF\x01", "...", "\\", "*"}) {
    folder.MakeDirectory("a $b`\"&<\n ;'*/" + std::string(name));
  }
  EXPECT_THAT(
      PathsIn(MeasureTree(top, {1, false, false})),
      UnorderedElementsAre(top, top + "/-n", top + "/tab\there", top + "/line\nend", top + "/'",
                           top + "/\xFF\x01", top + "/...", top + "/\\", top + "/*"));
}

TEST(TreeUsageTest, ReadsFoldersWithManyNames) {
  const ScopedTempDir folder;
  for (int i = 0; i < 3000; ++i) {
    folder.Write("a-name-that-is-not-short-" + std::to_string(i), "");
  }
  const TreeUsage tree = MeasureTree(folder.GetPath(), kWholeTree);
  EXPECT_EQ(tree.entries.size(), 3001U);
}

TEST(TreeUsageTest, WalksATreeThatIsDeeperThanTheLimitsForPathsAndFiles) {
  const DeletedByRm top;
  constexpr int kDepth = 3000;
  MakeChain(top.folder.GetPath(), "deep", kDepth);
  const FileLimit limit(40);
  const TreeUsage tree = MeasureTree(top.folder.GetPath(), {kDepth, false, false});
  EXPECT_THAT(tree.unread, IsEmpty());
  ASSERT_EQ(tree.entries.size(), kDepth + 1U);
  EXPECT_EQ(tree.entries.front().path.size(), top.folder.GetPath().size() + 5 * kDepth);
  EXPECT_EQ(tree.entries.front().usage.files, 1);
  EXPECT_EQ(tree.entries.back().path, top.folder.GetPath());
  EXPECT_EQ(tree.entries.back().usage.files, kDepth + 1);
}

TEST(TreeUsageTest, FindsItsWayBackToFoldersThatItClosed) {
  const DeletedByRm top;
  MakeChain(top.folder.GetPath(), "deep", 100);
  // Each folder on the path contains a second folder.
  std::string path;
  for (int level = 0; level < 60; ++level) {
    top.folder.Write(path + "side/file", "x");
    path += "deep/";
  }
  const TreeUsage tree = MeasureTree(top.folder.GetPath(), kWholeTree);
  EXPECT_EQ(Lines(tree, &SpaceUsage::files, 1), DuLines("--all --inodes", top.folder.GetPath()));
}

TEST(TreeUsageTest, ReportsAFolderThatMayNotBeRead) {
  const ScopedTempDir folder;
  folder.Write("open/file", "x");
  const LockedFolder locked(folder, "locked");
  const Testing::PlainUser user;
  const TreeUsage tree = MeasureTree(folder.GetPath(), kWholeTree);
  ASSERT_THAT(UnreadIn(tree), ElementsAre(locked.GetPath()));
  EXPECT_EQ(tree.unread[0].error, EACCES);
  EXPECT_FALSE(EntryAt(tree, folder.GetPath()).isComplete);
  EXPECT_FALSE(EntryAt(tree, locked.GetPath()).isComplete);
  EXPECT_EQ(EntryAt(tree, locked.GetPath()).usage.files, 1) << "itself is counted";
  EXPECT_TRUE(EntryAt(tree, folder.GetPath("open")).isComplete);
}

TEST(TreeUsageTest, ReportsFoldersBelowTheListedOnes) {
  const ScopedTempDir folder;
  const LockedFolder first(folder, "a/b/c/locked");
  const LockedFolder second(folder, "a/locked");
  const Testing::PlainUser user;
  const TreeUsage tree = MeasureTree(folder.GetPath(), {0, false, false});
  EXPECT_THAT(UnreadIn(tree), UnorderedElementsAre(first.GetPath(), second.GetPath()));
  EXPECT_THAT(PathsIn(tree), ElementsAre(folder.GetPath()));
}

TEST(TreeUsageTest, ReportsOnlyOnceThatTheFilesOfAFolderMayNotBeSeen) {
  const ScopedTempDir folder;
  for (const char* const name : {"listed/a", "listed/b", "listed/c"}) {
    folder.Write(name, "x");
  }
  const LockedFolder locked(folder, "listed", 0444);
  const Testing::PlainUser user;
  const TreeUsage tree = MeasureTree(folder.GetPath(), kWholeTree);
  EXPECT_THAT(UnreadIn(tree), ElementsAre(locked.GetPath()));
  EXPECT_FALSE(EntryAt(tree, folder.GetPath()).isComplete);
}

TEST(TreeUsageTest, ReportsFoldersThatDoNotFitIntoTheLimitOfOpenFiles) {
  const ScopedTempDir folder;
  folder.Write("a/b/c/file", "x");
  const FileLimit limit(2);
  const TreeUsage tree = MeasureTree(folder.GetPath(), kWholeTree);
  ASSERT_THAT(UnreadIn(tree), ElementsAre(folder.GetPath("a/b")));
  EXPECT_EQ(tree.unread[0].error, EMFILE);
  EXPECT_FALSE(EntryAt(tree, folder.GetPath()).isComplete);
}

TEST(TreeUsageTest, ATopThatCannotBeOpenedIsAnError) {
  const ScopedTempDir folder;
  const auto measure = [](const std::string& path) {
    return [path] { MeasureTree(path, kWholeTree); };
  };
  EXPECT_THAT(measure("/nosuch\nfolder"),
              ThrowsMessage<KestrelException>(
                  "Unable to read /nosuch\\x0afolder: No such file or directory"));
  const std::string file = folder.Write("file", "");
  EXPECT_THAT(measure(file),
              ThrowsMessage<KestrelException>("Unable to read " + file + ": Not a directory"));
  const LockedFolder locked(folder, "locked");
  const Testing::PlainUser user;
  EXPECT_THAT(measure(locked.GetPath()),
              ThrowsMessage<KestrelException>("Unable to read " + locked.GetPath() +
                                              ": Permission denied"));
}

// Calls `check` with the path of a folder that contains two mounts. One is another file system; the
// other is a part of the folder's own file system, mounted for a second time.
void RunWithMounts(void (*check)(const std::string& path)) {
  const std::string refusal = Testing::RunInNamespaces(CLONE_NEWNS, [check] {
    ASSERT_EQ(::mount("outer", "/mnt", "tmpfs", 0, ""), 0);
    Witness("mkdir /mnt/own /mnt/again /mnt/other && echo x > /mnt/own/file");
    ASSERT_EQ(::mount("/mnt/own", "/mnt/again", nullptr, MS_BIND, nullptr), 0);
    ASSERT_EQ(::mount("inner", "/mnt/other", "tmpfs", 0, ""), 0);
    Witness("echo x > /mnt/other/file");
    check("/mnt");
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

TEST(TreeUsageTest, StaysOnTheFileSystemOfTheTop) {
  RunWithMounts([](const std::string& path) {
    const TreeUsage tree = MeasureTree(path, kWholeTree);
    EXPECT_EQ(EntryAt(tree, path).usage.files, 3) << "the top, one folder and its file";
  });
}

TEST(TreeUsageTest, CrossesFileSystemsOnDemandButCountsAFolderOnceEvenIfItIsMountedTwice) {
  RunWithMounts([](const std::string& path) {
    const TreeUsage tree = MeasureTree(path, {1, false, true});
    EXPECT_EQ(EntryAt(tree, path).usage.files, 5);
    EXPECT_EQ(EntryAt(tree, path + "/other").usage.files, 2);
  });
}

TEST(SpaceUsageTest, ASumBeyondALongBecomesTheLargestLong) {
  constexpr long kMax = 0x7FFFFFFFFFFFFFFF;
  SpaceUsage usage = {kMax - 1, kMax, 1};
  usage.Add({5, 5, 2});
  EXPECT_EQ(usage.diskSize, kMax);
  EXPECT_EQ(usage.apparentSize, kMax);
  EXPECT_EQ(usage.files, 3);
}

}  // namespace
}  // namespace Kestrel::Host
