// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "plugins/host/support/HostCall.h"
#include "plugins/host/support/HostRun.h"
#include "plugins/host/support/Namespaces.h"
#include "plugins/host/support/PlainUser.h"
#include "plugins/host/support/Rows.h"
#include "support/ScopedTempDir.h"
#include "support/StreamCapture.h"
#include "support/Witness.h"

// The command "storage usage list".
namespace Kestrel::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

constexpr char kCommand[] = "storage usage list";

std::vector<std::string> Paths(const Parameters& parameters) {
  return CallColumn(kCommand, "Path", parameters);
}

// A folder that contains two folders which an ordinary user may not read.
class StorageUsageListLockedTest : public ::testing::Test {
 protected:
  StorageUsageListLockedTest()
      : first_(folder_.MakeDirectory("large/a\nlocked")), second_(folder_.MakeDirectory("locked")) {
    folder_.Write("large/file", std::string(50000, 'x'));
    ::chmod(folder_.GetPath().c_str(), 0755);
    ::chmod(first_.c_str(), 0);
    ::chmod(second_.c_str(), 0);
  }
  ~StorageUsageListLockedTest() override {
    ::chmod(first_.c_str(), 0755);
    ::chmod(second_.c_str(), 0755);
  }

  std::string FirstReport() const {
    return "Unable to read " + Shown(first_) + ": Permission denied";
  }
  std::string SecondReport() const { return "Unable to read " + second_ + ": Permission denied"; }

  ScopedTempDir folder_;
  const std::string first_;
  const std::string second_;
};

TEST(StorageUsageListTest, ListsWhatDuLists) {
  for (const char* const path : {"/usr/include", "/usr/share/doc"}) {
    const auto command = [path] {
      return OnlyFields(CallRows(kCommand, {{"directory", path}, {"depth", "2"}}),
                        {"Path", "Size Bytes"});
    };
    const auto witness = [path] {
      std::vector<Row> rows;
      for (const std::string& line : WitnessLines(
               std::string("du --one-file-system --block-size=512 --max-depth=2 ") + path)) {
        const std::size_t tab = line.find('\t');
        rows.push_back({{"Path", Shown(line.substr(tab + 1))},
                        {"Size Bytes", std::to_string(512 * std::stol(line))}});
      }
      return rows;
    };
    const Agreement agreement = Compare(command, witness);
    EXPECT_THAT(agreement.command, ::testing::UnorderedElementsAreArray(agreement.witness)) << path;
  }
}

TEST(StorageUsageListTest, ListsTheLargestFirst) {
  const ScopedTempDir folder;
  folder.Write("small/file", "x");
  folder.Write("large/deep/file", std::string(100000, 'x'));
  folder.MakeDirectory("also small");
  const std::string& path = folder.GetPath();
  EXPECT_THAT(Paths({{"directory", path}}),
              ElementsAre(path, path + "/large", path + "/small", path + "/also small"));
  EXPECT_THAT(Paths({{"directory", path}, {"sort", "Path"}, {"limit", "2"}}),
              ElementsAre(path, path + "/also small"));
  EXPECT_THAT(Paths({{"directory", path}, {"sort", "Size"}, {"descending", ""}, {"limit", "1"}}),
              ElementsAre(path));
}

TEST(StorageUsageListTest, EqualSizesAreListedByPath) {
  const ScopedTempDir folder;
  for (const char* const name : {"c", "a", "b"}) {
    folder.MakeDirectory(name);
  }
  const std::vector<std::string> paths = Paths({{"directory", folder.GetPath()}});
  const std::vector<std::string> below(paths.begin() + 1, paths.end());
  EXPECT_THAT(below, ElementsAre(folder.GetPath("a"), folder.GetPath("b"), folder.GetPath("c")));
}

TEST(StorageUsageListTest, ShowsEveryField) {
  const ScopedTempDir folder;
  const std::string path = folder.Write("zeros", "");
  ASSERT_EQ(::truncate(path.c_str(), 3L << 19), 0);
  const std::vector<Row> rows =
      CallRows(kCommand, {{"directory", folder.GetPath()}, {"all", ""}, {"sort", "Kind"}});
  ASSERT_EQ(rows.size(), 2U);
  EXPECT_EQ(rows[0], Row({{"Path", path},
                          {"Kind", "file"},
                          {"Size", "0 B"},
                          {"Size Bytes", "0"},
                          {"Apparent Size", "1.5 MiB"},
                          {"Apparent Size Bytes", "1572864"},
                          {"Files", "1"},
                          {"Complete", "true"}}));
  EXPECT_EQ(rows[1].at("Kind"), "folder");
  EXPECT_EQ(rows[1].at("Files"), "2");
}

