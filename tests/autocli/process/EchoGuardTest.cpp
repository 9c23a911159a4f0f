// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/process/EchoGuard.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <string.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <stdexcept>
#include <string>

#include "support/PseudoTerminal.h"
#include "support/StreamCapture.h"

namespace Kestrel::AutoCli {

namespace {

using Kestrel::Testing::PseudoTerminal;
using Kestrel::Testing::ScopedInput;
using Kestrel::Testing::StreamCapture;

void Show(const std::string& text) {
  if (write(STDOUT_FILENO, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
    _exit(99);
  }
}

std::string ReadLine() {
  std::string line;
  for (char c = 0; read(STDIN_FILENO, &c, 1) == 1 && c != '\n';) {
    line += c;
  }
  return line;
}

// What a command does that asks for a secret: 0 when the answer was "secret".
int AskForSecret() {
  const EchoGuard guard("Prompt: ");
  Show("Prompt: ");
  return ReadLine() == "secret" ? 0 : 1;
}

bool HasEcho() {
  termios modes = {};
  return tcgetattr(STDIN_FILENO, &modes) == 0 && (modes.c_lflag & ECHO) != 0;
}

void SetEcho(bool isOn) {
  termios modes = {};
  tcgetattr(STDIN_FILENO, &modes);
  modes.c_lflag = isOn ? modes.c_lflag | ECHO : modes.c_lflag & ~static_cast<tcflag_t>(ECHO);
  tcsetattr(STDIN_FILENO, TCSANOW, &modes);
}

void HandleWith(int signal, void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;
  sigaction(signal, &action, nullptr);
}

auto GetHandler(int signal) {
  struct sigaction action = {};
  sigaction(signal, nullptr, &action);
  return action.sa_handler;
}

TEST(EchoGuardTest, EchoIsOffWhileTheGuardLivesAndOnAgainAfterwards) {
  PseudoTerminal terminal;
  EXPECT_TRUE(terminal.IsEchoOn());
  terminal.Start(AskForSecret);
  EXPECT_EQ("Prompt: ", terminal.ReadUntil("Prompt: "));
  EXPECT_FALSE(terminal.IsEchoOn());
  terminal.Type("secret\n");
  EXPECT_EQ(0, terminal.WaitForEnd());
  EXPECT_TRUE(terminal.IsEchoOn());
  EXPECT_EQ("", terminal.ReadRest());
}

TEST(EchoGuardTest, OnlyEchoChanges) {
  PseudoTerminal terminal;
  terminal.Start([] {
    termios before = {};
    termios within = {};
    termios after = {};
    tcgetattr(STDIN_FILENO, &before);
    {
      const EchoGuard guard("");
      tcgetattr(STDIN_FILENO, &within);
    }
    tcgetattr(STDIN_FILENO, &after);
    const bool isRestored = memcmp(&before, &after, sizeof before) == 0;
    before.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    return isRestored && memcmp(&before, &within, sizeof before) == 0 ? 0 : 1;
  });
  EXPECT_EQ(0, terminal.WaitForEnd());
}

TEST(EchoGuardTest, EchoThatWasOffStaysOff) {
  PseudoTerminal terminal;
  terminal.Start([] {
    SetEcho(false);
    { const EchoGuard guard(""); }
    return HasEcho() ? 1 : 0;
  });
  EXPECT_EQ(0, terminal.WaitForEnd());
}

TEST(EchoGuardTest, EchoComesBackWhenSomethingThrows) {
  PseudoTerminal terminal;
  terminal.Start([] {
    try {
      const EchoGuard guard("");
      throw std::runtime_error("while reading");
    } catch (const std::runtime_error&) {
      return HasEcho() ? 0 : 1;
    }
  });
  EXPECT_EQ(0, terminal.WaitForEnd());
}

TEST(EchoGuardTest, TheSignalsAreAsBeforeAfterwards) {
  PseudoTerminal terminal;
  terminal.Start([] {
    HandleWith(SIGINT, SIG_IGN);
    HandleWith(SIGTERM, [](int) {});
    const auto own = GetHandler(SIGTERM);
    { const EchoGuard guard(""); }
    return GetHandler(SIGINT) == SIG_IGN && GetHandler(SIGTERM) == own &&
                   GetHandler(SIGHUP) == SIG_DFL && GetHandler(SIGTSTP) == SIG_DFL &&
                   GetHandler(SIGCONT) == SIG_DFL
               ? 0
               : 1;
  });
  EXPECT_EQ(0, terminal.WaitForEnd());
}

class EchoGuardSignalTest : public ::testing::TestWithParam<int> {};

TEST_P(EchoGuardSignalTest, EndsTheProcessWithEchoOnAgain) {
  PseudoTerminal terminal;
  terminal.Start(AskForSecret);
  terminal.ReadUntil("Prompt: ");
  EXPECT_FALSE(terminal.IsEchoOn());
  terminal.Send(GetParam());
  const int status = terminal.WaitForEnd();
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(GetParam(), WTERMSIG(status));
  EXPECT_TRUE(terminal.IsEchoOn());
}

INSTANTIATE_TEST_SUITE_P(Signals, EchoGuardSignalTest,
                         ::testing::Values(SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGTERM),
                         [](const auto& row) { return sigabbrev_np(row.param); });

TEST(EchoGuardTest, TheInterruptKeyEndsTheProcessWithEchoOnAgain) {
  PseudoTerminal terminal;
  terminal.Start(AskForSecret);
  terminal.ReadUntil("Prompt: ");
  terminal.Type("\x03");
  const int status = terminal.WaitForEnd();
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(SIGINT, WTERMSIG(status));
  EXPECT_TRUE(terminal.IsEchoOn());
}

TEST(EchoGuardTest, AnIgnoredSignalChangesNothing) {
  PseudoTerminal terminal;
  terminal.Start([] {
    HandleWith(SIGINT, SIG_IGN);
    return AskForSecret();
  });
  terminal.ReadUntil("Prompt: ");
  terminal.Send(SIGINT);
  terminal.Type("secret\n");
  EXPECT_EQ(0, terminal.WaitForEnd());
  EXPECT_EQ("", terminal.ReadRest());
}

TEST(EchoGuardTest, TheProgramsOwnHandlerRunsWithEchoOnAndOffAgainAfterwards) {
  PseudoTerminal terminal;
  terminal.Start([] {
    HandleWith(SIGINT, [](int) { Show(HasEcho() ? "on " : "off "); });
    return AskForSecret();
  });
  terminal.ReadUntil("Prompt: ");
  for (int round = 0; round < 2; ++round) {
    terminal.Send(SIGINT);
    EXPECT_EQ("on Prompt: ", terminal.ReadUntil("Prompt: "));
    EXPECT_FALSE(terminal.IsEchoOn());
  }
  terminal.Type("secret\n");
  // The handler was installed without SA_RESTART, yet the reading goes on.
  EXPECT_EQ(0, terminal.WaitForEnd());
  EXPECT_TRUE(terminal.IsEchoOn());
}

TEST(EchoGuardTest, TheStopKeyStopsTheProcessWithEchoOnUntilItGoesOn) {
  PseudoTerminal terminal;
  terminal.Start(AskForSecret);
  terminal.ReadUntil("Prompt: ");
  for (int round = 0; round < 3; ++round) {
    terminal.Type("\x1a");
    ASSERT_TRUE(terminal.WaitUntilStopped());
    EXPECT_TRUE(terminal.IsEchoOn());
    terminal.Continue();
    EXPECT_EQ("Prompt: ", terminal.ReadUntil("Prompt: "));
    EXPECT_FALSE(terminal.IsEchoOn());
  }
  terminal.Type("secret\n");
  EXPECT_EQ(0, terminal.WaitForEnd());
  EXPECT_TRUE(terminal.IsEchoOn());
  EXPECT_EQ("", terminal.ReadRest());
}

TEST(EchoGuardTest, AStoppedProcessCanBeEndedAndLeavesEchoOn) {
  PseudoTerminal terminal;
  terminal.Start(AskForSecret);
  terminal.ReadUntil("Prompt: ");
  terminal.Send(SIGTSTP);
  ASSERT_TRUE(terminal.WaitUntilStopped());
  terminal.Send(SIGTERM);
  terminal.Continue();
  const int status = terminal.WaitForEnd();
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(SIGTERM, WTERMSIG(status));
  EXPECT_TRUE(terminal.IsEchoOn());
}

TEST(EchoGuardTest, EchoGoesOffAgainAfterAStopThatNobodyCanCatch) {
  PseudoTerminal terminal;
  terminal.Start(AskForSecret);
  terminal.ReadUntil("Prompt: ");
  terminal.Send(SIGSTOP);
  ASSERT_TRUE(terminal.WaitUntilStopped());
  terminal.SetEcho(true);
  terminal.Continue();
  EXPECT_EQ("Prompt: ", terminal.ReadUntil("Prompt: "));
  EXPECT_FALSE(terminal.IsEchoOn());
  terminal.Type("secret\n");
  EXPECT_EQ(0, terminal.WaitForEnd());
}

TEST(EchoGuardTest, AProcessThatGoesOnInTheBackgroundLeavesTheTerminalAlone) {
  PseudoTerminal terminal;
  terminal.Start(AskForSecret);
  terminal.ReadUntil("Prompt: ");
  terminal.Type("\x1a");
  ASSERT_TRUE(terminal.WaitUntilStopped());
  terminal.ContinueInBackground();
  // Reading the terminal in the background stops it again.
  ASSERT_TRUE(terminal.WaitUntilStopped());
  EXPECT_TRUE(terminal.IsEchoOn());
  EXPECT_EQ("", terminal.ReadRest());
  terminal.Continue();
  EXPECT_EQ("Prompt: ", terminal.ReadUntil("Prompt: "));
  EXPECT_FALSE(terminal.IsEchoOn());
  terminal.Type("secret\n");
  EXPECT_EQ(0, terminal.WaitForEnd());
}

TEST(EchoGuardTest, AProcessThatEndsInTheBackgroundLeavesTheTerminalAlone) {
  PseudoTerminal terminal;
  terminal.Start(AskForSecret);
  terminal.ReadUntil("Prompt: ");
  terminal.Send(SIGSTOP);
  ASSERT_TRUE(terminal.WaitUntilStopped());
  terminal.SetEcho(false);
  terminal.Send(SIGTERM);
  terminal.ContinueInBackground();
  const int status = terminal.WaitForEnd();
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(SIGTERM, WTERMSIG(status));
  EXPECT_FALSE(terminal.IsEchoOn());
}

TEST(EchoGuardTest, TheProgramsOwnHandlerLearnsThatTheProcessGoesOn) {
  PseudoTerminal terminal;
  terminal.Start([] {
    HandleWith(SIGCONT, [](int) { Show("going on "); });
    return AskForSecret();
  });
  terminal.ReadUntil("Prompt: ");
  terminal.Send(SIGSTOP);
  ASSERT_TRUE(terminal.WaitUntilStopped());
  terminal.Continue();
  EXPECT_EQ("going on Prompt: ", terminal.ReadUntil("Prompt: "));
  terminal.Type("secret\n");
  EXPECT_EQ(0, terminal.WaitForEnd());
}

TEST(EchoGuardTest, AProgramThatIgnoresContinuingStillHidesTheTyping) {
  PseudoTerminal terminal;
  terminal.Start([] {
    HandleWith(SIGCONT, SIG_IGN);
    return AskForSecret();
  });
  terminal.ReadUntil("Prompt: ");
  terminal.Send(SIGTSTP);
  ASSERT_TRUE(terminal.WaitUntilStopped());
  EXPECT_TRUE(terminal.IsEchoOn());
  terminal.Continue();
  EXPECT_EQ("Prompt: ", terminal.ReadUntil("Prompt: "));
  EXPECT_FALSE(terminal.IsEchoOn());
  terminal.Type("secret\n");
  EXPECT_EQ(0, terminal.WaitForEnd());
}

TEST(EchoGuardTest, APromptThatWentToAFileIsNotWrittenAgain) {
  PseudoTerminal terminal;
  terminal.Start([] {
    std::string shown;
    {
      StreamCapture out(STDOUT_FILENO);
      const EchoGuard guard("Prompt: ");
      raise(SIGTSTP);
      shown = out.GetText();
    }
    return shown.empty() ? 0 : 1;
  });
  ASSERT_TRUE(terminal.WaitUntilStopped());
  terminal.Continue();
  EXPECT_EQ(0, terminal.WaitForEnd());
}

TEST(EchoGuardTest, InputThatIsNoTerminalIsLeftAlone) {
  const ScopedInput in("secret\n");
  const EchoGuard guard("Prompt: ");
  for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGTERM, SIGTSTP, SIGCONT}) {
    EXPECT_EQ(SIG_DFL, GetHandler(signal)) << sigabbrev_np(signal);
  }
  EXPECT_EQ("secret", ReadLine());
}

}  // namespace

}  // namespace Kestrel::AutoCli
