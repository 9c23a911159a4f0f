// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/GroupFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <string_view>

namespace Kestrel::Host {

bool operator==(const GroupLine& left, const GroupLine& right) {
  return left.id == right.id && left.name == right.name;
}

void PrintTo(const GroupLine& group, std::ostream* out) { *out << group.name << "=" << group.id; }

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Optional;

TEST(GroupFileTest, ReturnsTheGroupsInTheirOrder) {
  EXPECT_THAT(
      ParseGroupFile("root:x:0:\nusers:x:100:anna,bert\nadm::4\n"),
      Optional(ElementsAre(GroupLine{0, "root"}, GroupLine{100, "users"}, GroupLine{4, "adm"})));
}

TEST(GroupFileTest, TheLastLineNeedNotEndWithALineFeed) {
  EXPECT_THAT(ParseGroupFile("a:x:1:\nb:x:4294967295:"),
              Optional(ElementsAre(GroupLine{1, "a"}, GroupLine{4294967295, "b"})));
}

TEST(GroupFileTest, IgnoresCommentsAndEmptyLines) {
  EXPECT_THAT(ParseGroupFile("\n# root:x:0:\n#a:x:1:\n \t\nb:x:2:\n  # end"),
              Optional(ElementsAre(GroupLine{2, "b"})));
  EXPECT_THAT(ParseGroupFile(""), Optional(IsEmpty()));
}

TEST(GroupFileTest, NamesPointIntoTheText) {
  const std::string text = "a:x:1:\nstaff:x:50:\n";
  const auto groups = ParseGroupFile(text);
  ASSERT_TRUE(groups.has_value());
  EXPECT_EQ((*groups)[1].name.data(), text.data() + 7);
}

struct TextCase {
  const char* name;
  std::string_view text;
};

class UnusualGroupFileTest : public ::testing::TestWithParam<TextCase> {};

TEST_P(UnusualGroupFileTest, IsNotParsed) {
  const std::string text = "a:x:1:\n" + std::string(GetParam().text) + "\nb:x:2:\n";
  EXPECT_FALSE(ParseGroupFile(text).has_value());
}

constexpr TextCase kUnusualLines[] = {
    {"NoColon", "staff"},
    {"OneColon", "staff:50"},
    {"NoName", ":x:50:"},
    {"NoNumber", "staff:x::"},
    {"NothingAfterThePassword", "staff:x:"},
    {"NumberOfLetters", "staff:x:fifty:"},
    {"LettersAfterTheNumber", "staff:x:50a:"},
    {"SpaceBeforeTheNumber", "staff:x: 50:"},
    {"Sign", "staff:x:+50:"},
    {"Negative", "staff:x:-1:"},
    {"TooLarge", "staff:x:4294967296:"},
    {"CarriageReturn", "staff:x:50\r"},
    {"Plus", "+"},
    {"PlusName", "+staff:x:50:"},
    {"MinusName", "-staff:x:50:"},
    {"SpaceBeforeTheName", " staff:x:50:"},
    {"Nul", {"staff:x:50:\0", 12}},
};
INSTANTIATE_TEST_SUITE_P(Lines, UnusualGroupFileTest, ::testing::ValuesIn(kUnusualLines),
                         [](const auto& row) { return std::string(row.param.name); });

struct SourcesCase {
  const char* name;
  const char* text;
  bool isFileFirst;
  bool isListComplete;
};

class GroupSourcesTest : public ::testing::TestWithParam<SourcesCase> {};

TEST_P(GroupSourcesTest, AreUnderstood) {
  const GroupSources sources = ParseGroupSources(GetParam().text);
  EXPECT_EQ(sources.isFileFirst, GetParam().isFileFirst);
  EXPECT_EQ(sources.isListComplete, GetParam().isListComplete);
}

constexpr SourcesCase kSources[] = {
    {"Files", "group: files\n", true, true},
    {"FilesAndSystemd", "passwd: compat\ngroup:\t\tfiles systemd\nhosts: dns\n", true, true},
    {"NoSpace", "group:files", true, true},
    {"Comment", "# all\n  group : files # not sss\n", true, true},
    {"Merged", "group: files [SUCCESS=merge] systemd", true, true},
    {"Return", "group: files [success=return] [NOTFOUND=return] systemd", true, true},
    {"Directory", "group: files sss", true, false},
    {"DirectoryAfterSystemd", "group: files systemd ldap", true, false},
    // A source other than the file may decide.
    {"Continue", "group: files [SUCCESS=continue] sss", false, false},
    {"Not", "group: files [!NOTFOUND=continue] sss", false, false},
    {"SpacesInAnAction", "group: files [ SUCCESS=continue ] sss", false, false},
    {"FilesSecond", "group: sss files", false, false},
    {"Compat", "group: compat", false, false},
    {"ActionFirst", "group: [SUCCESS=return] files", false, false},
    // No line sets a source for groups, or more than one line does.
    {"OtherDatabases", "gshadow: files\nnetgroup: files\ngroups: files\n", false, false},
    {"CommentedOut", "#group: files\n", false, false},
    {"Twice", "group: files\ngroup: sss\n", false, false},
    {"NoSource", "group:\n", false, false},
    {"NoColon", "group files\n", false, false},
    {"UpperCase", "GROUP: files\n", false, false},
    {"Empty", "", false, false},
};
INSTANTIATE_TEST_SUITE_P(Settings, GroupSourcesTest, ::testing::ValuesIn(kSources),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace Kestrel::Host
