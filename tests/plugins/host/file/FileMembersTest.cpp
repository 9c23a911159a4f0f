// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "plugins/host/support/HostCall.h"
#include "plugins/host/support/HostRun.h"
#include "plugins/host/support/Rows.h"
#include "support/ScopedEnvironment.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

// The command "file members".
namespace Kestrel::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr char kCommand[] = "file members";

// Sets the time zone of this process. Without tzset, the C library might not notice the change of
// TZ.
class ScopedZone {
 public:
  explicit ScopedZone(const char* zone) : value_(std::in_place, "TZ", zone) { ::tzset(); }
  ScopedZone(const ScopedZone&) = delete;
  ScopedZone& operator=(const ScopedZone&) = delete;
  ~ScopedZone() {
    value_.reset();
    ::tzset();
  }

 private:
  std::optional<ScopedEnvironment> value_;
};

class FileMembersTest : public ::testing::Test {
 protected:
  FileMembersTest() : zone_("UTC"), path_(folder_.GetPath("it's a \"b\".tar")) {
    folder_.Write("in/etc/plain.conf", "12345");
    folder_.Write("in/etc/a b.conf", std::string(2000, 'x'));
    folder_.Write("in/etc/line\nend", "");
    Witness("cd '" + folder_.GetPath("in") +
            "' && ln -s plain.conf etc/link && chmod 640 etc/plain.conf && "
            "tar -c -f ../archive --owner=ann:7 --group=users:8 --mtime='2024-05-06 07:08:09Z' "
            "--sort=name * && mv ../archive \"../it's a \\\"b\\\".tar\"");
  }

  std::vector<std::string> Names(Parameters parameters = {}) const {
    parameters.emplace_back("archive", path_);
    return CallColumn(kCommand, "Name", parameters);
  }

  const ScopedZone zone_;
  const ScopedTempDir folder_;
  const std::string path_;
};

TEST_F(FileMembersTest, ShowsEveryField) {
  EXPECT_THAT(CallRows(kCommand, {{"archive", path_}, {"name", "etc/plain.conf"}}),
              ElementsAre(Row({{"Name", "etc/plain.conf"},
                               {"Kind", "file"},
                               {"Mode", "-rw-r-----"},
                               {"User", "ann"},
                               {"Group", "users"},
                               {"User Id", "7"},
                               {"Group Id", "8"},
                               {"Size", "5 B"},
                               {"Size Bytes", "5"},
                               {"Modified", "2024-05-06 07:08:09"},
                               {"Target", "none"}})));
  EXPECT_THAT(CallColumn(kCommand, "Target", {{"archive", path_}, {"kind", "link"}}),
              ElementsAre("plain.conf"));
}

TEST_F(FileMembersTest, MissingNamesOfUserAndGroupAreShownAsNone) {
  Witness("cd '" + folder_.GetPath() + "' && tar -c --numeric-owner -f numbers.tar in/etc/link");
  EXPECT_THAT(OnlyFields(CallRows(kCommand, {{"archive", folder_.GetPath("numbers.tar")}}),
                         {"User", "Group"}),
              ElementsAre(Row({{"User", "none"}, {"Group", "none"}})));
}

TEST_F(FileMembersTest, TimesAreInTheZoneOfTheMachine) {
  const ScopedZone zone("JST-9");
  EXPECT_THAT(CallColumn(kCommand, "Modified", {{"archive", path_}, {"kind", "link"}}),
              ElementsAre("2024-05-06 16:08:09"));
}

TEST_F(FileMembersTest, KeepsTheOrderOfTheArchive) {
  EXPECT_THAT(Names(), ElementsAre("etc/", "etc/a b.conf", "etc/line\\x0aend", "etc/link",
                                   "etc/plain.conf"));
  EXPECT_THAT(Names({{"sort", "Size"}, {"descending", ""}, {"limit", "2"}}),
              ElementsAre("etc/a b.conf", "etc/plain.conf"));
}

