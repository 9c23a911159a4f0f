// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "plugins/host/support/HostCall.h"
#include "plugins/host/support/HostRun.h"
#include "plugins/host/support/Namespaces.h"
#include "plugins/host/system/ScopedProcess.h"
#include "support/Witness.h"

// The command "system process signal". These tests signal only the test program itself and
// processes that it has started.
namespace Kestrel::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr char kPath[] = "system process signal";

bool IsAlive(const ScopedProcess& process) { return ::kill(process.GetNumber(), 0) == 0; }

TEST(SystemProcessSignalTest, EndsAProcessByItsNumber) {
  ScopedProcess process("kestrel-one");
  const std::vector<Row> rows = CallRows(kPath, {{"id", process.GetId()}});
  ASSERT_EQ(rows.size(), 1u);
  Row row = rows[0];
  EXPECT_EQ(row.at("Command"),
            WitnessLines("ps -ww -p " + std::to_string(::getpid()) + " -o args=").at(0));
  row.erase("Command");
  EXPECT_EQ(row, Row({{"Id", process.GetId()},
                      {"User", WitnessLines("id -un").at(0)},
                      {"Signal", "TERM"},
                      {"Signal Number", "15"},
                      {"Outcome", "sent"},
                      {"Name", "kestrel-one"}}));
  EXPECT_EQ(process.WaitUntilItIsKilled(), SIGTERM);
}

TEST(SystemProcessSignalTest, SendsTheSignalThatTheUserNames) {
  for (const std::string signal : {"USR1", "usr1", "SIGUSR1", "10"}) {
    ScopedProcess process("kestrel-one");
    EXPECT_THAT(CallColumn(kPath, "Signal", {{"id", process.GetId()}, {"signal", signal}}),
                ElementsAre("USR1"));
    EXPECT_EQ(process.WaitUntilItIsKilled(), SIGUSR1) << signal;
  }
}

TEST(SystemProcessSignalTest, SignalsEveryProcessWithExactlyTheGivenName) {
  ScopedProcess first("kestrel-two");
  ScopedProcess second("kestrel-two");
  const ScopedProcess other("kestrel-twofold");
  EXPECT_THAT(CallColumn(kPath, "Id", {{"name", "kestrel-two"}, {"signal", "KILL"}}),
              ::testing::UnorderedElementsAre(first.GetId(), second.GetId()));
  EXPECT_EQ(first.WaitUntilItIsKilled(), SIGKILL);
  EXPECT_EQ(second.WaitUntilItIsKilled(), SIGKILL);
  EXPECT_TRUE(IsAlive(other));
}

TEST(SystemProcessSignalTest, AStarInANameIsAnOrdinaryCharacter) {
  const ScopedProcess process("kestrel-three");
  EXPECT_THAT(CallErrors(kPath, {{"name", "kestrel-thre*"}}),
              ElementsAre("There is no process 'kestrel-thre*'"));
  EXPECT_TRUE(IsAlive(process));
  ScopedProcess starred("kestrel-*");
  EXPECT_THAT(CallColumn(kPath, "Id", {{"name", "kestrel-*"}}), ElementsAre(starred.GetId()));
  EXPECT_EQ(starred.WaitUntilItIsKilled(), SIGTERM);
}

TEST(SystemProcessSignalTest, SignalsAProcessOnceEvenIfItIsNamedTwice) {
  const ScopedProcess process("kestrel-four");
  const std::string id = process.GetId();
  EXPECT_THAT(CallColumn(kPath, "Id", {{"id", id}, {"id", id}, {"signal", "CONT"}}),
              ElementsAre(id));
  EXPECT_THAT(CallColumn(kPath, "Id",
                         {{"name", "kestrel-four"}, {"name", "kestrel-four"}, {"signal", "CONT"}}),
              ElementsAre(id));
}

TEST(SystemProcessSignalTest, SignalsNoneIfOneIsMissing) {
  const ScopedProcess process("kestrel-five");
  EXPECT_THAT(CallErrors(kPath, {{"id", process.GetId()}, {"id", "4194304"}}),
              ElementsAre("There is no process 4194304"));
  EXPECT_THAT(CallErrors(kPath, {{"name", "kestrel-five"}, {"name", "kestrel-nowhere"}}),
              ElementsAre("There is no process 'kestrel-nowhere'"));
  EXPECT_TRUE(IsAlive(process));
}

