// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/Signals.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "kestrel/KestrelException.h"
#include "plugins/host/support/Namespaces.h"
#include "plugins/host/support/PlainUser.h"
#include "support/Sanitizer.h"
#include "support/Witness.h"

namespace Kestrel::Host {
namespace {

using ::testing::ThrowsMessage;

// A number that no process has.
constexpr long kGone = 4194304;

TEST(SignalsTest, HaveTheNamesThatTheShellHas) {
  for (int signal = 1; signal < 32; ++signal) {
    const std::string name =
        Testing::WitnessLines("bash -c 'kill -l " + std::to_string(signal) + "'").at(0);
    if (signal != SIGIO) {  // it has two names, and the shell prints the other one
      EXPECT_EQ(SignalName(signal), name) << signal;
    }
    EXPECT_EQ(ParseSignal(name), signal) << name;
  }
}

TEST(SignalsTest, NamesRealTimeSignalsByTheirDistanceFromTheFirst) {
  EXPECT_EQ(SignalName(SIGRTMIN), "RTMIN");
  EXPECT_EQ(SignalName(SIGRTMIN + 1), "RTMIN+1");
  EXPECT_EQ(ParseSignal("RTMIN"), SIGRTMIN);
  EXPECT_EQ(ParseSignal("sigrtmin+2"), SIGRTMIN + 2);
  EXPECT_EQ(SignalName(SIGRTMIN - 1), std::to_string(SIGRTMIN - 1)) << "used by the C library";
}

TEST(SignalsTest, AreFoundByNameInEitherCaseAndByNumber) {
  for (const char* const text : {"TERM", "term", "Term", "SIGTERM", "sigterm", "15"}) {
    EXPECT_EQ(ParseSignal(text), SIGTERM) << text;
  }
  EXPECT_EQ(ParseSignal("1"), SIGHUP);
  EXPECT_EQ(ParseSignal("IOT"), SIGABRT);
  EXPECT_EQ(ParseSignal("SIGCLD"), SIGCHLD);
  EXPECT_EQ(ParseSignal("64"), SIGRTMAX);
}

TEST(SignalsTest, AreNotFoundByAnythingElse) {
  for (const char* const text : {"", "0", "-9", "65", "SIG", "SIGSIGTERM", "TERMINATE", "9x",
                                 "RTMIN-1", "RTMIN+99", "99999999999999999999", "TERM,HUP"}) {
    EXPECT_EQ(ParseSignal(text), std::nullopt) << text;
  }
}

TEST(SignalTargetTest, IsARunningProcess) {
  EXPECT_TRUE(SignalTarget::Open(::getpid()));
  EXPECT_FALSE(SignalTarget::Open(kGone));
}

TEST(SignalTargetTest, ReceivesTheSignal) {
  const pid_t process = ::fork();
  if (process == 0) {
    for (;;) {
      ::pause();
    }
  }
  const auto target = SignalTarget::Open(process);
  ASSERT_TRUE(target);
  EXPECT_EQ(target->Send(0), 0);
  EXPECT_EQ(target->Send(SIGKILL), 0);
  int status = 0;
  ASSERT_EQ(::waitpid(process, &status, 0), process);
  EXPECT_EQ(WTERMSIG(status), SIGKILL);
  EXPECT_EQ(target->Send(SIGKILL), ESRCH) << "never another process of that number";
}

TEST(SignalTargetTest, NeedsPermission) {
  const auto target = SignalTarget::Open(::getppid());
  ASSERT_TRUE(target);
  if (::geteuid() != 0) {
    GTEST_SKIP() << "only root can give up a right";
  }
  EXPECT_EQ(Testing::RunInNamespaces(0,
                                     [&target] {
                                       ASSERT_EQ(::setuid(65534), 0);
                                       EXPECT_EQ(target->Send(0), EPERM);
                                     }),
            "");
}

TEST(SignalTargetTest, ReportsTooManyOpenFiles) {
  if (Testing::kIsSanitized) {
    GTEST_SKIP() << "the sanitizer needs descriptors of its own";
  }
  EXPECT_EQ(Testing::RunInNamespaces(
                0,
                [] {
                  const rlimit none = {0, 0};
                  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
                  const long self = ::getpid();
                  EXPECT_THAT([self] { SignalTarget::Open(self); },
                              ThrowsMessage<KestrelException>("Unable to open process " +
                                                              std::to_string(self) +
                                                              ": Too many open files"));
                }),
            "");
}

}  // namespace
}  // namespace Kestrel::Host
