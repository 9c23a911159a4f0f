// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/file/Archive.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "kestrel/KestrelException.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Testing::ScopedTempDir;
using ::testing::ThrowsMessage;
using Testing::Witness;

constexpr std::time_t kSampleTime = 1715000000;

std::vector<ArchiveMember> Members(const std::string& path) {
  std::vector<ArchiveMember> members;
  VisitArchive(path, [&members](const ArchiveMember& member) { members.push_back(member); });
  return members;
}

std::vector<std::string> Names(const std::string& path) {
  std::vector<std::string> names;
  for (const ArchiveMember& member : Members(path)) {
    names.push_back(member.name);
  }
  return names;
}

// A folder with an archive that `command` creates in it.
class MadeArchive {
 public:
  explicit MadeArchive(const std::string& command) {
    Witness("cd '" + folder_.GetPath() + "' && mkdir in && cd in && " + command);
  }
  std::string GetPath() const { return folder_.GetPath("archive"); }

 private:
  ScopedTempDir folder_;
};

constexpr char kMakeFiles[] =
    "mkdir folder && printf 12345 > folder/file && chmod 640 folder/file && "
    "ln folder/file folder/hard && ln -s file folder/soft && mkfifo pipe && "
    "tar -c --owner=ann:7 --group=users:8 --mtime=@1715000000 --sort=name ";

struct FormatCase {
  const char* name;
  const char* options;
};

class ArchiveFormatTest : public ::testing::TestWithParam<FormatCase> {};

TEST_P(ArchiveFormatTest, ListsTheMembersOfATarArchive) {
  const MadeArchive archive(std::string(kMakeFiles) + GetParam().options + " -f ../archive *");
  const std::vector<ArchiveMember> members = Members(archive.GetPath());
  ASSERT_EQ(members.size(), 5U);
  EXPECT_EQ(members[0].name, "folder/");
  EXPECT_EQ(members[0].kind, "folder");
  EXPECT_EQ(members[1].name, "folder/file");
  EXPECT_EQ(members[1].kind, "file");
  EXPECT_EQ(members[1].mode, "-rw-r-----");
  EXPECT_EQ(members[1].size, 5);
  EXPECT_EQ(members[1].userId, 7);
  EXPECT_EQ(members[1].groupId, 8);
  EXPECT_EQ(members[1].modified, kSampleTime);
  EXPECT_EQ(members[1].target, "");
  EXPECT_EQ(members[2].name, "folder/hard");
  EXPECT_EQ(members[2].kind, "hardlink");
  EXPECT_EQ(members[2].target, "folder/file");
  EXPECT_EQ(members[3].name, "folder/soft");
  EXPECT_EQ(members[3].kind, "link");
  EXPECT_EQ(members[3].mode, "lrwxrwxrwx");
  EXPECT_EQ(members[3].target, "file");
  EXPECT_EQ(members[4].name, "pipe");
  EXPECT_EQ(members[4].kind, "pipe");
}

const FormatCase kFormats[] = {
    {"Gnu", "--format=gnu"}, {"Pax", "--format=posix"}, {"Ustar", "--format=ustar"},
    {"Gzip", "--gzip"},      {"Bzip2", "--bzip2"},      {"Xz", "--xz"},
    {"Zstd", "--zstd"},
};
INSTANTIATE_TEST_SUITE_P(Formats, ArchiveFormatTest, ::testing::ValuesIn(kFormats),
                         [](const auto& row) { return row.param.name; });

TEST(ArchiveTest, ReturnsTheNamesOfOwnersInTheArchive) {
  const MadeArchive named(std::string(kMakeFiles) + "-f ../archive pipe");
  EXPECT_EQ(Members(named.GetPath()).at(0).user, "ann");
  EXPECT_EQ(Members(named.GetPath()).at(0).group, "users");
  const MadeArchive numbered(std::string(kMakeFiles) + "--numeric-owner -f ../archive pipe");
  EXPECT_EQ(Members(numbered.GetPath()).at(0).user, "");
  EXPECT_EQ(Members(numbered.GetPath()).at(0).userId, 7);
}

