// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The exit status of the tool, mostly when its output cannot be written.

#include <gmock/gmock.h>
#include <signal.h>

#include <algorithm>
#include <string>
#include <vector>

#include "e2e/Plugins.h"
#include "support/ScopedTempDir.h"
#include "support/VexilRun.h"

namespace Kestrel::Testing {

namespace {

using ::testing::EndsWith;
using ::testing::StartsWith;

const std::vector<std::string> kList = {"vexil", "command", "list"};

// More output than any buffer between the tool and the reader can hold.
const std::vector<std::string> kManyRows = {"try", "rows", "-c", "20000"};

TEST(ExitStatusTest, AFailedCommandPrintsItsMessagesAndExitsWithStatus1) {
  const VexilResult result = Try({"try", "fail"}).Run();
  EXPECT_EQ("", result.out);
  EXPECT_EQ("Errors: \nError on command try fail : no fuel\n", result.err);
  EXPECT_EQ(1, result.status);
}

TEST(ExitStatusTest, AFullDiskIsReported) {
  for (const auto& words :
       {std::vector<std::string>(), kList, std::vector<std::string>{"--help"}}) {
    const VexilResult result = VexilRun(words).WithOutputTo("/dev/full").Run();
    EXPECT_EQ("Unable to write to standard output\n", result.err);
    EXPECT_EQ(1, result.status);
  }
}

TEST(ExitStatusTest, AFullDiskIsReportedForLargeOutput) {
  const VexilResult result = Try(kManyRows).WithOutputTo("/dev/full").Run();
  EXPECT_EQ("Unable to write to standard output\n", result.err);
  EXPECT_EQ(1, result.status);
}

TEST(ExitStatusTest, AFullDiskIsReportedInAStream) {
  const VexilResult result = VexilRun({"--input=STDIN"})
                                 .WithInput("vexil command list\nvexil command list\n")
                                 .WithOutputTo("/dev/full")
                                 .Run();
  EXPECT_EQ("Unable to write to standard output\n", result.err);
  EXPECT_EQ(1, result.status);
}

TEST(ExitStatusTest, AFullDiskIsReportedWhenAPluginEndsTheProcess) {
  const VexilResult result = Try({"try", "quit"}).WithOutputTo("/dev/full").Run();
  EXPECT_EQ("Unable to write to standard output\n", result.err);
  EXPECT_EQ(1, result.status);
  const VexilResult written = Try({"try", "quit"}).Run();
  EXPECT_EQ("leaving\n", written.out);
  EXPECT_EQ(0, written.status);
}

TEST(ExitStatusTest, AFullDiskIsReportedWhenAPluginMakesStandardOutputThrow) {
  const VexilResult result = Try({"try", "demand"}).WithOutputTo("/dev/full").Run();
  EXPECT_THAT(result.err, EndsWith("\nUnable to write to standard output\n"));
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("demanded\n", Try({"try", "demand"}).Run().out);
}

TEST(ExitStatusTest, AFullDiskIsReportedAfterTheExceptionThatEndsTheTool) {
  const VexilResult result = VexilRun({"--input=STDIN"})
                                 .WithInput("vexil command list\nnosuch\n")
                                 .WithOutputTo("/dev/full")
                                 .Run();
  EXPECT_EQ(
      "Unable to find a command or namespace with the name 'nosuch' in namespace \n"
      "Unable to write to standard output\n",
      result.err);
  EXPECT_EQ(1, result.status);
}

TEST(ExitStatusTest, AClosedStandardOutputIsReported) {
  const VexilResult result = VexilRun(kList).WithoutDescriptor(1).Run();
  EXPECT_EQ("Unable to write to standard output\n", result.err);
  EXPECT_EQ(1, result.status);
}

TEST(ExitStatusTest, AClosedStandardOutputIsNotAnErrorWhenNothingIsWritten) {
  const VexilResult quiet = Try({"try", "quiet"}).WithoutDescriptor(1).Run();
  EXPECT_EQ("", quiet.err);
  EXPECT_EQ(0, quiet.status);
  const VexilResult failed = VexilRun({"nosuch"}).WithoutDescriptor(1).Run();
  EXPECT_EQ("Unable to find a command or namespace with the name 'nosuch' in namespace \n",
            failed.err);
  EXPECT_EQ(1, failed.status);
}

TEST(ExitStatusTest, AFileThatACommandOpensDoesNotBecomeStandardOutput) {
  const ScopedTempDir folder;
  const std::string file = folder.Write("held", "");
  const VexilResult result = Try({"try", "hold", "--text", file}).WithoutDescriptor(1).Run();
  EXPECT_EQ("Unable to write to standard output\n", result.err);
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("", folder.Read("held"));
}

TEST(ExitStatusTest, AFileThatACommandOpensDoesNotBecomeStandardError) {
  const ScopedTempDir folder;
  const std::string file = folder.Write("held", "");
  const VexilResult result = Try({"try", "hold", "--text", file}, {"--formatter=table"})
                                 .WithoutDescriptor(0)
                                 .WithoutDescriptor(2)
                                 .Run();
  EXPECT_EQ("", result.out);
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("", folder.Read("held"));
}

TEST(ExitStatusTest, ABrokenPipeEndsTheToolWithASignal) {
  for (const VexilRun& run : {VexilRun(kList), VexilRun(), Try(kManyRows)}) {
    const VexilResult result = VexilRun(run).WithoutReader().Run();
    EXPECT_EQ("", result.err);
    EXPECT_EQ(SIGPIPE, result.signal);
  }
}

TEST(ExitStatusTest, ABrokenPipeIsReportedWhereTheSignalIsIgnored) {
  const VexilResult result = VexilRun(kList).WithoutReader().IgnoringBrokenPipes().Run();
  EXPECT_EQ("Unable to write to standard output\n", result.err);
  EXPECT_EQ(1, result.status);
}

TEST(ExitStatusTest, LargeOutputIsWrittenWhole) {
  const std::string head = "Number  Text\n------  ----\n     1  the text of a row\n";
  const std::string tail = "\n 20000  the text of a row\n";
  const VexilResult result = Try(kManyRows).Run();
  EXPECT_THAT(result.out, StartsWith(head));
  EXPECT_THAT(result.out, EndsWith(tail));
  EXPECT_EQ(20002, std::count(result.out.begin(), result.out.end(), '\n'));
  EXPECT_EQ("", result.err);
  EXPECT_EQ(0, result.status);
}

}  // namespace

}  // namespace Kestrel::Testing
