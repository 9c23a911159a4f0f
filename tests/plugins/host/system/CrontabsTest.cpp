// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/Crontabs.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "kestrel/KestrelException.h"
#include "plugins/host/support/PlainUser.h"
#include "support/Random.h"
#include "support/ScopedTempDir.h"

namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Testing::PlainUser;
using Testing::ScopedTempDir;
using ::testing::ThrowsMessage;

// Returns a line for each entry: its line number, user, schedule and command, and its problem if
// there is one.
std::vector<std::string> Show(const std::vector<CrontabEntry>& entries) {
  std::vector<std::string> lines;
  lines.reserve(entries.size());
  for (const CrontabEntry& entry : entries) {
    lines.push_back(std::to_string(entry.line) + "|" + entry.user + "|" + entry.schedule + "|" +
                    entry.command + (entry.problem.empty() ? "" : "|" + entry.problem));
  }
  return lines;
}

std::vector<std::string> OfUser(const std::string& text) {
  return Show(ParseCrontab(text, "file", "anna"));
}

std::vector<std::string> OfSystem(const std::string& text) {
  return Show(ParseCrontab(text, "file", ""));
}

TEST(CrontabsTest, ReadsTheEntriesOfAUser) {
  EXPECT_THAT(OfUser("# comment\n\n  \t\n  */5 *\t* * 1-5   echo a\tb  c\n0 1 2 3 4 A=b run\n"),
              ElementsAre("4|anna|*/5 * * * 1-5|echo a\tb  c", "5|anna|0 1 2 3 4|A=b run"));
}

TEST(CrontabsTest, ReadsTheEntriesOfTheSystem) {
  EXPECT_THAT(OfSystem("17 *\t* * *\troot    cd / && run-parts --report /etc/cron.hourly\n"),
              ElementsAre("1|root|17 * * * *|cd / && run-parts --report /etc/cron.hourly"));
}

TEST(CrontabsTest, KeepsTheColumnsOfASchedule) {
  const auto entries = ParseCrontab("1 2 3 jan Mon x\n", "file", "anna");
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_THAT(entries[0].columns, ElementsAre("1", "2", "3", "jan", "Mon"));
  EXPECT_EQ(entries[0].file, "file");
}

struct WordCase {
  const char* name;
  std::array<const char*, kCrontabColumns> columns;
};

const WordCase kWords[] = {
    {"reboot", {"", "", "", "", ""}},        {"yearly", {"0", "0", "1", "1", "*"}},
    {"annually", {"0", "0", "1", "1", "*"}}, {"monthly", {"0", "0", "1", "*", "*"}},
    {"weekly", {"0", "0", "*", "*", "0"}},   {"daily", {"0", "0", "*", "*", "*"}},
    {"midnight", {"0", "0", "*", "*", "*"}}, {"hourly", {"0", "*", "*", "*", "*"}},
};

class CrontabWordTest : public ::testing::TestWithParam<WordCase> {};

TEST_P(CrontabWordTest, ReplacesTheColumns) {
  const std::string word = std::string("@") + GetParam().name;
  for (const bool hasUserColumn : {false, true}) {
    const std::string line = word + (hasUserColumn ? " anna" : "") + " run it\n";
    const auto entries = ParseCrontab(line, "file", hasUserColumn ? "" : "anna");
    EXPECT_THAT(Show(entries), ElementsAre("1|anna|" + word + "|run it"));
    EXPECT_TRUE(std::equal(entries[0].columns.begin(), entries[0].columns.end(),
                           GetParam().columns.begin(), GetParam().columns.end()));
  }
}

INSTANTIATE_TEST_SUITE_P(Words, CrontabWordTest, ::testing::ValuesIn(kWords),
                         [](const auto& test) { return test.param.name; });

TEST(CrontabsTest, ASettingAppliesToTheLinesBelowIt) {
  const auto entries = ParseCrontab(
      "@daily first\nMAILTO = ann\nPATH=/bin:/usr/bin\n@daily second\nMAILTO=\"\"\n@daily third\n",
      "file", "anna");
  ASSERT_EQ(entries.size(), 3u);
  EXPECT_THAT(entries[0].environment, IsEmpty());
  EXPECT_THAT(entries[1].environment, ElementsAre("MAILTO=ann", "PATH=/bin:/usr/bin"));
  EXPECT_THAT(entries[2].environment, ElementsAre("MAILTO=", "PATH=/bin:/usr/bin"));
}

struct SettingCase {
  const char* name;
  const char* line;
  const char* setting;
};

