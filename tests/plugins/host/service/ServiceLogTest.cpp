// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/service/ServiceLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "plugins/host/service/MadeUpSystemd.h"

namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Testing::MadeUpSystemd;
using ::testing::SizeIs;

class ServiceLogTest : public ::testing::Test {
 protected:
  ServiceLog Read(const std::string& output, int status = 0, const std::string& hint = "") const {
    systemd_.Answer("journal", output, status, hint);
    return ReadServiceLog("ssh.service");
  }

  const MadeUpSystemd systemd_;
};

TEST_F(ServiceLogTest, HasLinesWithTheirTimes) {
  const ServiceLog log = Read(
      "2026-11-22T10:00:00+0000 sshd[812]: Server listening on 0.0.0.0 port 22.\n"
      "2026-11-22T10:00:01+0530 systemd[1]: Started ssh.service.\n");
  EXPECT_THAT(log.lines,
              ElementsAre("2026-11-22 10:00:00 sshd[812]: Server listening on 0.0.0.0 port 22.",
                          "2026-11-22 10:00:01 systemd[1]: Started ssh.service."));
  EXPECT_EQ(log.problem, "");
}

TEST_F(ServiceLogTest, AsksForTheLastLinesOfTheUnit) {
  Read("");
  EXPECT_THAT(systemd_.GetCalls(), ElementsAre("--no-pager --no-hostname --output=short-iso "
                                               "--lines=10 --unit=ssh.service"));
}

TEST_F(ServiceLogTest, KeepsFurtherLinesOfAnEntry) {
  EXPECT_THAT(Read("2026-11-22T10:00:00+0000 a[1]: one\n                              two\n").lines,
              ElementsAre("2026-11-22 10:00:00 a[1]: one", "                              two"));
}

TEST_F(ServiceLogTest, KeepsLinesOfOtherForms) {
  const std::string lines[] = {"",
                               "x",
                               "2026-11-22",
                               "2026-11-22X10:00:00+0000 a: b",
                               "2026-11-22T10-00-00+0000 a: b",
                               "2026-11-22T10:00:00+000"};
  for (const std::string& line : lines) {
    EXPECT_THAT(Read(line + "\n").lines, ElementsAre(line));
  }
}

TEST_F(ServiceLogTest, OmitsTheRemarksOfTheProgram) {
  EXPECT_THAT(Read("-- No entries --\n").lines, IsEmpty());
  EXPECT_THAT(Read("-- Journal begins at Sun 2026-11-22 08:00:00 UTC. --\n"
                   "-- Boot 0123456789abcdef --\n"
                   "2026-11-22T10:00:00+0000 a[1]: -- not a remark --\n")
                  .lines,
              ElementsAre("2026-11-22 10:00:00 a[1]: -- not a remark --"));
}

TEST_F(ServiceLogTest, KeepsAllBytes) {
  EXPECT_THAT(Read("2026-11-22T10:00:00+0000 a: \x1b[31m\xff\n").lines,
              ElementsAre("2026-11-22 10:00:00 a: \x1b[31m\xff"));
}

TEST_F(ServiceLogTest, ReportsThatTheUserMayNotReadAllOfIt) {
  constexpr char kMayNot[] =
      "only root and members of the group systemd-journal may read the whole journal";
  const ServiceLog own =
      Read("2026-11-22T10:00:00+0000 a: mine\n", 0,
           "Hint: You are currently not seeing messages from other users and the system.\n"
           "      Users in groups 'adm', 'systemd-journal' can see all messages.\n");
  EXPECT_THAT(own.lines, SizeIs(1));
  EXPECT_EQ(own.problem, kMayNot);
  const ServiceLog none =
      Read("", 1, "No journal files were opened due to insufficient permissions.\n");
  EXPECT_THAT(none.lines, IsEmpty());
  EXPECT_EQ(none.problem, kMayNot);
}

TEST_F(ServiceLogTest, ReportsThatThereIsNoJournal) {
  EXPECT_EQ(Read("-- No entries --\n", 0, "No journal files were found.\n").problem,
            "there is no journal");
}

TEST_F(ServiceLogTest, ReportsThatThereIsNoProgram) {
  systemd_.Remove("journalctl");
  const ServiceLog log = ReadServiceLog("ssh.service");
  EXPECT_THAT(log.lines, IsEmpty());
  EXPECT_EQ(log.problem, "the program journalctl is not in PATH");
}

TEST_F(ServiceLogTest, ReportsWhyTheProgramFailed) {
  const ServiceLog log = Read("2026-11-22T10:00:00+0000 a: b\n", 1, "Bad message\nTry again\n");
  EXPECT_EQ(log.problem, "journalctl failed: Bad message Try again");
  EXPECT_THAT(log.lines, SizeIs(1));
}

TEST_F(ServiceLogTest, ReportsNoProblemForAnyOtherHint) {
  EXPECT_EQ(Read("", 0, "Journal file x is truncated, ignoring file.\n").problem, "");
}

}  // namespace
}  // namespace Kestrel::Host
