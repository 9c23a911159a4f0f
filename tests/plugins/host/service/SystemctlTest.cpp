// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/service/Systemctl.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "kestrel/KestrelException.h"
#include "plugins/host/service/MadeUpSystemd.h"

namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using ::testing::Lt;
using Testing::MadeUpSystemd;
using ::testing::ThrowsMessage;

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds kShort(200);
// A limit that is shorter than the time for which the slow programs of these tests would run.
constexpr std::chrono::seconds kSoon(20);

ProgramResult Failed(const std::string& errorOutput, int status = 1) {
  ProgramResult result;
  result.status = status;
  result.errorOutput = errorOutput;
  return result;
}

TEST(OnOneLineTest, JoinsLines) {
  EXPECT_EQ(OnOneLine("a\nb  c\n"), "a b  c");
  EXPECT_EQ(OnOneLine("\n  a \r\n\n\tb\n\n"), "a b");
  EXPECT_EQ(OnOneLine(""), "");
  EXPECT_EQ(OnOneLine("\n \n"), "");
}

TEST(FailureWordsTest, AreTheWholeMessageOfTheProgram) {
  EXPECT_EQ(FailureWords(Failed(
                "Warning: The unit file of a.service changed on disk.\n"
                "Job for a.service failed because the control process exited with error code.\n"
                "See \"systemctl status a.service\" for details.\n")),
            "Warning: The unit file of a.service changed on disk. Job for a.service failed because "
            "the control process exited with error code. See \"systemctl status a.service\" for "
            "details.");
}

TEST(FailureWordsTest, AreTheStatusIfThereIsNoMessage) {
  EXPECT_EQ(FailureWords(Failed("", 4)), "exit status 4");
  EXPECT_EQ(FailureWords(Failed(" \n", 137)), "exit status 137");
}

TEST(FailureWordsTest, CannotControlTheTerminal) {
  EXPECT_EQ(FailureWords(Failed("\x1b[2Jgone\a \xff\n")), "\\x1b[2Jgone\\x07 \\xff");
}

TEST(FailureWordsTest, AreCutTo1000BytesBeforeTheyAreEscaped) {
  EXPECT_EQ(FailureWords(Failed(std::string(5000, 'x'))), std::string(1000, 'x'));
  // The remaining byte of a truncated character is escaped.
  EXPECT_EQ(FailureWords(Failed(std::string(999, 'x') + "\xc3\xa9")),
            std::string(999, 'x') + "\\xc3");
}

TEST(FailureWordsTest, ReportATimeout) {
  ProgramResult result = Failed("still at it\n", 137);
  result.isTimedOut = true;
  EXPECT_EQ(FailureWords(result), "it did not finish in time");
}

TEST(SystemctlTest, ReturnsWhatTheProgramPrints) {
  const MadeUpSystemd systemd;
  systemd.Answer("list-units", "[]\n", 0, "a warning\n");
  EXPECT_EQ(Systemctl().Ask({"list-units", "--all"}), "[]\n");
  EXPECT_THAT(systemd.GetCalls(), ElementsAre("list-units --all"));
}

TEST(SystemctlTest, ReportsAFailureWithTheMessageOfTheProgram) {
  const MadeUpSystemd systemd;
  systemd.Fail("show", "Failed to connect to bus: Connection refused");
  EXPECT_THAT([] { Systemctl().Ask({"show"}); },
              ThrowsMessage<KestrelException>(
                  "systemctl failed: Failed to connect to bus: Connection refused"));
}

// Output before a failure could be mistaken for the complete answer.
TEST(SystemctlTest, ReturnsNothingIfTheProgramFails) {
  const MadeUpSystemd systemd;
  systemd.Answer("list-units", "[]", 3);
  EXPECT_THAT([] { Systemctl().Ask({"list-units"}); },
              ThrowsMessage<KestrelException>("systemctl failed: exit status 3"));
}

TEST(SystemctlTest, MayBeEndedByASignal) {
  const MadeUpSystemd systemd;
  systemd.Do("show", "kill -KILL $$");
  EXPECT_THAT([] { Systemctl().Ask({"show"}); },
              ThrowsMessage<KestrelException>("systemctl failed: exit status 137"));
}

TEST(SystemctlTest, IsNotAwaitedForever) {
  const MadeUpSystemd systemd;
  systemd.Do("show", "sleep 60");
  const Clock::time_point start = Clock::now();
  EXPECT_THAT([] { Systemctl(kShort).Ask({"show"}); },
              ThrowsMessage<KestrelException>("systemctl failed: it did not finish in time"));
  EXPECT_THAT(Clock::now() - start, Lt(kSoon));
}

TEST(SystemctlTest, MustBeInPath) {
  const MadeUpSystemd systemd;
  systemd.Remove("systemctl");
  EXPECT_THAT([] { Systemctl(); },
              ThrowsMessage<KestrelException>(
                  "systemd runs here, but its program systemctl is not in PATH"));
}

TEST(SystemctlTest, ChangesAUnitWithoutAskingForAPassword) {
  const MadeUpSystemd systemd;
  systemd.Answer("stop", "", 5, "Unit a.service not loaded.\n");
  const ProgramResult result = Systemctl().Change("stop", "a.service", kSoon);
  EXPECT_EQ(result.status, 5);
  EXPECT_EQ(result.errorOutput, "Unit a.service not loaded.\n");
  EXPECT_FALSE(result.isTimedOut);
  EXPECT_THAT(systemd.GetCalls(), ElementsAre("--no-ask-password --no-pager stop -- a.service"));
}

TEST(SystemctlTest, HasALimitOfItsOwnForChanges) {
  const MadeUpSystemd systemd;
  systemd.Do("start", "sleep 60");
  systemd.Do("restart", "sleep 0.5");
  EXPECT_TRUE(Systemctl().Change("start", "a.service", kShort).isTimedOut);
  EXPECT_EQ(Systemctl(kShort).Change("restart", "a.service", kSoon).status, 0);
}

}  // namespace
}  // namespace Kestrel::Host
