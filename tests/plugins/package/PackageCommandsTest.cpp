// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "plugins/support/CommandCall.h"
#include "support/Witness.h"

// The commands below "package" against the package manager itself.
namespace Kestrel::Testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

std::set<std::string> ManualPackages() {
  std::set<std::string> names;
  for (const std::string& name : WitnessLines("apt-mark showmanual")) {
    names.insert(name.substr(0, name.find(':')));
  }
  return names;
}

std::vector<Row> WitnessRows(const std::string& filter) {
  const std::set<std::string> manual = ManualPackages();
  std::vector<Row> rows;
  for (const std::string& line :
       WitnessLines("dpkg-query -W -f '${db:Status-Status} ${Package} ${Version} ${Architecture} "
                    "${Installed-Size} ${binary:Summary}\\n' | " +
                    filter)) {
    const std::vector<std::string> words = WordsIn(line, 6);
    rows.push_back({{"State", words[0]},
                    {"Name", words[1]},
                    {"Version", words[2]},
                    {"Architecture", words[3]},
                    {"Size", words[4]},
                    {"Summary", words[5]},
                    {"Manual", manual.count(words[1]) != 0 ? "true" : "false"}});
  }
  return rows;
}

TEST(PackageCommandsTest, ListsWhatIsInstalled) {
  EXPECT_EQ(CallRows("package list"), WitnessRows("grep '^installed '"));
}

TEST(PackageCommandsTest, ListsEveryState) {
  EXPECT_EQ(CallRows("package list", {{"state", "any"}}), WitnessRows("cat"));
  EXPECT_EQ(CallRows("package list", {{"state", "config-files"}}),
            WitnessRows("sed -n '/^config-files /p'"));
}

TEST(PackageCommandsTest, ListsByPatterns) {
  EXPECT_EQ(CallRows("package list", {{"name", "lib*1"}, {"name", "perl*"}}),
            WitnessRows("grep -E '^installed (lib[^ ]*1|perl[^ ]*) '"));
  EXPECT_EQ(CallRows("package list", {{"name", "libstdc++*"}}),
            WitnessRows("grep -E '^installed libstdc[+][+]'"));
  EXPECT_THAT(CallRows("package list", {{"name", "no-such-package"}}), IsEmpty());
  // A full stop is no other character.
  EXPECT_THAT(CallRows("package list", {{"name", "ba.h"}}), IsEmpty());
}

TEST(PackageCommandsTest, ListsByMark) {
  const std::vector<std::string> all = CallColumn("package list", "Name");
  const std::vector<std::string> manual = CallColumn("package list", "Name", {{"manual", "True"}});
  const std::vector<std::string> others = CallColumn("package list", "Name", {{"manual", "n"}});
  EXPECT_EQ(manual.size() + others.size(), all.size());
  const std::set<std::string> marked = ManualPackages();
  for (const std::string& name : manual) {
    EXPECT_EQ(marked.count(name), 1U) << name;
  }
  EXPECT_EQ(CallColumn("package list", "Name", {{"manual", "1"}, {"manual", "0"}}), all);
}

TEST(PackageCommandsTest, ShowsOne) {
  const auto field = [](const std::string& name) {
    const std::string text = Witness("dpkg-query -W -f '${" + name + "}' perl-base");
    return text;
  };
  Row record = CallStruct("package get", {{"name", "perl-base"}});
  const std::string maintainer = field("Maintainer");
  const std::size_t bracket = maintainer.find(" <");
  EXPECT_THAT(record["Maintainer"], ::testing::HasSubstr(maintainer.substr(0, bracket)));
  EXPECT_THAT(record["Maintainer"], ::testing::HasSubstr(maintainer.substr(
                                        bracket + 2, maintainer.size() - bracket - 3)));
  record.erase("Maintainer");
  record.erase("Depends");
  EXPECT_EQ(record, Row({{"Name", "perl-base"},
                         {"Version", field("Version")},
                         {"Architecture", field("Architecture")},
                         {"State", field("db:Status-Status")},
                         {"Section", field("Section")},
                         {"Size", field("Installed-Size")},
                         {"Summary", field("binary:Summary")}}));
}

TEST(PackageCommandsTest, SplitsWhatAPackageNeeds) {
  std::string depends = Witness("dpkg-query -W -f '${Depends}' bash");
  const auto list = CallStruct("package get", {{"name", "bash"}})["Depends"];
  for (std::size_t start = 0; start < depends.size();) {
    const std::size_t end = std::min(depends.find(", ", start), depends.size());
    EXPECT_THAT(list, ::testing::HasSubstr(depends.substr(start, end - start)));
    start = end + 2;
  }
}

TEST(PackageCommandsTest, KnowsNothingOfAnotherName) {
  EXPECT_THAT(CallErrors("package get", {{"name", "no-such-package"}}),
              ElementsAre("dpkg-query: no packages found matching no-such-package"));
  EXPECT_THAT(CallErrors("package files", {{"name", "no-such-package"}}),
              ElementsAre("dpkg-query: package 'no-such-package' is not installed"));
  EXPECT_EQ(CallText("package check", {{"name", "no-such-package"}}), "false");
}

TEST(PackageCommandsTest, ListsFiles) {
  EXPECT_THAT(CallColumn("package files", "Path", {{"name", "coreutils"}}),
              ElementsAreArray(WitnessLines("dpkg-query -L coreutils | grep '^/'")));
}

TEST(PackageCommandsTest, TellsWhetherOneIsInstalled) {
  EXPECT_EQ(CallText("package check", {{"name", "bash"}}), "true");
}

}  // namespace
}  // namespace Kestrel::Testing
