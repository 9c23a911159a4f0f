// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <string>
#include <vector>

#include "plugins/host/support/HostCall.h"
#include "plugins/host/support/HostRun.h"
#include "plugins/host/support/Rows.h"
#include "support/PseudoTerminal.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

// The command "file checksum".
namespace Kestrel::Testing {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr char kCommand[] = "file checksum";

class FileChecksumAlgorithmTest : public ::testing::TestWithParam<const char*> {};

TEST_P(FileChecksumAlgorithmTest, AgreesWithTheProgramNamedAfterTheAlgorithm) {
  const ScopedTempDir folder;
  const std::string plain = folder.Write("plain", "text\n");
  const std::string odd = folder.Write("a$(b) &;'\"`\\<>|!^c*?[d]{e}~#", "");
  const std::string tool = std::string(GetParam()) + "sum";
  const std::string plainSum = WordsIn(Witness(tool + " <'" + plain + "'"))[0];
  const std::string emptySum = WordsIn(Witness(tool + " </dev/null"))[0];
  EXPECT_THAT(CallRows(kCommand, {{"algorithm", GetParam()}, {"file", plain}, {"file", odd}}),
              ElementsAre(Row({{"Checksum", plainSum},
                               {"Path", plain},
                               {"Size", "5 B"},
                               {"Size Bytes", "5"},
                               {"Algorithm", GetParam()}}),
                          Row({{"Checksum", emptySum},
                               {"Path", odd},
                               {"Size", "0 B"},
                               {"Size Bytes", "0"},
                               {"Algorithm", GetParam()}})));
}

TEST_P(FileChecksumAlgorithmTest, AgreesWithOpensslIfAKeyIsGiven) {
  const ScopedTempDir folder;
  const std::string first = folder.Write("first", "what do ya want for nothing?");
  const std::string second = folder.Write("second", "");
  const std::vector<Row> rows =
      CallRows(kCommand, {{"file", first}, {"f", second}, {"key", "Jefe"}, {"a", GetParam()}});
  EXPECT_THAT(OnlyFields(rows, {"Algorithm"}),
              Each(Row({{"Algorithm", std::string("hmac-") + GetParam()}})));
  ASSERT_EQ(rows.size(), 2U);
  const std::vector<std::string> digits = {rows[0].at("Checksum"), rows[1].at("Checksum")};
  EXPECT_EQ(digits, WitnessLines(std::string("openssl dgst -") + GetParam() + " -hmac Jefe -r " +
                                 first + " " + second + " | cut -d' ' -f1"));
}

INSTANTIATE_TEST_SUITE_P(Algorithms, FileChecksumAlgorithmTest,
                         ::testing::Values("md5", "sha1", "sha224", "sha256", "sha384", "sha512"),
                         [](const auto& row) { return std::string(row.param); });

TEST(FileChecksumTest, TheDefaultIsSha256) {
  EXPECT_EQ(CallRows(kCommand, {{"file", "/etc/passwd"}}),
            CallRows(kCommand, {{"file", "/etc/passwd"}, {"algorithm", "sha256"}}));
}

TEST(FileChecksumTest, KeepsTheOrderOfTheFilesUnlessSorted) {
  const ScopedTempDir folder;
  const std::string a = folder.Write("a", "1");
  const std::string b = folder.Write("b", "22");
  const Parameters files = {{"file", b}, {"file", a}, {"file", b}};
  EXPECT_THAT(CallColumn(kCommand, "Path", files), ElementsAre(b, a, b));
  Parameters sorted = files;
  sorted.emplace_back("sort", "Size");
  EXPECT_THAT(CallColumn(kCommand, "Path", sorted), ElementsAre(a, b, b));
}

TEST(FileChecksumTest, PrintsChecksumAndPath) {
  const ScopedTempDir folder;
  folder.Write("a b", "what do ya want for nothing?");
  const VexilResult result = HostRun({"file", "checksum", "--file", "a b", "--file=-n"})
                                 .InDirectory((folder.Write("-n", ""), folder.GetPath()))
                                 .Run();
  EXPECT_EQ(result.out,
            "Checksum                                                          Path\n"
            "----------------------------------------------------------------  ----\n" +
                WordsIn(Witness("sha256sum <'" + folder.GetPath("a b") + "'"))[0] + "  a b\n" +
                WordsIn(Witness("sha256sum </dev/null"))[0] + "  -n\n");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
}

TEST(FileChecksumTest, ANameCannotAddARow) {
  const ScopedTempDir folder;
  const std::string path = folder.Write("a\nb\x1b[2J", "");
  EXPECT_THAT(CallColumn(kCommand, "Path", {{"file", path}}),
              ElementsAre(folder.GetPath("a\\x0ab\\x1b[2J")));
}

TEST(FileChecksumTest, ReportsEveryFileThatCannotBeRead) {
  const ScopedTempDir folder;
  const std::string file = folder.Write("file", "");
  EXPECT_THAT(CallErrors(kCommand, {{"file", "/"}, {"file", file}, {"file", "/nowhere\n/at all"}}),
              ElementsAre("Unable to read /: Not a regular file",
                          "Unable to read /nowhere\\x0a/at all: No such file or directory"));
}

TEST(FileChecksumTest, TheToolReportsAMissingFile) {
  const VexilResult result = HostRun({"file", "checksum", "--file", "it's gone"}).Run();
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err, "Errors: \nUnable to read it's gone: No such file or directory\n");
  EXPECT_EQ(result.status, 1);
}

