// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "plugins/shell-common/DescriptorCall.h"
#include "support/ScopedEnvironment.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

// The commands below "file", "disk", "crontab" and "text".
namespace Kestrel::Testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

// ---- file checksum

TEST(FileCommandsTest, ChecksFilesByEveryAlgorithm) {
  const ScopedTempDir folder;
  const std::string plain = folder.Write("plain", "text\n");
  // Everything that the shell would take for its own, but for what the command refuses.
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

TEST(FileCommandsTest, SaysWhichFileMayNotBeRead) {
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

// ---- file members

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

TEST(FileCommandsTest, RefusesWhatIsNoArchive) {
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

// ---- disk usage list

TEST(FileCommandsTest, ListsUsageAsDuDoes) {
  const ScopedTempDir folder;
  folder.Write("small/file", "x");
  folder.Write("large/deep/file", std::string(100000, 'x'));
  const std::string path = folder.GetPath();
  const auto size = [](const std::string& what) {
    return WordsIn(Witness("du -sk --one-file-system '" + what + "'"))[0];
  };
  const auto row = [&](const std::string& name) {
    const std::string whole = name.empty() ? path : path + "/" + name;
    return Row({{"Path", whole}, {"Size", size(whole)}});
  };
  EXPECT_THAT(CallRows("disk usage list", {{"directory", path}}),
              ElementsAre(row(""), row("large"), row("small")));
  EXPECT_THAT(CallRows("disk usage list", {{"directory", path}, {"depth", "+00"}}),
              ElementsAre(row("")));
  EXPECT_THAT(CallRows("disk usage list", {{"directory", path}, {"depth", "3"}, {"all", ""}}),
              UnorderedElementsAre(row(""), row("large"), row("large/deep"), row("large/deep/file"),
                                   row("small"), row("small/file")));
}

TEST(FileCommandsTest, ListsOddNames) {
  const ScopedTempDir folder;
  const std::string path = folder.MakeDirectory("a $b`\"&<\n ;");
  for (const char* const name : {"-n", "tab\there", "line\nend", "&amp;<x>", "'", "\xC3\xA4"}) {
    folder.Write("a $b`\"&<\n ;/" + std::string(name), "x");
  }
  folder.Write("a $b`\"&<\n ;/\xFF\x01", "x");
  EXPECT_THAT(CallColumn("disk usage list", "Path", {{"directory", path}, {"all", ""}}),
              UnorderedElementsAre(path, path + "/-n", path + "/tab\there", path + "/line\nend",
                                   path + "/&amp;<x>", path + "/'", path + "/\xC3\xA4",
                                   path + "/\\xff\\x01"));
}

TEST(FileCommandsTest, RefusesWhatIsNoFolder) {
  EXPECT_THAT(CallErrors("disk usage list", {{"directory", "/nosuch\nfolder"}}),
              ElementsAre("/nosuch folder is no directory"));
}

// ---- crontab list

TEST(FileCommandsTest, ListsCrontabs) {
  const ScopedTempDir folder;
  folder.Write("ann",
               "# comment\n\nMAILTO = ann\n  */5 *\t* * 1-5   echo a\tb & <c> \"d\"\n"
               "@reboot /bin/true");
  folder.Write("bob", "0 1 2 3 4 A=b run\n");
  folder.Write("o\\n\"x", "1 1 1 1 1 x\xFF\n");
  const ScopedEnvironment crontabs("CRONTAB_DIR", folder.GetPath());
  const Row ann = {
      {"User", "ann"}, {"Schedule", "*/5 * * * 1-5"}, {"Command", "echo a\tb & <c> \"d\""}};
  const Row boot = {{"User", "ann"}, {"Schedule", "@reboot"}, {"Command", "/bin/true"}};
  const Row bob = {{"User", "bob"}, {"Schedule", "0 1 2 3 4"}, {"Command", "A=b run"}};
  const Row odd = {{"User", "o\\n\"x"}, {"Schedule", "1 1 1 1 1"}, {"Command", "x\\xff"}};
  EXPECT_THAT(CallRows("crontab list"), ElementsAre(ann, boot, bob, odd));
  EXPECT_THAT(CallRows("crontab list", {{"user", "bob"}, {"user", "nobody"}}), ElementsAre(bob));
  EXPECT_THAT(CallRows("crontab list", {{"user", "bo"}}), IsEmpty());
}

TEST(FileCommandsTest, SaysThatThereIsNoCron) {
  const ScopedEnvironment crontabs("CRONTAB_DIR", "/nosuch");
  EXPECT_THAT(CallErrors("crontab list"),
              ElementsAre("There is no folder /nosuch: is the package cron installed?"));
}

// ---- text

TEST(FileCommandsTest, CountsText) {
  // Nothing is escaped on the way through the standard input.
  const std::string line = "a  $(b) 'c' \"d\" \\ \xC3\xA4 }";
  EXPECT_EQ(CallRecord("text count", {{"line", line}, {"line", "e"}}),
            Row({{"Lines", "2"}, {"Words", "8"}, {"Bytes", std::to_string(line.size() + 3)}}));
}

TEST(FileCommandsTest, HashesPasswords) {
  const std::string password = "a $(b) 'c' \"\\ \xC3\xA4";
  const ScopedTempDir folder;
  const std::string path = folder.Write("password", password + "\n");
  EXPECT_EQ(CallText("text hash", {{"password", password}, {"salt", "ab./"}}) + "\n",
            Witness("openssl passwd -6 -salt ab./ -stdin <'" + path + "'"));
}

TEST(FileCommandsTest, HashesWithARandomSalt) {
  const std::string first = CallText("text hash", {{"password", "x"}});
  EXPECT_THAT(first, ::testing::MatchesRegex("\\$6\\$[A-Za-z0-9./]+\\$[A-Za-z0-9./]{86}"));
  EXPECT_NE(CallText("text hash", {{"password", "x"}}), first);
}

TEST(FileCommandsTest, RefusesAPasswordThatWouldBeCut) {
  EXPECT_THAT(CallErrors("text hash", {{"password", "a\nb"}}),
              ElementsAre("A password has one line"));
  EXPECT_THAT(CallErrors("text hash", {{"password", std::string(257, 'x')}}),
              ElementsAre("The password is longer than 256 bytes"));
  EXPECT_THAT(CallErrors("text hash", {{"password", "\n"}}), ElementsAre("The password is empty"));
}

}  // namespace
}  // namespace Kestrel::Testing
