// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/process/EchoGuard.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <string.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/PseudoTerminal.h"
#include "support/Sanitizer.h"
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

// Asks for a secret as a command does; returns 0 if the answer is "secret".
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

TEST(EchoGuardTest, EchoIsRestoredWhenSomethingThrows) {
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

TEST(EchoGuardTest, TheSignalsAreRestoredAfterwards) {
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

// A run of a program that asks for a secret: what happens after the prompt, and how it ends.
struct GuardedRun {
  const char* name;
  std::function<int()> work = AskForSecret;
  std::function<void(PseudoTerminal&)> act;
  int signal = 0;  // the signal that ends the program; 0 if it exits with status 0
  bool isEchoOnAfterwards = true;
};

class EchoGuardRunTest : public ::testing::TestWithParam<GuardedRun> {};

TEST_P(EchoGuardRunTest, EndsAsItWouldWithoutTheGuard) {
  const GuardedRun& run = GetParam();
  if (Testing::kIsSanitized &&
      (run.signal == SIGSEGV || run.signal == SIGBUS || run.signal == SIGFPE)) {
    GTEST_SKIP() << "the sanitizer handles this signal and exits";
  }
  PseudoTerminal terminal;
  terminal.Start(run.work);
  EXPECT_EQ("Prompt: ", terminal.ReadUntil("Prompt: "));
  EXPECT_FALSE(terminal.IsEchoOn());
  ASSERT_NO_FATAL_FAILURE(run.act(terminal));
  const int status = terminal.WaitForEnd();
  EXPECT_EQ(run.signal, WIFSIGNALED(status) ? WTERMSIG(status) : 0);
  EXPECT_EQ(run.isEchoOnAfterwards, terminal.IsEchoOn());
  if (run.signal == 0) {
    EXPECT_EQ(0, status);
    EXPECT_EQ("", terminal.ReadRest());
  }
}

void Answer(PseudoTerminal& terminal) { terminal.Type("secret\n"); }

void ExpectPromptAgain(PseudoTerminal& terminal, const std::string& before = "") {
  EXPECT_EQ(before + "Prompt: ", terminal.ReadUntil("Prompt: "));
  EXPECT_FALSE(terminal.IsEchoOn());
}

void Stop(PseudoTerminal& terminal, int signal) {
  terminal.Send(signal);
  ASSERT_TRUE(terminal.WaitUntilStopped());
}

const GuardedRun kRuns[] = {
    {"TheAnswerEndsIt", AskForSecret, Answer},
    {"TheInterruptKeyEndsIt", AskForSecret, [](auto& terminal) { terminal.Type("\x03"); }, SIGINT},
    {"AnIgnoredSignalChangesNothing",
     [] {
       HandleWith(SIGINT, SIG_IGN);
       return AskForSecret();
     },
     [](auto& terminal) {
       terminal.Send(SIGINT);
       Answer(terminal);
     }},
    // The handler is installed without SA_RESTART, but the read continues.
    {"TheProgramsOwnHandlerRunsWithEchoOn",
     [] {
       HandleWith(SIGINT, [](int) { Show(HasEcho() ? "on " : "off "); });
       return AskForSecret();
     },
     [](auto& terminal) {
       for (int round = 0; round < 2; ++round) {
         terminal.Send(SIGINT);
         ExpectPromptAgain(terminal, "on ");
       }
       Answer(terminal);
     }},
    {"TheStopKeyStopsItWithEchoOn", AskForSecret,
     [](auto& terminal) {
       for (int round = 0; round < 3; ++round) {
         terminal.Type("\x1a");
         ASSERT_TRUE(terminal.WaitUntilStopped());
         EXPECT_TRUE(terminal.IsEchoOn());
         terminal.Continue();
         ExpectPromptAgain(terminal);
       }
       Answer(terminal);
     }},
    {"ASignalEndsItWhileItIsStopped", AskForSecret,
     [](auto& terminal) {
       ASSERT_NO_FATAL_FAILURE(Stop(terminal, SIGTSTP));
       terminal.Send(SIGTERM);
       terminal.Continue();
     },
     SIGTERM},
    {"EchoGoesOffAgainAfterSigstop", AskForSecret,
     [](auto& terminal) {
       ASSERT_NO_FATAL_FAILURE(Stop(terminal, SIGSTOP));
       terminal.SetEcho(true);
       terminal.Continue();
       ExpectPromptAgain(terminal);
       Answer(terminal);
     }},
    // Reading the terminal in the background stops the program again.
    {"InTheBackgroundItLeavesTheTerminalAlone", AskForSecret,
     [](auto& terminal) {
       terminal.Type("\x1a");
       ASSERT_TRUE(terminal.WaitUntilStopped());
       terminal.ContinueInBackground();
       ASSERT_TRUE(terminal.WaitUntilStopped());
       EXPECT_TRUE(terminal.IsEchoOn());
       EXPECT_EQ("", terminal.ReadRest());
       terminal.Continue();
       ExpectPromptAgain(terminal);
       Answer(terminal);
     }},
    {"WhenItEndsInTheBackgroundItLeavesTheTerminalAlone", AskForSecret,
     [](auto& terminal) {
       ASSERT_NO_FATAL_FAILURE(Stop(terminal, SIGSTOP));
       terminal.SetEcho(false);
       terminal.Send(SIGTERM);
       terminal.ContinueInBackground();
     },
     SIGTERM, false},
    {"TheProgramsOwnHandlerIsCalledWhenItContinues",
     [] {
       HandleWith(SIGCONT, [](int) { Show("going on "); });
       return AskForSecret();
     },
     [](auto& terminal) {
       ASSERT_NO_FATAL_FAILURE(Stop(terminal, SIGSTOP));
       terminal.Continue();
       ExpectPromptAgain(terminal, "going on ");
       Answer(terminal);
     }},
    {"EchoGoesOffAgainEvenIfSigcontIsIgnored",
     [] {
       HandleWith(SIGCONT, SIG_IGN);
       return AskForSecret();
     },
     [](auto& terminal) {
       ASSERT_NO_FATAL_FAILURE(Stop(terminal, SIGTSTP));
       EXPECT_TRUE(terminal.IsEchoOn());
       terminal.Continue();
       ExpectPromptAgain(terminal);
       Answer(terminal);
     }}};

INSTANTIATE_TEST_SUITE_P(Runs, EchoGuardRunTest, ::testing::ValuesIn(kRuns),
                         [](const auto& row) { return row.param.name; });

std::vector<GuardedRun> MakeRunsThatASignalEnds() {
  std::vector<GuardedRun> runs;
  for (const int signal :
       {SIGHUP,  SIGINT,    SIGQUIT, SIGILL,  SIGTRAP, SIGABRT, SIGBUS,    SIGFPE,
        SIGUSR1, SIGSEGV,   SIGUSR2, SIGPIPE, SIGALRM, SIGTERM, SIGSTKFLT, SIGXCPU,
        SIGXFSZ, SIGVTALRM, SIGPROF, SIGIO,   SIGPWR,  SIGSYS}) {
    const auto send = [signal](PseudoTerminal& terminal) { terminal.Send(signal); };
    runs.push_back({sigabbrev_np(signal), AskForSecret, send, signal});
  }
  const auto sendRealTime = [](PseudoTerminal& terminal) { terminal.Send(SIGRTMAX); };
  runs.push_back({"RealTime", AskForSecret, sendRealTime, SIGRTMAX});
  return runs;
}

INSTANTIATE_TEST_SUITE_P(Signals, EchoGuardRunTest, ::testing::ValuesIn(MakeRunsThatASignalEnds()),
                         [](const auto& row) { return row.param.name; });

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

TEST(EchoGuardTest, APromptThatCannotBeWrittenIsLeftOut) {
  PseudoTerminal terminal;
  terminal.Start([] {
    const EchoGuard guard("Prompt: ");
    close(STDOUT_FILENO);
    raise(SIGTSTP);
    return HasEcho() ? 1 : 0;
  });
  ASSERT_TRUE(terminal.WaitUntilStopped());
  terminal.Continue();
  EXPECT_EQ(0, terminal.WaitForEnd());
  EXPECT_EQ("", terminal.ReadRest());
}

TEST(EchoGuardTest, ASignalLeavesTheErrorNumberAlone) {
  PseudoTerminal terminal;
  terminal.Start([] {
    HandleWith(SIGUSR1, [](int) {});
    const EchoGuard guard("Prompt: ");
    close(STDOUT_FILENO);  // writing the prompt again fails
    for (const int signal : {SIGUSR1, SIGCONT}) {
      errno = EDOM;
      raise(signal);
      if (errno != EDOM) {
        return signal;
      }
    }
    return 0;
  });
  EXPECT_EQ(0, terminal.WaitForEnd());
}

TEST(EchoGuardTest, InputThatIsNotATerminalIsLeftAlone) {
  const ScopedInput in("secret\n");
  const EchoGuard guard("Prompt: ");
  for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGTERM, SIGTSTP, SIGCONT}) {
    EXPECT_EQ(SIG_DFL, GetHandler(signal)) << sigabbrev_np(signal);
  }
  EXPECT_EQ("secret", ReadLine());
}

}  // namespace

}  // namespace Kestrel::AutoCli