TEST(SystemProcessSignalTest, SignalsProcessesOfTheNamedUserOnly) {
  ScopedProcess process("kestrel-six");
  const std::string user = WitnessLines("id -un").at(0);
  EXPECT_THAT(CallErrors(kPath, {{"name", "kestrel-six"}, {"user", "nobody-else"}}),
              ElementsAre("There is no process 'kestrel-six' of that user"));
  EXPECT_THAT(CallErrors(kPath, {{"id", process.GetId()}, {"user", "nobody-else"}}),
              ElementsAre("The user of process " + process.GetId() + " (kestrel-six) is " + user));
  EXPECT_TRUE(IsAlive(process));
  EXPECT_THAT(CallColumn(kPath, "User", {{"name", "kestrel-six"}, {"user", user}}),
              ElementsAre(user));
  EXPECT_EQ(process.WaitUntilItIsKilled(), SIGTERM);
}

TEST(SystemProcessSignalTest, RefusesTheFirstProcessAndItselfUnlessForced) {
  const std::string init = WitnessLines("ps -p 1 -o comm=").at(0);
  EXPECT_THAT(
      CallErrors(kPath, {{"id", "1"}, {"signal", "CONT"}}),
      ElementsAre("All other processes depend on process 1 (" + init + "); --force signals it"));
  const std::string self = std::to_string(::getpid());
  const std::string name = WitnessLines("ps -p " + self + " -o comm=").at(0);
  EXPECT_THAT(
      CallErrors(kPath, {{"id", self}, {"signal", "CONT"}}),
      ElementsAre("This program is process " + self + " (" + name + "); --force signals it"));
  EXPECT_THAT(CallColumn(kPath, "Id", {{"id", self}, {"signal", "CONT"}, {"force", ""}}),
              ElementsAre(self));
}

TEST(SystemProcessSignalTest, ANameNeverMeansTheProgramItself) {
  EXPECT_EQ(RunInNamespaces(0,
                            [] {
                              ASSERT_EQ(::prctl(PR_SET_NAME, "kestrel-seven"), 0);
                              EXPECT_THAT(CallErrors(kPath, {{"name", "kestrel-seven"}}),
                                          ElementsAre("There is no process 'kestrel-seven'"));
                            }),
            "");
}

TEST(SystemProcessSignalTest, NeedsPermission) {
  if (::geteuid() != 0) {
    GTEST_SKIP() << "only root can give up a right";
  }
  const ScopedProcess process("kestrel-\x1b[8");
  GetDispatcher();  // loads the plug-in, which the ordinary user may not be allowed to read
  EXPECT_EQ(RunInNamespaces(0,
                            [&process] {
                              ASSERT_EQ(::setuid(65534), 0);
                              EXPECT_THAT(
                                  CallErrors(kPath, {{"id", process.GetId()}}),
                                  ElementsAre("You do not have permission to signal process " +
                                              process.GetId() + " (kestrel-\\x1b[8) of root"));
                            }),
            "");
  EXPECT_TRUE(IsAlive(process));
}

TEST(SystemProcessSignalTest, PrintsWhatWasSignalled) {
  ScopedProcess process("kestrel-nine");
  const std::string id = process.GetId();
  const std::string user = WitnessLines("id -un").at(0);
  const auto pad = [](const std::string& text, std::size_t width) {
    return text + std::string(width > text.size() ? width - text.size() : 0, ' ');
  };
  const VexilResult result = HostRun({"system", "process", "signal", "--id=" + id}).Run();
  EXPECT_EQ(result.out, pad("Id", id.size()) + "  " + pad("User", user.size()) +
                            "  Signal  Outcome  Name\n" + std::string(id.size(), '-') + "  " +
                            std::string(std::max<std::size_t>(4, user.size()), '-') +
                            "  ------  -------  ----\n" + id + "  " + pad(user, 4) +
                            "  TERM    sent     kestrel-nine\n");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(process.WaitUntilItIsKilled(), SIGTERM);
}

std::shared_ptr<AutoCli::Command> FindProcessCommand(const std::string& name) {
  return std::dynamic_pointer_cast<AutoCli::Command>(GetDispatcher()
                                                         .GetRootNamespace()
                                                         ->GetNamespaceNode("system")
                                                         ->GetNamespaceNode("process")
                                                         ->GetNamespaceNode(name));
}