const SettingCase kSettings[] = {
    {"Plain", "A=b", "A=b"},
    {"SpacesAround", "  A \t=  b  ", "A=b"},
    {"SpacesWithin", "A=b c", "A=b c"},
    {"DoubleQuotes", "A=\" b \"", "A= b "},
    {"SingleQuotes", "A='b'", "A=b"},
    {"QuotedName", "'A'=b", "A=b"},
    {"Empty", "A=", "A="},
    {"EmptyInQuotes", "A=''", "A="},
    {"TextAfterTheQuotes", "A='b' c", "A='b' c"},
    {"QuotesThatNeverEnd", "A='b", "A='b"},
    {"EqualsSign", "A=b=c", "A=b=c"},
    {"Digits", "_A1=b", "_A1=b"},
    {"HashIsNoComment", "A=b # c", "A=b # c"},
};

class CrontabSettingTest : public ::testing::TestWithParam<SettingCase> {};

TEST_P(CrontabSettingTest, IsNotAnEntry) {
  const auto entries = ParseCrontab(std::string(GetParam().line) + "\n@daily x\n", "file", "anna");
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_THAT(entries[0].environment, ElementsAre(GetParam().setting));
}

INSTANTIATE_TEST_SUITE_P(Lines, CrontabSettingTest, ::testing::ValuesIn(kSettings),
                         [](const auto& test) { return test.param.name; });

// Valid and invalid values of each column.
struct ColumnCase {
  std::size_t column;
  const char* name;
  std::vector<std::string> valid;
  std::vector<std::string> invalid;
};

const ColumnCase kColumnCases[] = {
    {0,
     "minute",
     {"*", "0", "59", "*/5", "1,2,3", "1-5", "1-59/2", "5/2", "00", "1-2,*/9"},
     {"60", "-1", "x", "*/0", "*/", "/5", "5-1", "1,", ",1", "1-", "-", "1--2", "**", "*/x", "1.5",
      "1/2/3", "99999999999999999999", "0x1", "jan"}},
    {1, "hour", {"0", "23", "9-17"}, {"24", "9-24", "noon"}},
    {2, "day", {"1", "31", "1-15/7"}, {"0", "32", "L", "?"}},
    {3, "month", {"1", "12", "jan", "DEC", "Feb-May", "jan,3"}, {"0", "13", "january", "mon"}},
    {4, "weekday", {"0", "7", "sun", "SAT", "Mon-Fri", "mon,3"}, {"8", "monday", "fri-mon", "5#2"}},
};

class CrontabColumnTest : public ::testing::TestWithParam<ColumnCase> {
 protected:
  // Returns a line with the value in its column.
  static std::string Line(const std::string& value) {
    std::string line;
    for (std::size_t i = 0; i < kCrontabColumns; ++i) {
      line += (i == GetParam().column ? value : "*") + " ";
    }
    return line + "run";
  }
};

TEST_P(CrontabColumnTest, AcceptsWhatCronUnderstands) {
  for (const std::string& value : GetParam().valid) {
    const auto entries = ParseCrontab(Line(value) + "\n", "file", "anna");
    ASSERT_EQ(entries.size(), 1u) << value;
    EXPECT_EQ(entries[0].problem, "") << value;
    EXPECT_EQ(entries[0].columns[GetParam().column], value);
    EXPECT_EQ(entries[0].command, "run") << value;
  }
}

TEST_P(CrontabColumnTest, ReportsAnythingElseWithTheWholeLine) {
  for (const std::string& value : GetParam().invalid) {
    const auto entries = ParseCrontab("  " + Line(value) + "\n", "file", "anna");
    ASSERT_EQ(entries.size(), 1u) << value;
    EXPECT_EQ(entries[0].problem, "'" + value + "' is not a valid " + GetParam().name);
    EXPECT_EQ(entries[0].command, Line(value));
    EXPECT_EQ(entries[0].user, "anna");
  }
}

INSTANTIATE_TEST_SUITE_P(Columns, CrontabColumnTest, ::testing::ValuesIn(kColumnCases),
                         [](const auto& test) { return test.param.name; });

TEST(CrontabsTest, ReportsIncompleteLines) {
  EXPECT_THAT(OfUser("*\n* *\n* * *\n* * * *\n* * * * *\n@daily\n"),
              ElementsAre("1|anna|*|*|there is no hour", "2|anna|* *|* *|there is no day",
                          "3|anna|* * *|* * *|there is no month",
                          "4|anna|* * * *|* * * *|there is no weekday",
                          "5|anna|* * * * *|* * * * *|there is no command",
                          "6|anna|@daily|@daily|there is no command"));
  EXPECT_THAT(OfSystem("@daily\n* * * * * root\n"),
              ElementsAre("1||@daily|@daily|there is no command",
                          "2|root|* * * * *|* * * * * root|there is no command"));
}