TEST_F(FileMembersTest, ChoosesMembers) {
  EXPECT_THAT(Names({{"name", "etc/link"}}), ElementsAre("etc/link"));
  EXPECT_THAT(Names({{"name", "*.conf"}}), ElementsAre("etc/a b.conf", "etc/plain.conf"));
  EXPECT_THAT(Names({{"name", "link"}}), IsEmpty()) << "without * it is the whole name";
  EXPECT_THAT(Names({{"name", "etc/"}, {"name", "*link"}}), ElementsAre("etc/", "etc/link"));
  EXPECT_THAT(Names({{"name", "etc/line\nend"}}), ElementsAre("etc/line\\x0aend"));
  EXPECT_THAT(Names({{"match", "^etc/.*k$"}}), ElementsAre("etc/link"));
  EXPECT_THAT(Names({{"match", "i"}, {"kind", "file"}, {"name", "*n*"}}),
              ElementsAre("etc/line\\x0aend", "etc/plain.conf"));
  EXPECT_THAT(Names({{"kind", "folder"}, {"kind", "link"}}), ElementsAre("etc/", "etc/link"));
  EXPECT_THAT(Names({{"kind", "pipe"}}), IsEmpty());
}

TEST_F(FileMembersTest, PrintsATable) {
  const VexilResult result = HostRun({"file", "members", "--archive", "it's a \"b\".tar"})
                                 .InDirectory(folder_.GetPath())
                                 .WithEnvironment("TZ", "UTC")
                                 .Run();
  EXPECT_EQ(result.out,
            "Mode        Size Bytes  Modified             Name\n"
            "----------  ----------  -------------------  ----\n"
            "drwxr-xr-x           0  2024-05-06 07:08:09  etc/\n"
            "-rw-r--r--        2000  2024-05-06 07:08:09  etc/a b.conf\n"
            "-rw-r--r--           0  2024-05-06 07:08:09  etc/line\\x0aend\n"
            "lrwxrwxrwx           0  2024-05-06 07:08:09  etc/link\n"
            "-rw-r-----           5  2024-05-06 07:08:09  etc/plain.conf\n");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
}

TEST_F(FileMembersTest, ShowsSizesForPeople) {
  EXPECT_EQ(Print(kCommand, {{"archive", path_}, {"name", "etc/a*"}, {"human", ""}}, 80),
            "Mode        Size     Modified             Name\n"
            "----------  -------  -------------------  ----\n"
            "-rw-r--r--  2.0 KiB  2024-05-06 07:08:09  etc/a b.conf\n");
}

// Every member of a large archive is listed with the same values as in the output of tar.
TEST(FileMembersWitnessTest, ListsWhatTarLists) {
  const ScopedTempDir folder;
  const ScopedZone zone("UTC");
  const std::string archive = folder.GetPath("large.tar.gz");
  Witness("tar -czf " + archive + " -C / usr/include/c++ etc/default 2>/dev/null");
  std::vector<Row> expected;
  for (const std::string& line :
       WitnessLines("TZ=UTC tar -t --verbose --full-time --numeric-owner -f " + archive)) {
    const std::vector<std::string> words = WordsIn(line, 6);
    std::string name = words.at(5);
    const std::size_t arrow = name.find(words[0][0] == 'h' ? " link to " : " -> ");
    name = name.substr(0, arrow);
    expected.push_back({{"Mode", words[0][0] == 'h' ? "-" + words[0].substr(1) : words[0]},
                        {"Size Bytes", words[2]},
                        {"Modified", words[3] + " " + words[4]},
                        {"Name", name}});
  }
  const std::vector<Row> rows = OnlyFields(CallRows(kCommand, {{"archive", archive}}),
                                           {"Mode", "Size Bytes", "Modified", "Name"});
  ASSERT_GT(rows.size(), 100U);
  EXPECT_EQ(rows, expected);
}

TEST(FileMembersErrorTest, NamesTheArchive) {
  const ScopedTempDir folder;
  EXPECT_THAT(CallErrors(kCommand, {{"archive", "/no\nsuch"}}),
              ElementsAre("Unable to read /no\\x0asuch: No such file or directory"));
  EXPECT_THAT(CallErrors(kCommand, {{"archive", "/"}}),
              ElementsAre("Unable to read /: Not a regular file"));
  const std::string text = folder.Write("text", "no archive\n");
  EXPECT_THAT(CallErrors(kCommand, {{"archive", text}}),
              ElementsAre("Unable to read " + text + ": Unrecognized archive format"));
}

TEST(FileMembersErrorTest, RefusesWrongValues) {
  EXPECT_THAT(CallErrors(kCommand), ElementsAre("Missing required parameter --archive"));
  EXPECT_THAT(CallErrors(kCommand, {{"archive", "x"}, {"kind", "directory"}}),
              ElementsAre(HasSubstr("Invalid data constraint for parameter 'kind'.")));
  EXPECT_THAT(CallErrors(kCommand, {{"archive", "x"}, {"match", "("}}),
              ElementsAre(HasSubstr("(")));
}

}  // namespace
}  // namespace Kestrel::Testing
