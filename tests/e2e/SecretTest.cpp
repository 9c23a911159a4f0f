// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>
#include <signal.h>
#include <string.h>
#include <sys/wait.h>

#include <string>

#include "e2e/Plugins.h"
#include "support/PseudoTerminal.h"
#include "support/VexilRun.h"

namespace Kestrel::Testing {

namespace {

const std::string kPrompt = "Enter value for 'password': ";

// Runs the tool on a terminal, where it asks for secrets.
class SecretTest : public ::testing::Test {
 protected:
  void Start(std::vector<std::string> words) {
    const VexilRun run = Try(std::move(words));
    terminal.Start([&run]() -> int { run.Exec(); });
  }

  void StartAndWaitForPrompt() {
    Start({"try", "unlock", "--password", "--pin=1"});
    EXPECT_EQ(kPrompt, terminal.ReadUntil(kPrompt));
    EXPECT_FALSE(terminal.IsEchoOn());
  }

  void ExpectEndedBy(int signal) {
    const int status = terminal.WaitForEnd();
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(signal, WTERMSIG(status));
    EXPECT_TRUE(terminal.IsEchoOn());
  }

  PseudoTerminal terminal;
};

TEST_F(SecretTest, IsTypedWithoutEchoAndEchoIsOnAgainAfterwards) {
  StartAndWaitForPrompt();
  terminal.Type("open sesame\n");
  EXPECT_EQ(0, terminal.WaitForEnd());
  EXPECT_TRUE(terminal.IsEchoOn());
  EXPECT_EQ("\r\npassword 'open sesame' pin '1'\r\n", terminal.ReadRest());
}

TEST_F(SecretTest, TwoSecretsAreAskedForInTheOrderOfTheirOptions) {
  Start({"try", "unlock", "-i", "-p"});
  EXPECT_EQ("Enter value for 'pin': ", terminal.ReadUntil("': "));
  EXPECT_FALSE(terminal.IsEchoOn());
  terminal.Type("1234\n");
  EXPECT_EQ("\r\n" + kPrompt, terminal.ReadUntil("': "));
  EXPECT_FALSE(terminal.IsEchoOn());
  terminal.Type("sesame\n");
  EXPECT_EQ(0, terminal.WaitForEnd());
  EXPECT_TRUE(terminal.IsEchoOn());
  EXPECT_EQ("\r\npassword 'sesame' pin '1234'\r\n", terminal.ReadRest());
}

TEST_F(SecretTest, IsEmptyAtTheEndOfInputAndTheNextOneIsStillAskedFor) {
  Start({"try", "unlock", "-i", "-p"});
  terminal.ReadUntil("Enter value for 'pin': ");
  terminal.Type("\x04");
  EXPECT_EQ("\r\n" + kPrompt, terminal.ReadUntil("': "));
  terminal.Type("sesame\n");
  EXPECT_EQ(0, terminal.WaitForEnd());
  EXPECT_TRUE(terminal.IsEchoOn());
  EXPECT_EQ("\r\npassword 'sesame' pin ''\r\n", terminal.ReadRest());
}

TEST_F(SecretTest, IsNotAskedForWhenItIsOnTheCommandLine) {
  Start({"try", "unlock", "--password=x", "--pin", "y"});
  EXPECT_EQ(0, terminal.WaitForEnd());
  EXPECT_EQ("password 'x' pin 'y'\r\n", terminal.ReadRest());
}

TEST_F(SecretTest, TheInterruptKeyEndsTheToolWithEchoOn) {
  StartAndWaitForPrompt();
  terminal.Type("half a sec\x03");
  ExpectEndedBy(SIGINT);
}

class SecretSignalTest : public SecretTest, public ::testing::WithParamInterface<int> {};

TEST_P(SecretSignalTest, EndsTheToolWithEchoOn) {
  StartAndWaitForPrompt();
  terminal.Send(GetParam());
  ExpectEndedBy(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Signals, SecretSignalTest,
                         ::testing::Values(SIGHUP, SIGINT, SIGQUIT, SIGTERM),
                         [](const auto& row) { return sigabbrev_np(row.param); });

TEST_F(SecretTest, TheStopKeyTurnsEchoOnUntilTheToolContinues) {
  StartAndWaitForPrompt();
  terminal.Type("\x1a");
  ASSERT_TRUE(terminal.WaitUntilStopped());
  EXPECT_TRUE(terminal.IsEchoOn());
  terminal.Continue();
  EXPECT_EQ(kPrompt, terminal.ReadUntil(kPrompt));
  EXPECT_FALSE(terminal.IsEchoOn());
  terminal.Type("open sesame\n");
  EXPECT_EQ(0, terminal.WaitForEnd());
  EXPECT_TRUE(terminal.IsEchoOn());
  EXPECT_EQ("\r\npassword 'open sesame' pin '1'\r\n", terminal.ReadRest());
}

TEST_F(SecretTest, IsReadFromInputThatIsNotATerminal) {
  const VexilResult result =
      Try({"try", "unlock", "--password", "--pin"}).WithInput("first\nsecond\n").Run();
  EXPECT_EQ(
      "Enter value for 'password': \n"
      "Enter value for 'pin': \n"
      "password 'first' pin 'second'\n",
      result.out);
  EXPECT_EQ("", result.err);
  EXPECT_EQ(0, result.status);
}

TEST_F(SecretTest, IsEmptyWithoutAnyInput) {
  const VexilResult result =
      Try({"try", "unlock", "--password", "--pin=1"}).WithoutDescriptor(0).Run();
  EXPECT_EQ("Enter value for 'password': \npassword '' pin '1'\n", result.out);
  EXPECT_EQ("", result.err);
  EXPECT_EQ(0, result.status);
}

}  // namespace

}  // namespace Kestrel::Testing
