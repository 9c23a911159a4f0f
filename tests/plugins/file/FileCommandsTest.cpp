// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "plugins/shell-common/Descriptors.h"
#include "plugins/support/CommandCall.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

// The commands below "file".
namespace Kestrel::Testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::UnorderedElementsAre;

TEST(FileCommandsTest, ChecksFilesByEveryAlgorithm) {
  const ScopedTempDir folder;
  const std::string plain = folder.Write("plain", "text\n");
  // Every character that is special to the shell, except those that the command rejects.
  const std::string odd = folder.Write("a$(b)&;'\"`\\<>|!^c", "");
  for (const char* const algorithm : {"md5", "sha1", "sha256", "sha512"}) {
    const std::string tool = std::string(algorithm) + "sum";
    const std::string plainSum = WordsIn(Witness(tool + " <'" + plain + "'"))[0];
    const std::string emptySum = WordsIn(Witness(tool + " </dev/null"))[0];
    EXPECT_THAT(
        CallRows("file checksum", {{"algorithm", algorithm}, {"file", plain}, {"file", odd}}),
        ElementsAre(Row({{"Checksum", plainSum}, {"Path", plain}}),
                    Row({{"Checksum", emptySum}, {"Path", odd}})))
        << algorithm;
  }
  EXPECT_EQ(CallRows("file checksum", {{"file", plain}}),
            CallRows("file checksum", {{"file", plain}, {"algorithm", "sha256"}}));
}

TEST(FileCommandsTest, ChecksOnlyFiles) {
  EXPECT_THAT(CallErrors("file checksum", {{"file", "/"}}), ElementsAre("/ is no file"));
  EXPECT_THAT(CallErrors("file checksum", {{"file", "/etc/hostname"}, {"file", "--help"}}),
              ElementsAre("--help is no file"));
}

TEST(FileCommandsTest, ReportsTheFileThatMayNotBeRead) {
  const std::string asNobody =
      ::geteuid() == 0 ? "setpriv --reuid=65534 --regid=65534 --clear-groups " : "";
  const std::string script = ScriptPath("list-checksums.sh");
  if (Witness("if " + asNobody + "test -r '" + script + "'; then echo yes; fi") != "yes\n") {
    GTEST_SKIP() << "A plain user may not read the build tree";
  }
  const ScopedTempDir folder;
  const std::string path = folder.Write("secret", "x");
  ::chmod(folder.GetPath().c_str(), 0755);
  ::chmod(path.c_str(), 0);
  EXPECT_EQ(
      Witness("TMPDIR=/tmp " + asNobody + "'" + script + "' --file '" + path + "' </dev/null"),
      "ERROR:You may not read " + path + "\n");
}

TEST(FileCommandsTest, ListsMembersAsTarDoes) {
  const ScopedTempDir folder;
  folder.Write("in/plain", "12345");
  folder.Write("in/a b", "");
  folder.Write("in/line\nend\ttab", "");
  folder.Write("in/&<\">'", "");
  folder.Write("in/\xFF", "");
  const std::string archive = folder.GetPath("x.tar");
  Witness("cd '" + folder.GetPath("in") +
          "' && ln -s plain link && mkfifo pipe && chmod 640 plain && "
          "tar -cf ../x.tar --owner=7 --group=8 --mtime='2024-05-06 07:08:09' --sort=name .");
  const auto row = [](const std::string& mode, const std::string& size, const std::string& name) {
    return Row({{"Mode", mode},
                {"Owner", "7/8"},
                {"Size", size},
                {"Modified", "2024-05-06 07:08:09"},
                {"Name", name}});
  };
  const std::vector<Row> rows = CallRows("file members", {{"archive", archive}});
  EXPECT_EQ(rows.size(), 8U);
  EXPECT_THAT(rows, Contains(row("-rw-r-----", "5", "./plain")));
  EXPECT_THAT(rows, Contains(row("lrwxrwxrwx", "0", "./link -> plain")));
  std::vector<std::string> names;
  for (const Row& each : rows) {
    names.push_back(each.at("Name"));
  }
  EXPECT_THAT(names, UnorderedElementsAre("./", "./plain", "./a b", "./line\\nend\\ttab",
                                          "./&<\">'", "./\\377", "./link -> plain", "./pipe"));
  EXPECT_THAT(CallRows("file members", {{"archive", archive}, {"member", "./plain"}}),
              ElementsAre(row("-rw-r-----", "5", "./plain")));
}

TEST(FileCommandsTest, RejectsAFileThatIsNotAnArchive) {
  const ScopedTempDir folder;
  EXPECT_THAT(CallErrors("file members", {{"archive", "/nosuch"}}),
              ElementsAre("/nosuch is no file"));
  EXPECT_THAT(CallErrors("file members", {{"archive", folder.Write("x", "no archive\n")}}),
              ElementsAre("tar: This does not look like a tar archive"));
  const std::string empty = folder.GetPath("a:b 'c.tar");
  EXPECT_THAT(
      CallErrors("file members", {{"archive", empty}}),
      ElementsAre("Invalid data constraint for parameter 'archive'. Value does not match the "
                  "expected regular expression (/[^']*)"));
}

TEST(FileCommandsTest, NamesTheMemberThatIsNotThere) {
  const ScopedTempDir folder;
  folder.Write("plain", "");
  Witness("cd '" + folder.GetPath() + "' && tar -cf './a:b $x.tar' plain");
  const std::string archive = folder.GetPath("a:b $x.tar");
  EXPECT_THAT(CallColumn("file members", "Name", {{"archive", archive}}), ElementsAre("plain"));
  EXPECT_THAT(CallErrors("file members", {{"archive", archive}, {"member", "--checkpoint"}}),
              ElementsAre("tar: --checkpoint: Not found in archive"));
}

}  // namespace
}  // namespace Kestrel::Testing