TEST(FileChecksumTest, RefusesInvalidAndMissingParameters) {
  EXPECT_THAT(
      CallErrors(kCommand, {{"file", "/etc/passwd"}, {"algorithm", "crc"}}),
      ElementsAre("Invalid data constraint for parameter 'algorithm'. Expected a single value "
                  "from the set [md5, sha1, sha224, sha256, sha384, sha512] got 'crc'"));
  EXPECT_THAT(CallErrors(kCommand, {{"file", "/etc/passwd"}, {"key", ""}}),
              ElementsAre("Invalid data constraint for parameter 'key'. Value does not match the "
                          "expected regular expression (.+)"));
  EXPECT_THAT(CallErrors(kCommand, {}), ElementsAre("Missing required parameter --file"));
}

TEST(FileChecksumToolTest, AsksForTheKeyWithoutEcho) {
  const ScopedTempDir folder;
  const std::string file = folder.Write("data", "what do ya want for nothing?");
  PseudoTerminal terminal;
  terminal.SetSize(200, 24);
  terminal.Start([&file]() -> int {
    HostRun({"file", "checksum", "--file=" + file, "--key"}).Exec();
  });
  EXPECT_EQ(terminal.ReadUntil("Enter value for 'key': "), "Enter value for 'key': ");
  EXPECT_FALSE(terminal.IsEchoOn());
  terminal.Type("Jefe\n");
  const int status = terminal.WaitForEnd();
  const std::string screen = terminal.ReadRest();
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
  EXPECT_THAT(screen,
              HasSubstr("5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843  "));
  EXPECT_THAT(screen, ::testing::Not(HasSubstr("Jefe")));
  EXPECT_TRUE(terminal.IsEchoOn());
}

TEST(FileChecksumToolTest, ReadsTheKeyFromAPipe) {
  const ScopedTempDir folder;
  folder.Write("data", "what do ya want for nothing?");
  const VexilResult result = HostRun({"file", "checksum", "--file=data", "--key"})
                                 .InDirectory(folder.GetPath())
                                 .WithInput("Jefe\n")
                                 .Run();
  EXPECT_THAT(result.out, StartsWith("Enter value for 'key': "));
  EXPECT_THAT(
      result.out,
      HasSubstr("5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843  data\n"));
  EXPECT_EQ(result.status, 0);
}

TEST(FileChecksumToolTest, HelpWarnsAboutSecretsOnTheCommandLine) {
  const VexilResult result = HostRun({"file", "checksum", "--help"}).Run();
  EXPECT_THAT(result.out, HasSubstr("WARNING: Providing secret values on the command line"));
}

}  // namespace
}  // namespace Kestrel::Testing