TEST(ArchiveTest, ListsTheMembersOfAZipArchive) {
  const MadeArchive archive(R"(python3 -c "
import zipfile
with zipfile.ZipFile('../archive', 'w', zipfile.ZIP_DEFLATED) as archive:
    archive.writestr('folder/', '')
    member = zipfile.ZipInfo('folder/a b', (2024, 5, 6, 7, 8, 10))
    member.external_attr = 0o100640 << 16
    member.create_system = 3
    archive.writestr(member, 'x' * 5000)
")");
  const std::vector<ArchiveMember> members = Members(archive.GetPath());
  ASSERT_EQ(members.size(), 2U);
  EXPECT_EQ(members[0].name, "folder/");
  EXPECT_EQ(members[0].kind, "folder");
  EXPECT_EQ(members[1].name, "folder/a b");
  EXPECT_EQ(members[1].kind, "file");
  EXPECT_EQ(members[1].mode, "-rw-r-----");
  EXPECT_EQ(members[1].size, 5000);
  ASSERT_TRUE(members[1].modified.has_value());
  std::tm time = {};
  ASSERT_NE(::localtime_r(&*members[1].modified, &time), nullptr);
  EXPECT_EQ(time.tm_hour, 7);
  EXPECT_EQ(time.tm_sec, 10);
}

// Unusual names. The GNU and pax formats store some of them, and the long names below, in different
// ways.
const char* const kNames[] = {
    "plain", "a b", "line\nend", "tab\t", "'\"\\", "-n", "\xFF\xFE", "\xC3\xA4", "e\xCC\x81",
};

class ArchiveNameTest : public ::testing::TestWithParam<const char*> {};

TEST_P(ArchiveNameTest, KeepsTheBytesOfEveryName) {
  const ScopedTempDir folder;
  std::vector<std::string> expected;
  std::string list;
  for (const std::string name : kNames) {
    folder.Write("in/" + name, "");
    list += "./" + name + '\0';
    expected.push_back("./" + name);
  }
  for (const std::size_t length : {100, 101, 155, 200, 255}) {
    const std::string name(length, 'n');
    folder.Write("in/" + name, "");
    list += "./" + name + '\0';
    expected.push_back("./" + name);
  }
  folder.Write("list", list);
  Witness("cd '" + folder.GetPath("in") + "' && tar -c --format=" + GetParam() +
          " -f ../archive --null -T ../list");
  EXPECT_EQ(Names(folder.GetPath("archive")), expected);
}

INSTANTIATE_TEST_SUITE_P(Formats, ArchiveNameTest, ::testing::Values("gnu", "posix"),
                         [](const auto& row) { return std::string(row.param); });

TEST(ArchiveTest, ReportsTheSizeOfSparseAndOfLargeMembers) {
  const MadeArchive archive(
      "truncate -s 9G large && printf x > small && tar -c --sparse -f ../archive large small");
  const std::vector<ArchiveMember> members = Members(archive.GetPath());
  ASSERT_EQ(members.size(), 2U);
  EXPECT_EQ(members[0].size, 9L << 30);
  EXPECT_EQ(members[1].size, 1);
}

TEST(ArchiveTest, TimesBefore1970AndAfter2038AreKept) {
  const MadeArchive archive(
      "touch -d @-1000 old && touch -d @9999999999 new && "
      "tar -c --format=posix -f ../archive old new");
  const std::vector<ArchiveMember> members = Members(archive.GetPath());
  ASSERT_EQ(members.size(), 2U);
  EXPECT_EQ(members[0].modified, -1000);
  EXPECT_EQ(members[1].modified, 9999999999);
}

TEST(ArchiveTest, AnArchiveWithoutMembersIsEmpty) {
  const MadeArchive tar("tar -c -f ../archive -T /dev/null");
  EXPECT_THAT(Members(tar.GetPath()), IsEmpty());
  const MadeArchive zip(
      "python3 -c \"import zipfile; zipfile.ZipFile('../archive', 'w').close()\"");
  EXPECT_THAT(Members(zip.GetPath()), IsEmpty());
}

auto Reading(const std::string& path) {
  return [path] { Members(path); };
}

