// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "plugins/host/service/MadeUpSystemd.h"
#include "plugins/host/support/HostCall.h"
#include "plugins/host/support/MadeUpMachine.h"
#include "plugins/host/support/PlainUser.h"
#include "support/ScopedEnvironment.h"
#include "support/Witness.h"

// The commands in the namespace "service", and "system timer list", with a simulated systemd.
namespace Kestrel::Testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::StartsWith;

constexpr char kUnits[] =
    R"([{"unit":"auditd.service","load":"not-found","active":"inactive","sub":"dead",)"
    R"("description":"auditd.service"},)"
    R"({"unit":"cron.service","load":"loaded","active":"active","sub":"running",)"
    R"("description":"Regular background program processing daemon"},)"
    R"({"unit":"getty@tty1.service","load":"loaded","active":"activating","sub":"auto-restart",)"
    R"("description":"Getty on tty1"},)"
    R"({"unit":"networking.service","load":"loaded","active":"active","sub":"exited",)"
    R"("description":"Raise network interfaces"},)"
    R"({"unit":"nginx.service","load":"loaded","active":"failed","sub":"failed",)"
    R"("description":"A high performance web server and a reverse proxy server"},)"
    R"({"unit":"ssh.service","load":"loaded","active":"reloading","sub":"reload",)"
    R"("description":"OpenBSD Secure Shell server"}])";

constexpr char kFiles[] =
    R"([{"unit_file":"cron.service","state":"enabled","preset":"enabled"},)"
    R"({"unit_file":"getty@.service","state":"enabled","preset":"enabled"},)"
    R"({"unit_file":"networking.service","state":"enabled","preset":"enabled"},)"
    R"({"unit_file":"nginx.service","state":"disabled","preset":"enabled"},)"
    R"({"unit_file":"rsync.service","state":"disabled","preset":"enabled"},)"
    R"({"unit_file":"ssh.service","state":"enabled","preset":"enabled"},)"
    R"({"unit_file":"sshd.service","state":"alias","preset":null},)"
    R"({"unit_file":"sudo.service","state":"masked","preset":"enabled"}])";

class ServiceCommandsTest : public MadeUpMachineTest {
 protected:
  ServiceCommandsTest() {
    Folder("run/systemd/system");
    systemd_.Answer("list-units", kUnits);
    systemd_.Answer("list-unit-files", kFiles);
    systemd_.Answer("show", "Id=getty@tty1.service\nUnitFileState=enabled\n");
    systemd_.Answer("journal", "");
  }

  static std::vector<std::string> Names(const Parameters& parameters = {}) {
    return CallColumn("service list", "Name", parameters);
  }

  // Returns the fields of one row in the order of their declaration.
  static std::vector<std::string> Fields(const std::string& name) {
    const std::vector<Row> rows = CallRows("service list", {{"name", name}});
    if (rows.size() != 1) {
      return {};
    }
    std::vector<std::string> fields;
    for (const char* const field :
         {"Name", "State", "Sub State", "Boot State", "Source", "Description"}) {
      fields.push_back(rows[0].at(field));
    }
    return fields;
  }

  const ScopedEnvironment zone_{"TZ", "UTC"};
  const MadeUpSystemd systemd_;
};

// ---- service list

TEST_F(ServiceCommandsTest, ListServices) {
  ExpectPrinted("service list",
                "Name        State       Description\n"
                "----------  ----------  -----------\n"
                "auditd      not-found   auditd.service\n"
                "cron        running     Regular background program processing daemon\n"
                "getty@      template    none\n"
                "getty@tty1  activating  Getty on tty1\n"
                "networking  exited      Raise network interfaces\n"
                "nginx       failed      A high performance web server and a reverse proxy server\n"
                "rsync       stopped     none\n"
                "ssh         reloading   OpenBSD Secure Shell server\n"
                "sshd        alias       none\n"
                "sudo        stopped     none\n");
}

