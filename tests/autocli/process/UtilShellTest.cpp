// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <utility>
#include <vector>

#include "kestrel/KestrelException.h"
#include "kestrel/autocli/Util.h"
#include "support/ScopedEnvironment.h"
#include "support/StreamCapture.h"

namespace Kestrel::AutoCli {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using Testing::ScopedEnvironment;
using Testing::StreamCapture;
using testing::ThrowsMessage;

std::string OutputOf(const std::string& commandLine, const std::string& stdinData = "") {
  std::string output;
  AutoCli_ShellCmd(commandLine, output, stdinData);
  return output;
}

int StatusOf(const std::string& commandLine) {
  std::string output;
  return AutoCli_ShellCmd(commandLine, output, "");
}

/// Records each shell command that finishes while the object exists, and its wait status.
class Listening {
 public:
  Listening() {
    heard_.clear();
    SetCommandExecListener([](const std::string& commandLine, int status) {
      heard_.emplace_back(commandLine, status);
    });
  }
  ~Listening() { SetCommandExecListener(nullptr); }

  const std::vector<std::pair<std::string, int>>& GetHeard() const { return heard_; }

 private:
  static std::vector<std::pair<std::string, int>> heard_;
};

std::vector<std::pair<std::string, int>> Listening::heard_;

/// Adds an argument to every shell that is started while the object exists.
class ExtraArgument {
 public:
  explicit ExtraArgument(const std::string& argument) {
    argument_ = argument;
    SetChildRpZolOptionMaker([](int id) {
      id_ = id;
      return argument_;
    });
  }
  ~ExtraArgument() { SetChildRpZolOptionMaker(nullptr); }

  int GetId() const { return id_; }