TEST(SystemProcessSignalTest, SaysThatItChangesSomething) {
  EXPECT_EQ(FindProcessCommand("signal")->GetMetaData().at("changes"), "true");
}

TEST(SystemProcessSignalTest, DescribesNamesAsTheListDoes) {
  const auto describe = [](const std::string& command) {
    const auto list = std::dynamic_pointer_cast<MetaObj::MetaList>(
        FindProcessCommand(command)->GetOutputSpec()->GetRootObject());
    return list->GetListStructure()->GetFieldDocumentation("Name");
  };
  EXPECT_EQ(describe("signal"), describe("list"));
}

// A signal as the user writes it, and the signal that must then end the process, according to the
// kernel.
struct EndCase {
  const char* text;
  int signal;
};

const EndCase kEnds[] = {{"HUP", SIGHUP},   {"INT", SIGINT},    {"QUIT", SIGQUIT},
                         {"KILL", SIGKILL}, {"USR2", SIGUSR2},  {"ALRM", SIGALRM},
                         {"SEGV", SIGSEGV}, {"sigsys", SIGSYS}, {"3", SIGQUIT},
                         {"RTMIN", 34},     {"rtmin+5", 39},    {"64", 64}};

class SignalEndTest : public ::testing::TestWithParam<EndCase> {};

TEST_P(SignalEndTest, IsCausedByTheGivenSignal) {
  ScopedProcess process("kestrel-ten");
  const Row row = CallRows(kPath, {{"id", process.GetId()}, {"signal", GetParam().text}}).at(0);
  EXPECT_EQ(row.at("Signal Number"), std::to_string(GetParam().signal));
  EXPECT_EQ(process.WaitUntilItIsKilled(), GetParam().signal);
}

INSTANTIATE_TEST_SUITE_P(Signals, SignalEndTest, ::testing::ValuesIn(kEnds), [](const auto& test) {
  std::string name = test.param.text;
  std::replace(name.begin(), name.end(), '+', '_');
  return name;
});

TEST(SystemProcessSignalTest, StopsAndContinuesAProcess) {
  const ScopedProcess process("kestrel-eleven");
  process.WaitUntilItSleeps();
  const auto state = [&process] {
    return CallColumn("system process list", "State", {{"id", process.GetId()}});
  };
  CallRows(kPath, {{"id", process.GetId()}, {"signal", "STOP"}});
  ASSERT_EQ(::waitpid(process.GetNumber(), nullptr, WUNTRACED), process.GetNumber());
  EXPECT_THAT(state(), ElementsAre("stopped"));
  CallRows(kPath, {{"id", process.GetId()}, {"signal", "CONT"}});
  process.WaitUntilItSleeps();
  EXPECT_THAT(state(), ElementsAre("sleeping"));
}

TEST(SystemProcessSignalTest, AZombieReceivesSignalsWithoutEffect) {
  const ScopedProcess zombie("kestrel-twelve", true);
  EXPECT_THAT(CallColumn(kPath, "Outcome", {{"id", zombie.GetId()}}), ElementsAre("sent"));
  EXPECT_THAT(CallColumn("system process list", "State", {{"id", zombie.GetId()}}),
              ElementsAre("zombie"));
}

TEST(SystemProcessSignalTest, ReportsAllMistakesOfACall) {
  EXPECT_THAT(CallErrors(kPath, {{"id", "4194303"}, {"id", "1"}, {"id", "4194304"}}),
              ElementsAre("There is no process 4194303", "There is no process 4194304",
                          ::testing::StartsWith("All other processes depend on process 1 (")));
}

TEST(SystemProcessSignalTest, PrintsTheNameAndTheNumberInSeveralFormats) {
  for (const std::string format : {"json", "xml", "python", "simple"}) {
    ScopedProcess process("kestrel-last");
    const VexilResult result = HostRun({"--formatter=" + format, "system", "process", "signal",
                                        "--name=kestrel-last", "--signal=USR1"})
                                   .Run();
    ASSERT_EQ(result.status, 0) << format;
    EXPECT_THAT(result.out, ::testing::HasSubstr("kestrel-last")) << format;
    EXPECT_THAT(result.out, ::testing::HasSubstr(process.GetId())) << format;
    EXPECT_EQ(process.WaitUntilItIsKilled(), SIGUSR1) << format;
  }
}

}  // namespace
}  // namespace Kestrel::Testing