TEST_F(ServiceCommandsTest, ListAllFields) {
  RunThere([] {
    EXPECT_THAT(Fields("getty@tty1"), ElementsAre("getty@tty1", "activating", "auto-restart",
                                                  "enabled", "systemd", "Getty on tty1"));
    EXPECT_THAT(Fields("auditd"),
                ElementsAre("auditd", "not-found", "dead", "none", "systemd", "auditd.service"));
    EXPECT_THAT(Fields("sudo"),
                ElementsAre("sudo", "stopped", "none", "masked", "systemd", "none"));
  });
}

TEST_F(ServiceCommandsTest, ListNoEmptyString) {
  systemd_.Answer("list-units", R"([{"unit":"a.service"}])");
  systemd_.Answer("list-unit-files", R"([{"unit_file":"b.service"}])");
  RunThere([] {
    EXPECT_THAT(Fields("a"), ElementsAre("a", "unknown", "none", "none", "systemd", "none"));
    EXPECT_THAT(Fields("b"), ElementsAre("b", "stopped", "none", "none", "systemd", "none"));
  });
}

TEST_F(ServiceCommandsTest, WrapTheDescriptionOnANarrowScreen) {
  RunThere([] {
    EXPECT_EQ(Print("service list", {{"name", "nginx"}}, 40),
              "Name   State   Description\n"
              "-----  ------  -----------\n"
              "nginx  failed  A high performance web \n"
              "               server and a reverse \n"
              "               proxy server\n");
  });
}

TEST_F(ServiceCommandsTest, ListServicesByTheirState) {
  RunThere([] {
    EXPECT_THAT(Names({{"state", "running"}}), ElementsAre("cron"));
    EXPECT_THAT(Names({{"state", "stopped"}}), ElementsAre("rsync", "sudo"));
    EXPECT_THAT(Names({{"state", "FAILED"}, {"state", "Exited"}}),
                ElementsAre("networking", "nginx"));
    EXPECT_THAT(Names({{"state", "maintenance"}}), IsEmpty());
  });
}

TEST_F(ServiceCommandsTest, RefuseAnUnknownState) {
  RunThere([this] {
    EXPECT_THAT(CallErrors("service list", {{"state", "up"}, {"state", "failed"}}),
                ElementsAre("There is no such state: 'up'; --state is one of running, exited, "
                            "reloading, refreshing, activating, deactivating, failed, stopped, "
                            "not-found, template, alias, maintenance, unknown"));
    EXPECT_THAT(systemd_.GetCalls(), IsEmpty());
  });
}

TEST_F(ServiceCommandsTest, ListServicesByTheirName) {
  RunThere([] {
    EXPECT_THAT(Names({{"name", "ssh"}}), ElementsAre("ssh"));
    EXPECT_THAT(Names({{"name", "ssh.service"}}), ElementsAre("ssh"));
    EXPECT_THAT(Names({{"name", "ssh*"}}), ElementsAre("ssh", "sshd"));
    EXPECT_THAT(Names({{"name", "*d.service"}}), ElementsAre("auditd", "sshd"));
    EXPECT_THAT(Names({{"name", "cron"}, {"name", "getty@tty1"}}),
                ElementsAre("cron", "getty@tty1"));
    EXPECT_THAT(Names({{"name", "SSH"}}), IsEmpty());
    EXPECT_THAT(Names({{"name", ".service"}}), IsEmpty());
    EXPECT_THAT(Names({{"name", "s.h"}}), IsEmpty());
  });
}

TEST_F(ServiceCommandsTest, ListServicesByARegularExpression) {
  RunThere([] {
    EXPECT_THAT(Names({{"match", "^s.*d"}}), ElementsAre("sshd", "sudo"));
    EXPECT_THAT(Names({{"match", "tty"}, {"state", "activating"}}), ElementsAre("getty@tty1"));
    EXPECT_THAT(Names({{"match", "nosuch"}}), IsEmpty());
    EXPECT_THAT(CallErrors("service list", {{"match", "("}}), SizeIs(1));
  });
}

