// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <set>

#include "plugins/host/support/HostCall.h"
#include "plugins/host/support/Rows.h"
#include "support/Witness.h"

// The commands in the namespace "package", compared with the package manager itself.
namespace Kestrel::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::Not;

bool HasProgram(const std::string& name) {
  return std::system(("command -v " + name + " >/dev/null 2>&1").c_str()) == 0;
}

class PackageCommandsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    for (const char* const program : {"dpkg-query", "apt-mark", "apt-cache"}) {
      if (!HasProgram(program)) {
        GTEST_SKIP() << "there is no " << program << " to compare with";
      }
    }
  }
};

// Returns the packages that were installed on request, each as its name and architecture.
std::set<std::string> ManualPackages() {
  const std::string native = WitnessLines("dpkg --print-architecture").front();
  std::set<std::string> names;
  for (const std::string& name : WitnessLines("apt-mark showmanual")) {
    names.insert(name.find(':') == std::string::npos ? name + ":" + native : name);
  }
  return names;
}

std::vector<Row> WitnessRows(const std::string& filter) {
  const std::string native = WitnessLines("dpkg --print-architecture").front();
  const std::set<std::string> manual = ManualPackages();
  std::vector<Row> rows;
  for (const std::string& line :
       WitnessLines("dpkg-query -W -f '${db:Status-Status} ${Package} ${Version} ${Architecture} "
                    "${Installed-Size} ${db:Status-Want} ${binary:Summary}\\n' | " +
                    filter)) {
    const std::vector<std::string> words = WordsIn(line, 7);
    const std::string architecture = words[3] == "all" ? native : words[3];
    rows.push_back(
        {{"State", words[0]},
         {"Name", words[1]},
         {"Version", words[2]},
         {"Architecture", words[3]},
         {"Size Bytes", std::to_string(std::stol(words[4]) * 1024)},
         {"Held", words[5] == "hold" ? "true" : "false"},
         {"Summary", words[6].substr(0, words[6].find_last_not_of(' ') + 1)},
         {"Manual", manual.count(words[1] + ":" + architecture) != 0 ? "true" : "false"}});
  }
  return rows;
}

std::vector<Row> ListRows(const Parameters& parameters = {}) {
  return OnlyFields(
      CallRows("package list", parameters),
      {"State", "Name", "Version", "Architecture", "Size Bytes", "Held", "Summary", "Manual"});
}

TEST_F(PackageCommandsTest, ListWhatIsInstalled) {
  EXPECT_THAT(ListRows(), Not(IsEmpty()));
  EXPECT_EQ(ListRows(), WitnessRows("grep '^installed '"));
}

TEST_F(PackageCommandsTest, ListEveryState) {
  EXPECT_EQ(ListRows({{"state", "any"}}), WitnessRows("cat"));
  EXPECT_EQ(ListRows({{"state", "Config-Files"}}), WitnessRows("sed -n '/^config-files /p'"));
  EXPECT_EQ(ListRows({{"state", "unpacked"}, {"state", "INSTALLED"}}),
            WitnessRows("sed -nE '/^(unpacked|installed) /p'"));
}

TEST_F(PackageCommandsTest, ListByNames) {
  EXPECT_EQ(ListRows({{"name", "lib*1"}, {"name", "perl*"}}),
            WitnessRows("grep -E '^installed (lib[^ ]*1|perl[^ ]*) '"));
  EXPECT_EQ(ListRows({{"name", "libstdc++*"}}), WitnessRows("grep -E '^installed libstdc[+][+]'"));
  EXPECT_THAT(ListRows({{"name", "no-such-package"}}), IsEmpty());
  // In a name, a full stop matches only itself.
  EXPECT_THAT(ListRows({{"name", "ba.h"}}), IsEmpty());
}