TEST(StorageUsageListTest, PrintsATable) {
  const ScopedTempDir folder;
  ASSERT_EQ(::truncate(folder.Write("zeros", "").c_str(), 3L << 19), 0);
  const Parameters file = {
      {"directory", folder.GetPath()}, {"all", ""}, {"sort", "Kind"}, {"limit", "1"}};
  EXPECT_EQ(Print(kCommand, file, 80),
            "Size Bytes  Files  Path\n"
            "----------  -----  ----\n"
            "         0      1  " +
                folder.GetPath("zeros") + "\n");
  Parameters human = file;
  human.emplace_back("human", "");
  EXPECT_EQ(Print(kCommand, human, 80),
            "Size  Files  Path\n"
            "----  -----  ----\n"
            "0 B       1  " +
                folder.GetPath("zeros") + "\n");
}

TEST(StorageUsageListTest, ListsOddNames) {
  const ScopedTempDir folder;
  const std::string path = folder.MakeDirectory("a $b`\"&<\n ;");
  for (const char* const name : {"-n", "tab\there", "line\nend", "&amp;<x>", "'", "\xC3\xA4"}) {
    folder.Write("a $b`\"&<\n ;/" + std::string(name), "x");
  }
  folder.Write("a $b`\"&<\n ;/\xFF\x01", "x");
  const std::string shown = Shown(path);
  EXPECT_THAT(Paths({{"directory", path}, {"all", ""}}),
              UnorderedElementsAre(shown, shown + "/-n", shown + "/tab\\x09here",
                                   shown + "/line\\x0aend", shown + "/&amp;<x>", shown + "/'",
                                   shown + "/\xC3\xA4", shown + "/\\xff\\x01"));
}

TEST(StorageUsageListTest, AMinimumOmitsSmallerEntries) {
  const ScopedTempDir folder;
  folder.Write("large/file", std::string(3 << 20, 'x'));
  folder.Write("small/file", std::string(1 << 20, 'x'));
  const std::string& path = folder.GetPath();
  EXPECT_THAT(Paths({{"directory", path}, {"minimum-size", "2"}}),
              ElementsAre(path, path + "/large"));
  EXPECT_THAT(Paths({{"directory", path}, {"minimum-size", "5"}}), IsEmpty());
}

TEST(StorageUsageListTest, RefusesWhatIsNotAFolder) {
  const ScopedTempDir folder;
  const std::string file = folder.Write("it's a file", "");
  for (const Parameters& parameters :
       {Parameters{{"directory", file}}, Parameters{{"directory", file}, {"partial", ""}}}) {
    EXPECT_THAT(CallErrors(kCommand, parameters),
                ElementsAre("Unable to read " + file + ": Not a directory"));
  }
  EXPECT_THAT(CallErrors(kCommand, {{"directory", ""}}),
              ElementsAre("Unable to read : No such file or directory"));
}

TEST_F(StorageUsageListLockedTest, ReportsEachLockedFolder) {
  const PlainUser user;
  EXPECT_THAT(CallErrors(kCommand, {{"directory", folder_.GetPath()}}),
              UnorderedElementsAre(FirstReport(), SecondReport()));
}

TEST_F(StorageUsageListLockedTest, ListsWhatCanBeReadOnDemand) {
  const PlainUser user;
  StreamCapture errors(STDERR_FILENO);
  const std::vector<Row> rows =
      CallRows(kCommand, {{"directory", folder_.GetPath()}, {"partial", ""}});
  EXPECT_THAT(errors.GetText(), HasSubstr(FirstReport() + "\n"));
  EXPECT_THAT(errors.GetText(), HasSubstr(SecondReport() + "\n"));
  EXPECT_THAT(OnlyFields(rows, {"Path", "Complete"}),
              ElementsAre(Row({{"Path", folder_.GetPath()}, {"Complete", "false"}}),
                          Row({{"Path", folder_.GetPath("large")}, {"Complete", "false"}}),
                          Row({{"Path", second_}, {"Complete", "false"}})));
}

TEST_F(StorageUsageListLockedTest, NothingIsReportedWhenEverythingCanBeRead) {
  ::chmod(first_.c_str(), 0755);
  ::chmod(second_.c_str(), 0755);
  const PlainUser user;
  StreamCapture errors(STDERR_FILENO);
  const std::vector<Row> rows =
      CallRows(kCommand, {{"directory", folder_.GetPath()}, {"partial", ""}});
  EXPECT_EQ(errors.GetText(), "");
  EXPECT_THAT(OnlyFields(rows, {"Complete"}), ::testing::Each(Row({{"Complete", "true"}})));
}