 private:
  static std::string argument_;
  static int id_;
};

std::string ExtraArgument::argument_;
int ExtraArgument::id_ = 0;

TEST(UtilShellTest, AppendsWhatTheCommandPrints) {
  std::string output = "before ";
  EXPECT_EQ(AutoCli_ShellCmd("echo one; printf two", output, ""), 0);
  EXPECT_EQ(output, "before one\ntwo");
}

TEST(UtilShellTest, ACommandThatPrintsNothingLeavesTheOutputUnchanged) {
  std::string output = "before";
  EXPECT_EQ(WEXITSTATUS(AutoCli_ShellCmd("exit 7", output, "")), 7);
  EXPECT_EQ(output, "before");
}

TEST(UtilShellTest, ReturnsTheWaitStatus) {
  EXPECT_EQ(StatusOf("exit 0"), 0);
  EXPECT_EQ(StatusOf("exit 3"), 3 << 8);
  EXPECT_EQ(StatusOf("kill -TERM $$"), SIGTERM);
  EXPECT_EQ(StatusOf("nosuchcommand 2>/dev/null"), 127 << 8);
}

TEST(UtilShellTest, PassesTheStandardInputAndThenItsEnd) {
  EXPECT_EQ(OutputOf("cat; echo end", "some\ntext"), "some\ntextend\n");
  EXPECT_EQ(OutputOf("cat; echo end"), "end\n");
  const std::string bytes("\0\xFF\n\r\0", 5);
  EXPECT_EQ(OutputOf("cat", bytes), bytes);
}

TEST(UtilShellTest, TheStandardErrorIsShared) {
  StreamCapture error(STDERR_FILENO);
  EXPECT_EQ(OutputOf("echo out; echo err >&2"), "out\n");
  EXPECT_EQ(error.GetText(), "err\n");
}

TEST(UtilShellTest, TheEnvironmentIsPassedOn) {
  const ScopedEnvironment variable("KESTREL_TEST_VARIABLE", "a b");
  EXPECT_EQ(OutputOf("echo \"$KESTREL_TEST_VARIABLE\""), "a b\n");
}

TEST(UtilShellTest, TheShellIsCalledByItsFullPath) {
  EXPECT_EQ(OutputOf("echo $0 $#"), "/bin/sh 0\n");
}

TEST(UtilShellTest, ACommandLineThatIsTooLongIsRefused) {
  const std::string commandLine = "echo " + std::string(3 * 1024 * 1024, 'x');
  std::string output = "before";
  EXPECT_THAT([&] { AutoCli_ShellCmd(commandLine, output, ""); },
              ThrowsMessage<KestrelException>("Failed to call process '" + commandLine +
                                              "': Argument list too long"));
  EXPECT_EQ(output, "before");
}

TEST(UtilShellTest, TheUserNamePrecedesTheCommandLine) {
  const Listening listening;
  std::string output;
  AutoCli_ShellCmdWithOprUsername("echo $OPR_USERNAME", "o'neil", output, "");
  AutoCli_ShellCmdWithOprUsername("sh -c 'cat; echo \"$OPR_USERNAME\"'", "'';$(x)\n'", output,
                                  "in ");
  EXPECT_THAT(listening.GetHeard(),
              ElementsAre(Pair("OPR_USERNAME='o'\\''neil' echo $OPR_USERNAME", 0),
                          Pair("OPR_USERNAME=''\\'''\\'';$(x)\n'\\''' sh -c 'cat; echo "
                               "\"$OPR_USERNAME\"'",
                               0)));
  EXPECT_EQ(output.substr(output.find("in ")), "in '';$(x)\n'\n");
}

TEST(UtilShellTest, AnEmptyUserNameLeavesTheCommandLineUnchanged) {
  const ScopedEnvironment user("OPR_USERNAME", "outer");
  const Listening listening;
  std::string output;
  EXPECT_EQ(AutoCli_ShellCmdWithOprUsername("echo $OPR_USERNAME; exit 2", "", output, ""), 2 << 8);
  EXPECT_EQ(output, "outer\n");
  EXPECT_THAT(listening.GetHeard(), ElementsAre(Pair("echo $OPR_USERNAME; exit 2", 2 << 8)));
}

TEST(UtilShellTest, TheListenerIsCalledForEachFinishedCommand) {
  const Listening listening;
  OutputOf("exit 3");
  OutputOf("kill -KILL $$");
  EXPECT_THAT(listening.GetHeard(),
              ElementsAre(Pair("exit 3", 3 << 8), Pair("kill -KILL $$", SIGKILL)));
}

TEST(UtilShellTest, TheListenerIsNotCalledForAFailedCall) {
  const Listening listening;
  std::string output;
  EXPECT_THAT([&] { AutoCli_ShellCmd("exec <&-; sleep 0.2", output, std::string(1000000, 'x')); },
              ThrowsMessage<KestrelException>("Unable to write to sub-process: Broken pipe"));
  EXPECT_THAT(listening.GetHeard(), IsEmpty());
}

TEST(UtilShellTest, ARemovedListenerIsNotCalled) {
  const Listening listening;
  SetCommandExecListener(nullptr);
  OutputOf("exit 0");
  EXPECT_THAT(listening.GetHeard(), IsEmpty());
}

TEST(UtilShellTest, TheMakerAddsAnArgumentToTheShell) {
  const ExtraArgument extra("-e");
  EXPECT_EQ(OutputOf("echo $-; false; echo not reached"), "e\n");
  EXPECT_EQ(extra.GetId(), -1);
}

TEST(UtilShellTest, AnEmptyArgumentIsOmitted) {
  const ExtraArgument extra("");
  EXPECT_EQ(OutputOf("echo [$-]; false; echo reached"), "[]\nreached\n");
}

TEST(UtilShellTest, WithoutAMakerTheOptionIsEmpty) {
  EXPECT_EQ(MakeChildRpZolOption(-1), "");
  {
    const ExtraArgument extra("x y");
    EXPECT_EQ(MakeChildRpZolOption(7), "x y");
    EXPECT_EQ(extra.GetId(), 7);
  }
  EXPECT_EQ(MakeChildRpZolOption(-1), "");
}

TEST(UtilPanicDeathTest, PrintsItsMessageAndAborts) {
  EXPECT_EXIT(Panic("no %s in %d", "disk", 7), testing::KilledBySignal(SIGABRT),
              "^panic: no disk in 7$");
}

TEST(UtilPanicDeathTest, CutsItsMessageAt255Bytes) {
  const std::string text(300, 'x');
  EXPECT_EXIT(Panic("%s", text.c_str()), testing::KilledBySignal(SIGABRT), "^panic: x{255}$");
}

}  // namespace
}  // namespace Kestrel::AutoCli