TEST_F(PackageCommandsTest, ListByARegularExpression) {
  EXPECT_EQ(ListRows({{"match", "^lib.*[0-9]$"}}),
            WitnessRows("grep -E '^installed lib[^ ]*[0-9] '"));
  EXPECT_THAT(CallErrors("package list", {{"match", "("}}),
              ElementsAre(HasSubstr("'(' is not a regular expression")));
}

TEST_F(PackageCommandsTest, ListByMark) {
  const std::vector<Row> all = ListRows();
  const auto marked = [&all](const std::string& mark) {
    return Filter(all, [&mark](const Row& row) { return row.at("Manual") == mark; });
  };
  EXPECT_EQ(ListRows({{"manual", "True"}}), marked("true"));
  EXPECT_EQ(ListRows({{"manual", "n"}}), marked("false"));
  EXPECT_EQ(ListRows({{"manual", "1"}, {"manual", "0"}}), all);
}

TEST_F(PackageCommandsTest, RefuseAnUnknownState) {
  EXPECT_THAT(CallErrors("package list", {{"state", "new"}}),
              ElementsAre("There is no such state: 'new'; --state is one of config-files, "
                          "half-installed, unpacked, half-configured, triggers-awaited, "
                          "triggers-pending, installed, any"));
}

TEST_F(PackageCommandsTest, SortBySize) {
  std::vector<long> sizes;
  for (const Row& row : CallRows("package list", {{"sort", "Size"}})) {
    sizes.push_back(std::stol(row.at("Size Bytes")));
  }
  EXPECT_TRUE(std::is_sorted(sizes.begin(), sizes.end()));
}

// ---- package get

std::string FieldOfDpkg(const std::string& package, const std::string& field) {
  return Witness("dpkg-query -W -f '${" + field + "}' " + package);
}

TEST_F(PackageCommandsTest, ShowAPackage) {
  for (const char* const name : {"dpkg", "bash", "coreutils"}) {
    const Row row = CallStruct("package get", {{"name", name}});
    EXPECT_EQ(row.at("Name"), name);
    for (const char* const field : {"Version", "Architecture", "Section", "Priority"}) {
      EXPECT_EQ(row.at(field), FieldOfDpkg(name, field)) << field;
    }
    EXPECT_EQ(row.at("State"), FieldOfDpkg(name, "db:Status-Status"));
    EXPECT_EQ(row.at("Wanted"), FieldOfDpkg(name, "db:Status-Want"));
    EXPECT_EQ(row.at("Summary"), FieldOfDpkg(name, "binary:Summary"));
    EXPECT_EQ(std::stol(row.at("Size Bytes")),
              1024 * std::stol(FieldOfDpkg(name, "Installed-Size")));
    EXPECT_EQ(row.at("Essential"), FieldOfDpkg(name, "Essential") == "yes" ? "true" : "false");
    EXPECT_EQ(row.at("Reinstall Required"), "false");
  }
}

TEST_F(PackageCommandsTest, ShowWhatAPackageRelatesTo) {
  for (const std::string name : {"dpkg", "bash", "coreutils", "perl-base"}) {
    const Row row = CallStruct("package get", {{"name", name}});
    for (const char* const field : {"Pre-Depends", "Depends", "Recommends", "Suggests", "Provides",
                                    "Breaks", "Conflicts", "Replaces"}) {
      EXPECT_EQ(row.at(field), FieldOfDpkg(name, field)) << name << " " << field;
    }
  }
}

TEST_F(PackageCommandsTest, ShowTheMaintainer) {
  const auto package = Call("package get", {{"name", "dpkg"}}).GetStruct();
  ASSERT_NE(package, nullptr);
  const auto maintainer =
      std::dynamic_pointer_cast<MetaObj::MetaStruct>(package->GetField("Maintainer"));
  EXPECT_EQ(TextOf(maintainer, "Name") + " <" + TextOf(maintainer, "Address") + ">",
            FieldOfDpkg("dpkg", "Maintainer"));
}