TEST(ArchiveTest, RefusesAFileThatIsNotAnArchive) {
  const ScopedTempDir folder;
  for (const std::string text : {"", "x", "no archive\n", "PK", "\x1f\x8b"}) {
    const std::string path = folder.Write("file", text);
    EXPECT_THAT(Reading(path),
                ThrowsMessage<KestrelException>(HasSubstr("Unable to read " + path + ": ")))
        << text;
  }
  EXPECT_THAT(Reading("/nosuch"),
              ThrowsMessage<KestrelException>("Unable to read /nosuch: No such file or directory"));
  EXPECT_THAT(Reading("/dev/zero"),
              ThrowsMessage<KestrelException>("Unable to read /dev/zero: Not a regular file"));
}

class DamagedArchiveTest : public ::testing::TestWithParam<FormatCase> {};

// The last bytes of an archive, which are not tested: a plain one ends in blocks of zeros, which a
// reader does not need.
constexpr std::size_t kUntestedEnd = 1600;

// A truncated archive must not be read as a shorter list. None of the sizes ends right after a
// member, because a plain archive would then look complete.
TEST_P(DamagedArchiveTest, ATruncatedArchiveIsAnError) {
  const ScopedTempDir folder;
  for (const std::string name : {"in/a", "in/b"}) {
    std::string data;
    for (unsigned i = 0; i < 9000; ++i) {
      data += static_cast<char>(i * i * 31 >> 5U);
    }
    folder.Write(name, data);
  }
  Witness("cd '" + folder.GetPath("in") + "' && tar -c --blocking-factor=1 " + GetParam().options +
          " -f ../archive a b");
  const std::string whole = folder.Read("archive");
  EXPECT_THAT(Names(folder.GetPath("archive")), ElementsAre("a", "b"));
  ASSERT_GT(whole.size(), 2 * kUntestedEnd);
  for (std::size_t size = 1; size + kUntestedEnd < whole.size(); size += 97) {
    const std::string cut = folder.Write("cut", whole.substr(0, size));
    EXPECT_THAT(Reading(cut), ThrowsMessage<KestrelException>(HasSubstr("Unable to read " + cut)))
        << size;
  }
}

const FormatCase kDamagedFormats[] = {
    {"Plain", ""}, {"Gzip", "--gzip"}, {"Bzip2", "--bzip2"}, {"Xz", "--xz"}, {"Zstd", "--zstd"},
};
INSTANTIATE_TEST_SUITE_P(Formats, DamagedArchiveTest, ::testing::ValuesIn(kDamagedFormats),
                         [](const auto& row) { return row.param.name; });

// Such an archive cannot be distinguished from a complete one.
TEST(ArchiveTest, ATarArchiveThatEndsRightAfterAMemberIsAShorterList) {
  const ScopedTempDir folder;
  folder.Write("in/a", "x");
  folder.Write("in/b", "x");
  Witness("cd '" + folder.GetPath("in") + "' && tar -c -f ../archive a b");
  const std::string path = folder.Write("cut", folder.Read("archive").substr(0, 1024));
  EXPECT_THAT(Names(path), ElementsAre("a"));
}

TEST(ArchiveTest, ADamagedHeaderIsAnError) {
  const ScopedTempDir folder;
  folder.Write("in/a", "x");
  folder.Write("in/b", "x");
  Witness("cd '" + folder.GetPath("in") + "' && tar -c -f ../archive a b");
  std::string bytes = folder.Read("archive");
  bytes[1024 + 110] = '9';  // in a number of the second header
  const std::string path = folder.Write("damaged", bytes);
  EXPECT_THAT(Reading(path),
              ThrowsMessage<KestrelException>("Unable to read " + path + ": Damaged tar archive"));
}

TEST(ArchiveTest, TheMembersBeforeAnErrorAreVisited) {
  const ScopedTempDir folder;
  folder.Write("in/a", "x");
  folder.Write("in/b", std::string(5000, 'x'));
  Witness("cd '" + folder.GetPath("in") + "' && tar -c -f ../archive a b");
  const std::string path = folder.Write("cut", folder.Read("archive").substr(0, 2000));
  std::vector<std::string> names;
  EXPECT_THROW(VisitArchive(path, [&](const ArchiveMember& each) { names.push_back(each.name); }),
               KestrelException);
  EXPECT_THAT(names, ElementsAre("a", "b"));
}

}  // namespace
}  // namespace Kestrel::Host