TEST_F(ServiceCommandsTest, SortAndLimitServices) {
  RunThere([] {
    EXPECT_THAT(Names({{"sort", "Name"}, {"descending", ""}, {"limit", "2"}}),
                ElementsAre("sudo", "sshd"));
    EXPECT_THAT(Names({{"sort", "Boot State"}, {"limit", "1"}}), ElementsAre("sshd"));
  });
}

TEST_F(ServiceCommandsTest, ShowNamesThatCannotControlTheTerminal) {
  systemd_.Answer("list-units", R"([{"unit":"a\u001b[31m\n.service","load":"loaded",)"
                                R"("active":"active","sub":"\u0007","description":"x\ny\tz"}])");
  systemd_.Answer("list-unit-files", "[]");
  RunThere([] {
    const auto rows = CallRows("service list");
    ASSERT_THAT(rows, SizeIs(1));
    EXPECT_EQ(rows[0].at("Name"), "a\\x1b[31m\\x0a");
    EXPECT_EQ(rows[0].at("Sub State"), "\\x07");
    EXPECT_EQ(rows[0].at("Description"), "x\\x0ay\\x09z");
  });
}

TEST_F(ServiceCommandsTest, ReportThatSystemctlFails) {
  systemd_.Fail("list-units", "Failed to connect to bus: Host is down");
  RunThere([] {
    EXPECT_THAT(CallErrors("service list"),
                ElementsAre("systemctl failed: Failed to connect to bus: Host is down"));
  });
}

// ---- service get

TEST_F(ServiceCommandsTest, ShowOneService) {
  systemd_.Answer("show", ShownUnit("ssh.service", "active", "running", 812));
  systemd_.Answer("journal",
                  "2026-11-22T08:00:02+0000 sshd[812]: Server listening on :: port 22.\n"
                  "2026-11-22T08:00:02+0000 systemd[1]: Started ssh.service.\n");
  ExpectPrinted("service get --name ssh",
                "Service ssh:\n"
                "   Description : OpenBSD Secure Shell server\n"
                "   State       : running\n"
                "   Sub State   : running\n"
                "   Boot State  : enabled\n"
                "   Load State  : loaded\n"
                "   Main Process: 812\n"
                "   Since       : 2026-11-22 08:00:02\n"
                "   Memory      : 1.5 KiB\n"
                "   Source      : systemd\n"
                "   File        : /lib/systemd/system/ssh.service\n"
                "   Log         : \n"
                "2026-11-22 08:00:02 sshd[812]: Server listening on :: port 22.\n"
                "2026-11-22 08:00:02 systemd[1]: Started ssh.service.\n");
}

TEST_F(ServiceCommandsTest, ShowTheSameServiceByBothNames) {
  systemd_.Answer("show", ShownUnit("ssh.service", "active", "running", 812));
  RunThere([] {
    const Row row = CallStruct("service get", {{"name", "ssh"}});
    EXPECT_EQ(row.at("Name"), "ssh");
    EXPECT_EQ(row.at("Memory Bytes"), "1536");
    EXPECT_EQ(CallStruct("service get", {{"name", "ssh.service"}}), row);
  });
}

TEST_F(ServiceCommandsTest, ShowAServiceThatNeverRan) {
  systemd_.Answer("show", "Id=a.service\nLoadState=loaded\nActiveState=inactive\nSubState=dead\n");
  RunThere([] {
    const Row row = CallStruct("service get", {{"name", "a"}});
    EXPECT_EQ(row.at("State"), "stopped");
    EXPECT_EQ(row.at("Boot State"), "none");
    EXPECT_EQ(row.at("Main Process"), "0");
    EXPECT_EQ(row.at("Since"), "unknown");
    EXPECT_EQ(row.at("Memory"), "unknown");
    EXPECT_EQ(row.at("Memory Bytes"), "0");
    EXPECT_EQ(row.at("File"), "none");
    EXPECT_EQ(row.at("Description"), "none");
    EXPECT_EQ(row.at("Log"), "none");
    EXPECT_EQ(row.at("Last Lines"), "");
  });
}

TEST_F(ServiceCommandsTest, ReportWhyLinesOfTheLogAreMissing) {
  systemd_.Answer("show", ShownUnit("ssh.service", "active", "running", 812));
  systemd_.Answer("journal", "2026-11-22T08:00:02+0000 a: mine\n", 0,
                  "Hint: You are currently not seeing messages from other users.\n");
  RunThere([] {
    const Row row = CallStruct("service get", {{"name", "ssh"}});
    EXPECT_EQ(row.at("Log"),
              "(only root and members of the group systemd-journal may read the whole journal)\n"
              "2026-11-22 08:00:02 a: mine");
    EXPECT_EQ(row.at("Last Lines"), "2026-11-22 08:00:02 a: mine");
  });
}

TEST_F(ServiceCommandsTest, ShowLinesThatCannotControlTheTerminal) {
  systemd_.Answer("show", ShownUnit("ssh.service", "active", "running", 812));
  systemd_.Answer("journal", "2026-11-22T08:00:02+0000 a: \x1b[2J\xff\n");
  RunThere([] {
    const Row row = CallStruct("service get", {{"name", "ssh"}});
    EXPECT_EQ(row.at("Last Lines"), "2026-11-22 08:00:02 a: \\x1b[2J\\xff");
    EXPECT_EQ(row.at("Log"), "\n2026-11-22 08:00:02 a: \\x1b[2J\\xff");
  });
}

TEST_F(ServiceCommandsTest, NameAMissingService) {
  systemd_.Answer("show", ShownUnknown("nosuch.service"));
  RunThere([] {
    for (const std::string action : {"get", "start", "stop", "restart", "enable", "disable"}) {
      EXPECT_THAT(CallErrors("service " + action, {{"name", "nosuch"}}),
                  ElementsAre("There is no service 'nosuch'"))
          << action;
      EXPECT_THAT(CallErrors("service " + action, {{"name", "*"}}),
                  ElementsAre("There is no service '*'"))
          << action;
      EXPECT_THAT(CallErrors("service " + action), ElementsAre("Missing required parameter --name"))
          << action;
    }
  });
}

// ---- changes

TEST_F(ServiceCommandsTest, ReportWhatStartingDid) {
  systemd_.Answer("show", ShownUnit("ssh.service", "inactive", "dead", 0));
  systemd_.AnswerAfter("start", ShownUnit("ssh.service", "active", "running", 812));
  ExpectPrinted("service start --name ssh",
                "Service ssh:\n"
                "   State Before       : stopped\n"
                "   State After        : running\n"
                "   Main Process Before: 0\n"
                "   Main Process After : 812\n"
                "   Message            : none\n");
}

TEST_F(ServiceCommandsTest, ReportThatARestartReplacedTheProcess) {
  systemd_.Answer("show", ShownUnit("ssh.service", "active", "running", 812));
  systemd_.AnswerAfter("restart", ShownUnit("ssh.service", "active", "running", 913));
  RunThere([] {
    const Row row = CallStruct("service restart", {{"name", "ssh.service"}});
    EXPECT_EQ(row.at("Name"), "ssh");
    EXPECT_EQ(row.at("Action"), "restart");
    EXPECT_EQ(row.at("State Before"), "running");
    EXPECT_EQ(row.at("State After"), "running");
    EXPECT_EQ(row.at("Main Process Before"), "812");
    EXPECT_EQ(row.at("Main Process After"), "913");
  });
}

TEST_F(ServiceCommandsTest, ReportWhatEnablingDid) {
  systemd_.Answer("show", ShownUnit("ssh.service", "inactive", "dead", 0, "disabled"));
  systemd_.AnswerAfter("enable", ShownUnit("ssh.service", "inactive", "dead", 0, "enabled"));
  systemd_.Do("enable",
              "cp \"$folder/next\" \"$folder/show.out\"; echo 'Created symlink /a -> /b.' >&2");
  ExpectPrinted("service enable --name ssh",
                "Service ssh:\n"
                "   Boot State Before: disabled\n"
                "   Boot State After : enabled\n"
                "   State After      : stopped\n"
                "   Message          : Created symlink /a -> /b.\n");
}

// systemctl succeeds as soon as a simple service is started.
TEST_F(ServiceCommandsTest, ReportAServiceThatFailsRightAfterItsStart) {
  systemd_.Answer("show", ShownUnit("ssh.service", "inactive", "dead", 0));
  systemd_.AnswerAfter("start", ShownUnit("ssh.service", "failed", "failed", 0));
  RunThere([] {
    EXPECT_EQ(CallStruct("service start", {{"name", "ssh"}}).at("State After"), "failed");
  });
}

TEST_F(ServiceCommandsTest, ChangeOneServiceByItsUnit) {
  systemd_.Answer("show", ShownUnit("ssh.service", "active", "running", 812));
  for (const char* const action : {"start", "stop", "restart", "enable", "disable"}) {
    systemd_.Answer(action, "");
  }
  RunThere([this] {
    for (const std::string action : {"start", "stop", "restart", "enable", "disable"}) {
      EXPECT_EQ(CallStruct("service " + action, {{"name", "ssh"}}).at("Action"), action);
      EXPECT_THAT(systemd_.GetCalls(),
                  Contains("--no-ask-password --no-pager " + action + " -- ssh.service"));
    }
  });
}

TEST_F(ServiceCommandsTest, ReportAMissingPermission) {
  systemd_.Answer("show", ShownUnit("ssh.service", "active", "running", 812));
  systemd_.Fail("stop", "Failed to stop ssh.service: Interactive authentication required.");
  RunThere([] {
    const PlainUser user;
    EXPECT_THAT(CallErrors("service stop", {{"name", "ssh"}}),
                ElementsAre("You may not stop the service 'ssh': Failed to stop ssh.service: "
                            "Interactive authentication required."));
  });
}

TEST_F(ServiceCommandsTest, WaitNoLongerThanTheTimeout) {
  systemd_.Answer("show", ShownUnit("ssh.service", "inactive", "dead", 0));
  systemd_.Do("start", "sleep 60");
  RunThere([] {
    EXPECT_THAT(CallErrors("service start", {{"name", "ssh"}, {"timeout", "1"}}),
                ElementsAre(StartsWith("It takes longer than 1 s to start the service 'ssh'")));
    for (const char* const seconds : {"0", "3601", "x"}) {
      EXPECT_THAT(CallErrors("service start", {{"name", "ssh"}, {"timeout", seconds}}), SizeIs(1))
          << seconds;
    }
  });
}

// ---- system timer list

constexpr char kTimers[] =
    R"([{"next":1795392000000000,"left":1,"last":1795305600000000,"passed":1,)"
    R"("unit":"apt-daily.timer","activates":"apt-daily.service"},)"
    R"({"next":null,"left":0,"last":0,"passed":0,"unit":"fstrim.timer",)"
    R"("activates":"fstrim.service"},)"
    R"({"next":1795395600000000,"left":1,"last":0,"passed":0,)"
    R"("unit":"apt-daily-upgrade.timer","activates":null}])";

TEST_F(ServiceCommandsTest, ListTimers) {
  systemd_.Answer("list-timers", kTimers);
  ExpectPrinted("system timer list",
                "Next                 Last                 Unit\n"
                "-------------------  -------------------  ----\n"
                "2026-11-23 00:00:00  2026-11-22 00:00:00  apt-daily.timer\n"
                "none                 never                fstrim.timer\n"
                "2026-11-23 01:00:00  never                apt-daily-upgrade.timer\n");
  if (IsSkipped()) {
    return;
  }
  EXPECT_THAT(systemd_.GetCalls(),
              ElementsAre("list-timers --all --full --no-legend --no-pager --output=json"));
}

TEST_F(ServiceCommandsTest, ListWhatTimersStart) {
  systemd_.Answer("list-timers", kTimers);
  RunThere([] {
    EXPECT_THAT(CallColumn("system timer list", "Activates"),
                ElementsAre("apt-daily.service", "fstrim.service", "none"));
  });
}

TEST_F(ServiceCommandsTest, ListTimersByTheirName) {
  systemd_.Answer("list-timers", kTimers);
  RunThere([] {
    const auto units = [](const Parameters& parameters) {
      return CallColumn("system timer list", "Unit", parameters);
    };
    EXPECT_THAT(units({{"name", "fstrim"}}), ElementsAre("fstrim.timer"));
    EXPECT_THAT(units({{"name", "fstrim.timer"}}), ElementsAre("fstrim.timer"));
    EXPECT_THAT(units({{"name", "apt-*"}}),
                ElementsAre("apt-daily.timer", "apt-daily-upgrade.timer"));
    EXPECT_THAT(units({{"match", "grade$"}}), ElementsAre("apt-daily-upgrade.timer"));
    EXPECT_THAT(units({{"name", "nosuch"}}), IsEmpty());
  });
}

TEST_F(ServiceCommandsTest, ShowTimesInTheZoneOfTheMachine) {
  const ScopedEnvironment zone("TZ", "Asia/Kolkata");
  systemd_.Answer("list-timers", kTimers);
  RunThere([] { EXPECT_EQ(CallColumn("system timer list", "Next").at(0), "2026-11-23 05:30:00"); });
}

TEST_F(ServiceCommandsTest, ListNoTimersWhenThereAreNone) {
  systemd_.Answer("list-timers", "[]");
  RunThere([] { EXPECT_THAT(CallRows("system timer list"), IsEmpty()); });
}

TEST_F(ServiceCommandsTest, ReportTimersThatCannotBeRead) {
  systemd_.Answer("list-timers", "\x1b garbage");
  RunThere([] {
    EXPECT_THAT(CallErrors("system timer list"),
                ElementsAre("systemctl printed something unexpected: '\\x1b garbage'"));
  });
}

// ---- without systemd

class ScriptCommandsTest : public MadeUpMachineTest {};

TEST_F(ScriptCommandsTest, ListTheScriptsOfThisHost) {
  RunThere([] {
    EXPECT_EQ(CallColumn("service list", "Name"),
              WitnessLines("cd /etc/init.d && find . -maxdepth 1 -type f -perm -u+x -printf "
                           "'%f\\n' | grep -v '[.]dpkg-' | LC_ALL=C sort"));
    for (const Row& row : CallRows("service list")) {
      EXPECT_EQ(row.at("Source"), "init.d");
      EXPECT_EQ(row.at("Sub State"), "none");
    }
  });
}

TEST_F(ScriptCommandsTest, ShowOneScript) {
  RunThere([] {
    for (const std::string& name : CallColumn("service list", "Name", {{"limit", "1"}})) {
      const Row row = CallStruct("service get", {{"name", name + ".service"}});
      EXPECT_EQ(row.at("Name"), name);
      EXPECT_EQ(row.at("File"), "/etc/init.d/" + name);
      EXPECT_EQ(row.at("Load State"), "none");
      EXPECT_EQ(row.at("Log"), "(without systemd there is no journal)");
    }
    EXPECT_THAT(CallErrors("service get", {{"name", "nosuch"}}),
                ElementsAre("There is no service 'nosuch'"));
  });
}

TEST_F(ScriptCommandsTest, HaveNoTimers) {
  RunThere([] { EXPECT_THAT(CallRows("system timer list"), IsEmpty()); });
}

}  // namespace
}  // namespace Kestrel::Testing