TEST(CrontabsTest, ReportsAWordThatIsNotASchedule) {
  EXPECT_THAT(OfUser("@Daily x\n@ x\n@fortnightly x\n"),
              ElementsAre("1|anna|@Daily|@Daily x|there is no schedule @Daily",
                          "2|anna|@|@ x|there is no schedule @",
                          "3|anna|@fortnightly|@fortnightly x|there is no schedule @fortnightly"));
}

TEST(CrontabsTest, ReportsALastLineWithoutLineFeed) {
  EXPECT_THAT(
      OfUser("@daily x\n@daily y"),
      ElementsAre("1|anna|@daily|x", "2|anna|@daily|@daily y|the last line has no line feed"));
  EXPECT_THAT(OfUser("@daily x\n# end"), ElementsAre("1|anna|@daily|x"));
  EXPECT_THAT(OfUser("* x"), ElementsAre("1|anna|*|* x|'x' is not a valid hour"))
      << "one is enough";
}

TEST(CrontabsTest, AnEmptyFileHasNoEntries) {
  EXPECT_THAT(OfUser(""), IsEmpty());
  EXPECT_THAT(OfUser("\n"), IsEmpty());
  EXPECT_THAT(OfUser("# x"), IsEmpty());
}

TEST(CrontabsTest, EveryLineOfRandomBytesIsACommentASettingOrAnEntry) {
  Testing::Random random(20261122);
  for (int i = 0; i < 2000; ++i) {
    std::string line;
    for (std::size_t size = random.Below(12); size > 0; --size) {
      line += "*/,-@=#'\" \t01x\xff"[random.Below(15)];
    }
    const std::size_t first = line.find_first_not_of(" \t");
    const bool isSkipped = first == std::string::npos || line[first] == '#';
    const auto entries = ParseCrontab(line + "\n@daily x\n", "file", "anna");
    const std::size_t settings = entries.back().environment.size();
    EXPECT_EQ(entries.size() + settings + (isSkipped ? 1 : 0), 2u) << line;
  }
}

TEST(CrontabsTest, ReadsTheFilesOfAllUsersByName) {
  const ScopedTempDir root;
  const std::string folder = "var/spool/cron/crontabs/";
  root.Write(folder + "bob", "@daily b\n");
  root.Write(folder + "anna", "@daily a\n");
  root.Write(folder + ".hidden", "@daily h\n");
  root.MakeDirectory(folder + "folder");
  ASSERT_EQ(::mkfifo(root.GetPath(folder + "pipe").c_str(), 0600), 0);
  const auto entries = ReadUserCrontabs(root.GetPath());
  EXPECT_THAT(Show(entries), ElementsAre("1|anna|@daily|a", "1|bob|@daily|b"));
  EXPECT_EQ(entries[0].file, "/var/spool/cron/crontabs/anna");
}

TEST(CrontabsTest, ReadsTheFilesOfTheSystemWithNamesThatCronAccepts) {
  const ScopedTempDir root;
  root.Write("etc/crontab", "@daily root a\n");
  root.Write("etc/cron.d/b_1-X", "@daily root b\n");
  for (const char* const name : {".placeholder", "b.dpkg-old", "b~", "b#", "b 2", "\xc3\xa4"}) {
    root.Write(std::string("etc/cron.d/") + name, "@daily root no\n");
  }
  const auto entries = ReadSystemCrontabs(root.GetPath());
  EXPECT_THAT(Show(entries), ElementsAre("1|root|@daily|a", "1|root|@daily|b"));
  EXPECT_EQ(entries[0].file, "/etc/crontab");
  EXPECT_EQ(entries[1].file, "/etc/cron.d/b_1-X");
}

class IgnoredCrontabTest : public ::testing::Test {
 protected:
  IgnoredCrontabTest() {
    for (const char* const path : {kUserFile, kSystemFile, kPackageFile}) {
      root_.Write(path, "@daily root a\n");
      SetMode(path, 0600);
    }
  }

  void SetMode(const char* path, mode_t mode) const {
    EXPECT_EQ(::chmod(root_.GetPath(path).c_str(), mode), 0);
  }

  void SetOwner(const char* path, uid_t owner) const {
    EXPECT_EQ(::lchown(root_.GetPath(path).c_str(), owner, static_cast<gid_t>(-1)), 0);
  }