TEST_F(StorageUsageListLockedTest, TheToolReportsWhatItCouldNotRead) {
  const PlainUser user;
  if (::faccessat(AT_FDCWD, KESTREL_HOST_TOOL, X_OK, AT_EACCESS) != 0 ||
      ::faccessat(AT_FDCWD, KESTREL_HOST_PLUGIN, R_OK, AT_EACCESS) != 0) {
    GTEST_SKIP() << "A plain user may not read the build tree";
  }
  const std::string folder = "--directory=" + folder_.GetPath("large");
  const VexilResult refused = HostRun({"storage", "usage", "list", folder}).Run();
  EXPECT_EQ(refused.out, "");
  EXPECT_EQ(refused.err, "Errors: \n" + FirstReport() + "\n");
  EXPECT_EQ(refused.status, 1);
  const VexilResult partial = HostRun({"storage", "usage", "list", folder, "--partial"}).Run();
  EXPECT_THAT(partial.out, HasSubstr("  " + folder_.GetPath("large") + "\n"));
  EXPECT_EQ(partial.err, FirstReport() + "\n");
  EXPECT_EQ(partial.status, 0);
}

class StorageUsageListPathTest : public ::testing::TestWithParam<const char*> {};

TEST_P(StorageUsageListPathTest, IsUsedUnchanged) {
  const ScopedTempDir folder;
  const std::string name = GetParam();
  folder.Write(name + "/below/file", "x");
  const VexilResult result = HostRun({"--format-param", "fields=Files,Path", "storage", "usage",
                                      "list", "--directory=" + name})
                                 .InDirectory(folder.GetPath())
                                 .Run();
  EXPECT_THAT(result.out, HasSubstr("\n    3  " + Shown(name) + "\n"));
  EXPECT_THAT(result.out, HasSubstr("\n    2  " + Shown(name) + "/below\n"));
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
}

INSTANTIATE_TEST_SUITE_P(Names, StorageUsageListPathTest,
                         ::testing::Values("plain", "-n", "--all", "a b", "it's", "\"quoted\"",
                                           "$(x)`y`", "new\nline", "*", "?[a]", "\\", "~", "#",
                                           "\xC3\xA4", "&<>"));

TEST(StorageUsageListTest, TakesAPathThatIsTooLongForASystemCall) {
  const ScopedTempDir folder;
  folder.Write("below/file", "x");
  std::string path = folder.GetPath();
  while (path.size() < 10000) {
    path += "/.";
  }
  EXPECT_THAT(Paths({{"directory", path}}), UnorderedElementsAre(path, path + "/below"));
  EXPECT_THAT(CallErrors(kCommand, {{"directory", path + "/gone"}}),
              ElementsAre("Unable to read " + path + "/gone: No such file or directory"));
}

TEST(StorageUsageListTest, CountsOtherFileSystemsOnDemand) {
  const std::string refusal = RunInNamespaces(CLONE_NEWNS, [] {
    const ScopedTempDir folder;
    folder.Write("own/file", "x");
    const std::string other = folder.MakeDirectory("other");
    ASSERT_EQ(::mount("other", other.c_str(), "tmpfs", 0, ""), 0);
    folder.Write("other/file", std::string(1 << 20, 'x'));
    const std::string& top = folder.GetPath();
    EXPECT_THAT(Paths({{"directory", top}}), UnorderedElementsAre(top, top + "/own"));
    const Parameters all = {{"directory", top}, {"all-filesystems", ""}};
    EXPECT_THAT(Paths(all), ElementsAre(top, other, top + "/own"));
    // If the user names a mount point, the tree begins there, so the mounted file system is the
    // tree's own.
    EXPECT_THAT(CallColumn(kCommand, "Size", {{"directory", other}}), ElementsAre("1.0 MiB"));
    ASSERT_EQ(::umount(other.c_str()), 0);
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

TEST(StorageUsageListTest, AFieldThatDoesNotExistIsAnErrorBeforeTheWalk) {
  const auto errors = CallErrors(kCommand, {{"directory", "/nowhere"}, {"sort", "Bytes"}});
  ASSERT_EQ(errors.size(), 1U);
  EXPECT_THAT(errors[0], HasSubstr("Apparent Size"));
  EXPECT_THAT(errors[0], ::testing::Not(HasSubstr("/nowhere")));
}

TEST(StorageUsageListTest, ALimitDoesNotHideAFolderThatCannotBeRead) {
  const ScopedTempDir folder;
  const std::string locked = folder.MakeDirectory("locked");
  ::chmod(folder.GetPath().c_str(), 0755);
  ::chmod(locked.c_str(), 0);
  {
    const PlainUser user;
    for (const Parameters& parameters :
         {Parameters{{"limit", "1"}}, Parameters{{"minimum-size", "1000"}},
          Parameters{{"depth", "0"}}, Parameters{{"sort", "Path"}}}) {
      Parameters all = parameters;
      all.emplace_back("directory", folder.GetPath());
      EXPECT_THAT(CallErrors(kCommand, all),
                  ElementsAre("Unable to read " + locked + ": Permission denied"));
    }
  }
  ::chmod(locked.c_str(), 0755);
}

}  // namespace
}  // namespace Kestrel::Testing
