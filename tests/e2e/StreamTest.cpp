// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>

#include <string>

#include "e2e/Plugins.h"
#include "support/ScopedTempDir.h"
#include "support/VexilRun.h"

namespace Kestrel::Testing {

namespace {

using ::testing::StartsWith;

// Returns a comment, a line of white space, a line that loads a plug-in, a line that fails, and six
// lines that succeed.
std::string MakeTenLines() {
  return "# ten lines\n"
         "   \t\n"
         "--plugin " +
         TestPluginPath("TryPlugin") +
         " try say --text one\n"
         "try say --text \"two  words\"\n"
         "try say -t #3\n"
         "--formatter nosuch try say --text lost\n"
         "  try   say\t--text=fo\"ur\"\n"
         "--screen-width 20 try rows -c 1\n"
         "try rows -c 1\n"
         "try say --text last";
}

const char* const kAnswers =
    "one\n"
    "two  words\n"
    "#3\n"
    "four\n"
    "Number  Text\n"
    "------  ----\n"
    "     1  the text of \n"
    "        a row\n"
    "Number  Text\n"
    "------  ----\n"
    "     1  the text of \n"
    "        a row\n"
    "last\n";

const char* const kErrors = "Errors: \nUnable to find requested formatter: nosuch\n";

TEST(StreamTest, TenLinesFromAFileAreHandled) {
  const ScopedTempDir folder;
  folder.Write("lines", MakeTenLines());
  const VexilResult result = VexilRun({"--input", "lines"}).InDirectory(folder.GetPath()).Run();
  EXPECT_EQ(kAnswers, result.out);
  EXPECT_EQ(kErrors, result.err);
  EXPECT_EQ(0, result.status);
}

TEST(StreamTest, TenLinesFromStandardInputAreHandled) {
  const VexilResult result = VexilRun({"--input", "STDIN"}).WithInput(MakeTenLines()).Run();
  EXPECT_EQ(kAnswers, result.out);
  EXPECT_EQ(kErrors, result.err);
  EXPECT_EQ(0, result.status);
}

TEST(StreamTest, TheStatusIsThatOfTheLastLineHandled) {
  const VexilResult failed =
      VexilRun({"--input=STDIN"}).WithInput("vexil command list\nvexil\n# the end\n\n").Run();
  EXPECT_EQ(1, failed.status);
  const VexilResult passed =
      VexilRun({"--input=STDIN"}).WithInput("vexil\nvexil command list\n").Run();
  EXPECT_EQ(0, passed.status);
}

TEST(StreamTest, AStreamWithoutCommandsIsNotAnError) {
  const VexilResult result = VexilRun({"--input=STDIN"}).WithInput("# nothing\n\n").Run();
  EXPECT_EQ("", result.out);
  EXPECT_EQ("", result.err);
  EXPECT_EQ(0, result.status);
}

TEST(StreamTest, ALineUsesTheNameVexilWhateverTheToolIsCalled) {
  const VexilResult result =
      VexilRun({"--input=STDIN"}).CalledAs("tool").WithInput("vexil\n").Run();
  EXPECT_THAT(result.out, StartsWith("Usage: vexil [disp options] vexil "));
}

TEST(StreamTest, AnUnknownWordEndsTheStream) {
  const VexilResult result = VexilRun({"--input=STDIN"})
                                 .WithInput("vexil command list\nnosuch\nvexil command list\n")
                                 .Run();
  EXPECT_EQ(
      "Namespace      Command  Description\n"
      "-------------  -------  -----------\n"
      "vexil.command  list     List all of the vexil commands.\n",
      result.out);
  EXPECT_EQ("Unable to find a command or namespace with the name 'nosuch' in namespace \n",
            result.err);
  EXPECT_EQ(1, result.status);
}

TEST(StreamTest, HelpEndsTheStream) {
  const VexilResult result =
      VexilRun({"--input=STDIN"}).WithInput("--help\nvexil command list\n").Run();
  EXPECT_THAT(result.out, StartsWith("vexil [dispatcher options] <namespaces>"));
  EXPECT_EQ(std::string::npos, result.out.find("List all of the vexil commands."));
  EXPECT_EQ("", result.err);
  EXPECT_EQ(1, result.status);
}

TEST(StreamTest, TheInputOptionIsUnknownWithinAStream) {
  const VexilResult result =
      VexilRun({"--input=STDIN"}).WithInput("--input=STDIN vexil command list\n").Run();
  EXPECT_EQ("", result.out);
  EXPECT_EQ("Errors: \nUnknown dispatcher parameter: input\n", result.err);
  EXPECT_EQ(1, result.status);
}

TEST(StreamTest, AMissingFileIsReported) {
  const ScopedTempDir folder;
  const VexilResult result =
      VexilRun({"--input", "missing", "vexil"}).InDirectory(folder.GetPath()).Run();
  EXPECT_EQ("", result.out);
  EXPECT_EQ("Unable to open file missing\n", result.err);
  EXPECT_EQ(1, result.status);
}

TEST(StreamTest, AFolderIsReported) {
  const ScopedTempDir folder;
  const VexilResult result = VexilRun({"--input", folder.GetPath()}).Run();
  EXPECT_EQ("Unable to open file " + folder.GetPath() + "\n", result.err);
  EXPECT_EQ(1, result.status);
}

TEST(StreamTest, StandardInputThatCannotBeReadIsReported) {
  const VexilResult result = VexilRun({"--input", "STDIN"}).WithoutDescriptor(0).Run();
  EXPECT_EQ("", result.out);
  EXPECT_EQ("Unable to read standard input\n", result.err);
  EXPECT_EQ(1, result.status);
}

TEST(StreamTest, TwoInputsAreReported) {
  const VexilResult result =
      VexilRun({"--input=STDIN", "--input=STDIN"}).WithInput("vexil\n").Run();
  EXPECT_EQ("", result.out);
  EXPECT_EQ("Only one --input dispatch parameter is allowed\n", result.err);
  EXPECT_EQ(1, result.status);
}

TEST(StreamTest, ASecretTakesTheNextLineOfStandardInput) {
  const VexilResult result = Try({}, {"--input", "STDIN"})
                                 .WithInput(
                                     "try unlock --password --pin=1\n"
                                     "open sesame\n"
                                     "try say --text after\n"
                                     "try unlock --pin --password\n"
                                     "2\n")
                                 .Run();
  EXPECT_EQ(
      "Enter value for 'password': \n"
      "password 'open sesame' pin '1'\n"
      "after\n"
      "Enter value for 'pin': \n"
      "Enter value for 'password': \n"
      "password '' pin '2'\n",
      result.out);
  EXPECT_EQ("", result.err);
  EXPECT_EQ(0, result.status);
}

TEST(StreamTest, ASecretIsNotReadFromTheFileOfLines) {
  const ScopedTempDir folder;
  const std::string lines =
      folder.Write("lines", "try unlock --password --pin=1\ntry say --text after\n");
  const VexilResult result = Try({}, {"--input", lines}).WithInput("typed\n").Run();
  EXPECT_EQ("Enter value for 'password': \npassword 'typed' pin '1'\nafter\n", result.out);
  EXPECT_EQ(0, result.status);
}

}  // namespace

}  // namespace Kestrel::Testing
