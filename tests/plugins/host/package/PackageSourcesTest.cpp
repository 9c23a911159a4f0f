// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <string_view>
#include <vector>

#include "kestrel/KestrelException.h"
#include "plugins/host/package/InstalledFiles.h"
#include "plugins/host/package/PackageMarks.h"
#include "plugins/host/package/PackagePolicy.h"
#include "plugins/host/support/PlainUser.h"
#include "support/ScopedTempDir.h"

// Lists of files, apt's marks and apt's output that are unusual, truncated or damaged.
namespace Kestrel::Host {
namespace {

using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using Testing::ScopedTempDir;
using ::testing::SizeIs;
using ::testing::ThrowsMessage;

Package Sample(std::string_view architecture = "amd64") {
  Package package;
  package.name = "sample";
  package.architecture = architecture;
  return package;
}

// ---- lists of files

struct ListCase {
  const char* name;
  std::string text;
  std::vector<std::string> paths;
};

const ListCase kLists[] = {
    {"Empty", "", {}},
    {"OnlyTheRoot", "/.\n", {"/."}},
    {"Spaces", "/a b\n/ \n/a \n", {"/a b", "/ ", "/a "}},
    {"Tabs", "/a\tb\n", {"/a\tb"}},
    {"Quotes", "/it's \"q\"\n", {"/it's \"q\""}},
    {"Shell", "/$(id)\n/`id`\n/*\n", {"/$(id)", "/`id`", "/*"}},
    {"NotUtf8", "/\xff\xfe\n", {"/\xff\xfe"}},
    {"NotAscii", "/\xc3\xa4\n", {"/\xc3\xa4"}},
    {"CarriageReturns", "/a\r\n/b\r\n", {"/a\r", "/b\r"}},
    {"NulBytes", std::string("/a\0b\n", 5), {std::string("/a\0b", 4)}},
    {"Dots", "/..\n/../a\n", {"/..", "/../a"}},
    {"Twice", "/a\n/a\n", {"/a", "/a"}},
    {"AnEscapeOfATerminal", "/\x1b[2J\n", {"/\x1b[2J"}},
};

class FileListTest : public ::testing::TestWithParam<ListCase> {};

TEST_P(FileListTest, IsReadUnchanged) {
  const ScopedTempDir folder;
  folder.Write("info/sample.list", GetParam().text);
  std::vector<std::string> paths;
  for (const InstalledFile& file : ReadInstalledFiles(Sample(), folder.GetPath())) {
    paths.push_back(file.path);
    EXPECT_EQ(file.divertedTo, "");
  }
  EXPECT_THAT(paths, ElementsAreArray(GetParam().paths));
}

INSTANTIATE_TEST_SUITE_P(Lists, FileListTest, ::testing::ValuesIn(kLists),
                         [](const auto& test) { return test.param.name; });

TEST(FileListFormTest, TruncatedInAnyLineIsAnError) {
  const ScopedTempDir folder;
  const std::string whole = "/.\n/usr\n/usr/bin\n/usr/bin/x\n";
  for (std::size_t length = 1; length < whole.size(); ++length) {
    const std::string path = folder.Write("info/sample.list", whole.substr(0, length));
    if (whole[length - 1] == '\n') {
      continue;  // every line is complete, and dpkg does not store their number
    }
    EXPECT_THAT([&] { ReadInstalledFiles(Sample(), folder.GetPath()); },
                ThrowsMessage<KestrelException>("Unable to read " + path +
                                                ": it ends in the middle of a line"))
        << length;
  }
}

TEST(FileListFormTest, ManyFilesAndDiversionsAreRead) {
  const ScopedTempDir folder;
  std::string list;
  std::string diversions;
  for (int number = 0; number < 100000; ++number) {
    const std::string path = "/usr/share/" + std::to_string(number);
    list += path + "\n";
    if (number % 10 == 0) {
      diversions += path;
      diversions += "\n" + path + ".real\nother\n";
    }
  }
  folder.Write("info/sample.list", list);
  folder.Write("diversions", diversions);
  const auto files = ReadInstalledFiles(Sample(), folder.GetPath());
  ASSERT_THAT(files, SizeIs(100000));
  EXPECT_EQ(files[99990].divertedTo, "/usr/share/99990.real");
  EXPECT_EQ(files[99991].divertedTo, "");
}

TEST(FileListFormTest, TheListOfAnotherArchitectureIsNotUsed) {
  const ScopedTempDir folder;
  folder.Write("info/sample:i386.list", "/i\n");
  EXPECT_THAT(
      [&] { ReadInstalledFiles(Sample("amd64"), folder.GetPath()); },
      ThrowsMessage<KestrelException>("Unable to read " + folder.GetPath("info/sample.list") +
                                      ": No such file or directory"));
}

TEST(FileListFormTest, AListThatMayNotBeReadIsAnError) {
  const ScopedTempDir folder;
  ASSERT_EQ(::chmod(folder.GetPath().c_str(), 0755), 0);
  const std::string path = folder.Write("info/sample:amd64.list", "/a\n");
  folder.Write("info/sample.list", "/not this\n");
  ASSERT_EQ(::chmod(path.c_str(), 0), 0);
  const Testing::PlainUser user;
  EXPECT_THAT([&] { ReadInstalledFiles(Sample(), folder.GetPath()); },
              ThrowsMessage<KestrelException>("Unable to read " + path + ": Permission denied"));
}

// ---- marks

struct MarkCase {
  const char* value;
  bool isAutomatic;
};

TEST(MarkFileTest, OnlyTheValue1MeansAutomatic) {
  const MarkCase cases[] = {{"1", true},   {" 1 ", true},  {"0", false},    {"", false},
                            {"2", false},  {"yes", false}, {"true", false}, {"11", false},
                            {"01", false}, {"1 1", false}, {"-1", false}};
  for (const MarkCase& each : cases) {
    const ScopedTempDir folder;
    folder.Write("extended_states", "Package: sample\nArchitecture: amd64\nAuto-Installed: " +
                                        std::string(each.value) + "\n\n");
    EXPECT_EQ(PackageMarks("amd64", folder.GetPath()).IsAutomatic(Sample()), each.isAutomatic)
        << each.value;
  }
}

TEST(MarkFileTest, TruncatedWithinAnEntryIsAnError) {
  const ScopedTempDir folder;
  const std::string one = "Package: sample\nArchitecture: amd64\nAuto-Installed: 1\n\n";
  const std::string whole = one + one;
  for (std::size_t length = 1; length < whole.size(); ++length) {
    folder.Write("extended_states", whole.substr(0, length));
    if (length == one.size()) {
      continue;
    }
    EXPECT_THAT([&] { PackageMarks marks("amd64", folder.GetPath()); },
                ThrowsMessage<KestrelException>(HasSubstr("it ends in the middle of an entry")))
        << length;
  }
}

TEST(MarkFileTest, UnknownFieldsAndOtherPackagesDoNotMatter) {
  const ScopedTempDir folder;
  folder.Write("extended_states",
               "Package: other\nArchitecture: amd64\nAuto-Installed: 1\n\n"
               "Future: x\nPackage: sample\nAuto-Installed: 1\nArchitecture: amd64\n\n"
               "Package: sample-doc\nArchitecture: amd64\nAuto-Installed: 0\n\n");
  EXPECT_TRUE(PackageMarks("amd64", folder.GetPath()).IsAutomatic(Sample()));
}

TEST(MarkFileTest, AFolderOrALoopOfLinksIsAnError) {
  const ScopedTempDir folder;
  const std::string path = folder.MakeDirectory("extended_states");
  EXPECT_THAT([&] { PackageMarks marks("amd64", folder.GetPath()); },
              ThrowsMessage<KestrelException>("Unable to read " + path + ": Is a directory"));
  ASSERT_EQ(::rmdir(path.c_str()), 0);
  ASSERT_EQ(::symlink("extended_states", path.c_str()), 0);
  EXPECT_THAT([&] { PackageMarks marks("amd64", folder.GetPath()); },
              ThrowsMessage<KestrelException>("Unable to read " + path +
                                              ": Too many levels of symbolic links"));
}

// ---- output of apt-cache

constexpr char kAnswer[] =
    "one:\n"
    "  Installed: 1.0-1\n"
    "  Candidate: 1.0-2\n"
    "  Version table:\n"
    "     1.0-2 500\n"
    "        500 http://deb.example.org/debian stable/main amd64 Packages\n"
    " *** 1.0-1 100\n"
    "        100 /var/lib/dpkg/status\n"
    "two:\n"
    "  Installed: 2\n"
    "  Candidate: 2\n"
    "  Version table:\n"
    " *** 2 500\n"
    "        500 http://deb.example.org/debian stable/main amd64 Packages\n"
    "        100 /var/lib/dpkg/status\n";

PackagePolicy Read(std::string_view text) {
  PackagePolicy policy;
  policy.Add(text);
  return policy;
}

// Wherever the answer ends, a package is unknown or has the right candidate, never an older one.
TEST(PolicyAnswerTest, TruncatedAnywhereNeverChangesACandidate) {
  const std::string whole = kAnswer;
  for (std::size_t length = 1; length <= whole.size(); ++length) {
    const std::string text = whole.substr(0, length);
    if (text.back() != '\n') {
      EXPECT_THAT([&] { Read(text); }, ThrowsMessage<KestrelException>(
                                           "apt-cache's answer ends in the middle of a line"));
      continue;
    }
    for (const auto& [name, candidate] : Read(text).candidates) {
      EXPECT_EQ(candidate.version, candidate.isKnown ? name == "one" ? "1.0-2" : "2" : "")
          << length;
    }
  }
}

TEST(PolicyAnswerTest, APackageIsKnownOnceItsCandidateIsRead) {
  EXPECT_FALSE(Read("one:\n").candidates.at("one").isKnown);
  EXPECT_FALSE(Read("one:\n  Installed: 1\n").candidates.at("one").isKnown);
  EXPECT_TRUE(Read("one:\n  Candidate: 1\n").candidates.at("one").isKnown);
  EXPECT_TRUE(Read("one:\n  Candidate: (none)\n").candidates.at("one").isKnown);
}

struct AnswerCase {
  const char* name;
  const char* text;
  const char* version;
  const char* source;
};

const AnswerCase kAnswers[] = {
    {"AnEpochAndATilde",
     "p:\n  Candidate: 1:2~rc1-1\n  Version table:\n     1:2~rc1-1 500\n        500 s\n",
     "1:2~rc1-1", "s"},
    {"TheFirstOfTwoSources",
     "p:\n  Candidate: 2\n  Version table:\n     2 500\n        500 a\n        500 b\n", "2", "a"},
    {"TheSourceOfTheCandidateOnly",
     "p:\n  Candidate: 2\n  Version table:\n     3 -1\n        -1 c\n     2 500\n        500 b\n",
     "2", "b"},
    {"AVersionThatBeginsWithTheCandidate",
     "p:\n  Candidate: 2\n  Version table:\n     2.1 -1\n        -1 c\n     2 500\n        500 b\n",
     "2", "b"},
    {"AnInstalledCandidate", "p:\n  Candidate: 2\n  Version table:\n *** 2 500\n        500 b\n",
     "2", "b"},
    {"OnlyTheDatabase",
     "p:\n  Candidate: 2\n  Version table:\n *** 2 100\n        100 /var/lib/dpkg/status\n", "2",
     ""},
    {"ALocalFile", "p:\n  Candidate: 2\n  Version table:\n     2 500\n        500 file:/a b c\n",
     "2", "file:/a b c"},
    {"NoTable", "p:\n  Candidate: 2\n", "2", ""},
    {"APinOfThePackage",
     "p:\n  Candidate: 2\n  Package pin: 2\n  Version table:\n     2 990\n        990 s\n", "2",
     "s"},
    {"EmptyLines", "\np:\n\n  Candidate: 2\n\n", "2", ""},
};

class PolicyCandidateTest : public ::testing::TestWithParam<AnswerCase> {};

TEST_P(PolicyCandidateTest, IsRead) {
  const PackagePolicy policy = Read(GetParam().text);
  ASSERT_THAT(policy.candidates, SizeIs(1));
  EXPECT_EQ(policy.candidates.at("p").version, GetParam().version);
  EXPECT_EQ(policy.candidates.at("p").source, GetParam().source);
}

INSTANTIATE_TEST_SUITE_P(Answers, PolicyCandidateTest, ::testing::ValuesIn(kAnswers),
                         [](const auto& test) { return test.param.name; });

TEST(PolicyAnswerTest, ThousandsOfPackagesAreRead) {
  std::string text;
  for (int number = 0; number < 20000; ++number) {
    text += "p" + std::to_string(number) + ":\n  Candidate: " + std::to_string(number) + "\n";
  }
  const PackagePolicy policy = Read(text);
  EXPECT_THAT(policy.candidates, SizeIs(20000));
  EXPECT_EQ(policy.candidates.at("p19999").version, "19999");
}

TEST(PolicyAnswerTest, OtherOutputIsRefusedAndShownSafely) {
  EXPECT_THAT(
      [] { Read("\x1b[2J\n"); },
      ThrowsMessage<KestrelException>("The output of apt-cache has an unknown form: \\x1b[2J"));
  EXPECT_THAT([] { Read(std::string(500, 'x') + "\n"); },
              ThrowsMessage<KestrelException>("The output of apt-cache has an unknown form: " +
                                              std::string(80, 'x')));
  EXPECT_THAT([] { Read("N: Unable to locate package x\n"); },
              ThrowsMessage<KestrelException>(
                  "The output of apt-cache has an unknown form: N: Unable to locate package x"));
}

}  // namespace
}  // namespace Kestrel::Host