  // Returns for each file why it is ignored, or an empty string if it is not, in this order: the
  // user's file, /etc/crontab, the package's file.
  std::vector<std::string> Ignored() const {
    std::vector<std::string> reasons;
    for (const auto read : {ReadUserCrontabs, ReadSystemCrontabs}) {
      for (const CrontabEntry& entry : read(root_.GetPath())) {
        reasons.push_back(entry.ignored);
      }
    }
    return reasons;
  }

  static constexpr char kUserFile[] = "var/spool/cron/crontabs/daemon";
  static constexpr char kSystemFile[] = "etc/crontab";
  static constexpr char kPackageFile[] = "etc/cron.d/package";
  static constexpr char kWritable[] =
      "cron ignores the file: others than its owner can write to it";

  const ScopedTempDir root_;
};

TEST_F(IgnoredCrontabTest, NoneIsIgnoredIfOwnersAndModesAreRight) {
  EXPECT_THAT(Ignored(), ElementsAre("", "", ""));
  for (const char* const path : {kUserFile, kSystemFile, kPackageFile}) {
    SetMode(path, 0755);
  }
  EXPECT_THAT(Ignored(), ElementsAre("", "", ""));
}

TEST_F(IgnoredCrontabTest, AFileThatOthersCanWriteToIsIgnored) {
  SetMode(kUserFile, 0620);
  SetMode(kSystemFile, 0666);
  SetMode(kPackageFile, 0602);
  EXPECT_THAT(Ignored(), ElementsAre(kWritable, kWritable, kWritable));
}

TEST_F(IgnoredCrontabTest, AFileOfAnotherOwnerIsIgnored) {
  if (::geteuid() != 0) {
    GTEST_SKIP() << "Only root can change owners";
  }
  const std::string reason = "cron ignores the file: its owner is not root";
  for (const char* const path : {kUserFile, kSystemFile, kPackageFile}) {
    SetOwner(path, 65534);
  }
  EXPECT_THAT(Ignored(), ElementsAre(reason + " or daemon", reason, reason));
  for (const char* const path : {kUserFile, kSystemFile, kPackageFile}) {
    SetOwner(path, 1);  // daemon
  }
  EXPECT_THAT(Ignored(), ElementsAre("", reason, reason));
}

TEST_F(IgnoredCrontabTest, ALinkOfAnotherOwnerToAFileOfRootIsIgnored) {
  if (::geteuid() != 0) {
    GTEST_SKIP() << "Only root can change owners";
  }
  EXPECT_EQ(::unlink(root_.GetPath(kPackageFile).c_str()), 0);
  EXPECT_EQ(::symlink("../crontab", root_.GetPath(kPackageFile).c_str()), 0);
  EXPECT_THAT(Ignored(), ElementsAre("", "", ""));
  SetOwner(kPackageFile, 1);
  EXPECT_THAT(Ignored(), ElementsAre("", "", "cron ignores the file: its owner is not root"));
}

TEST(CrontabsTest, AMachineWithoutCronHasNoEntries) {
  const ScopedTempDir root;
  EXPECT_THAT(ReadUserCrontabs(root.GetPath()), IsEmpty());
  EXPECT_THAT(ReadSystemCrontabs(root.GetPath()), IsEmpty());
}

TEST(CrontabsTest, ReportsWhatCannotBeRead) {
  struct Hidden {
    const char* path;
    std::vector<CrontabEntry> (*read)(const std::string& root);
  };
  const Hidden cases[] = {{"var/spool/cron/crontabs", ReadUserCrontabs},
                          {"var/spool/cron/crontabs/anna", ReadUserCrontabs},
                          {"etc/crontab", ReadSystemCrontabs},
                          {"etc/cron.d", ReadSystemCrontabs},
                          {"etc/cron.d/package", ReadSystemCrontabs}};
  for (const Hidden& hidden : cases) {
    const std::string path = hidden.path;
    const ScopedTempDir root;
    ::chmod(root.GetPath().c_str(), 0755);
    root.Write("var/spool/cron/crontabs/anna", "@daily x\n");
    root.Write("etc/crontab", "");
    root.Write("etc/cron.d/package", "");
    ASSERT_EQ(::chmod(root.GetPath(path).c_str(), 0), 0);
    const PlainUser user;
    const auto readAll = [&root, read = hidden.read] { read(root.GetPath()); };
    EXPECT_THAT(readAll, ThrowsMessage<KestrelException>("Unable to read " + root.GetPath(path) +
                                                         ": Permission denied"));
  }
}

}  // namespace
}  // namespace Kestrel::Host