TEST_F(PackageCommandsTest, ReportAnUnknownPackageByItsName) {
  for (const char* const command : {"package get", "package check", "package files"}) {
    EXPECT_THAT(CallErrors(command, {{"name", "no-such-package"}}),
                ElementsAre("There is no package named 'no-such-package' on this machine"));
    EXPECT_THAT(CallErrors(command, {{"name", "a b'; c"}}),
                ElementsAre("There is no package named 'a b'; c' on this machine"));
  }
}

TEST_F(PackageCommandsTest, ShowTheProvidersOfAVirtualPackage) {
  // Which packages provide awk varies, but at least one of them is always installed.
  std::string providers;
  for (const std::string& name :
       WitnessLines("dpkg-query -W -f '${db:Status-Status} ${Package} ${Provides}\\n' |"
                    " sed -nE 's/^installed ([^ ]+) (.*, )?awk( .*|,.*)?$/\\1/p'")) {
    providers += (providers.empty() ? "" : ", ") + name;
  }
  for (const char* const command : {"package get", "package check", "package files"}) {
    EXPECT_THAT(
        CallErrors(command, {{"name", "awk"}}),
        ElementsAre("'awk' is a virtual package, which these packages provide: " + providers));
  }
}

// ---- package check

TEST_F(PackageCommandsTest, ReportWhetherAPackageIsInstalled) {
  EXPECT_EQ(CallText("package check", {{"name", "dpkg"}}), "true");
  const std::string native = WitnessLines("dpkg --print-architecture").front();
  EXPECT_EQ(CallText("package check", {{"name", "dpkg:" + native}}), "true");
  EXPECT_THAT(CallErrors("package check", {{"name", "dpkg:pdp11"}}),
              ElementsAre("There is no package named 'dpkg:pdp11' on this machine"));
}

// ---- package files

TEST_F(PackageCommandsTest, ListFiles) {
  // The list of files of some of these packages has an architecture in its name. One package has
  // diverted files.
  for (const std::string name : {"coreutils", "libc6", "dash", "vim-runtime"}) {
    if (std::system(("dpkg-query -W " + name + " >/dev/null 2>&1").c_str()) == 0) {
      EXPECT_THAT(CallColumn("package files", "Path", {{"name", name}}),
                  ElementsAreArray(WitnessLines("dpkg-query -L " + name + " | grep '^/'")))
          << name;
    }
  }
}

TEST_F(PackageCommandsTest, SayWhereDivertedFilesAre) {
  std::set<std::string> expected;
  for (const std::string& line : WitnessLines(
           "dpkg-query -L dash | sed -nE 's/^(locally diverted|diverted by [^ ]+) to: //p'")) {
    expected.insert(line);
  }
  std::set<std::string> diverted;
  for (const std::string& place : CallColumn("package files", "Diverted To", {{"name", "dash"}})) {
    if (place != "none") {
      diverted.insert(place);
    }
  }
  EXPECT_EQ(diverted, expected);
}

// ---- package upgradable list

TEST_F(PackageCommandsTest, ListWhatAptWouldUpgrade) {
  if (WitnessLines("ls /var/lib/apt/lists | grep _Packages || :").empty()) {
    GTEST_SKIP() << "apt has no lists of packages";
  }
  std::set<std::string> expected;
  for (const std::string& line : WitnessLines("apt list --upgradable 2>/dev/null")) {
    const std::vector<std::string> words = WordsIn(line);
    if (words.size() > 5) {  // name/suite version architecture [upgradable from: version]
      expected.insert(words[0].substr(0, words[0].find('/')) + " " + words[5] + " " + words[1]);
    }
  }
  std::set<std::string> listed;
  for (const Row& row : CallRows("package upgradable list")) {
    listed.insert(row.at("Name") + " " + row.at("Version") + "] " + row.at("Available Version"));
  }
  EXPECT_EQ(listed, expected);
}

}  // namespace
}  // namespace Kestrel::Testing
