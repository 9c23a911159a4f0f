// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/service/ServiceManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <vector>

#include "kestrel/KestrelException.h"
#include "plugins/host/service/MadeUpSystemd.h"
#include "plugins/host/support/PlainUser.h"
#include "support/ScopedTempDir.h"

namespace Kestrel::Host {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::IsEmpty;
using Testing::MadeUpSystemd;
using Testing::PlainUser;
using Testing::ScopedTempDir;
using Testing::ShownUnit;
using Testing::ShownUnknown;
using ::testing::SizeIs;
using ::testing::StartsWith;
using ::testing::ThrowsMessage;

constexpr std::chrono::seconds kLimit(20);

// ---- with systemd

class SystemdManagerTest : public ::testing::Test {
 protected:
  SystemdManagerTest() : places_{places_folder_.MakeDirectory("systemd"), "/nosuch"} {}

  ServiceManager Manager() const { return ServiceManager(places_); }

  // Expects a change of the service ssh to fail with `message`.
  void ExpectFailure(const std::string& action, const std::string& words,
                     const std::string& message) const {
    systemd_.Answer("show", ShownUnit("ssh.service", "inactive", "dead", 0));
    systemd_.Fail(action, words);
    EXPECT_THAT([&] { Manager().Change(action, "ssh", kLimit); },
                ThrowsMessage<KestrelException>(message));
  }

  const ScopedTempDir places_folder_;
  const ServicePlaces places_;
  const MadeUpSystemd systemd_;
};

TEST_F(SystemdManagerTest, IsSystemdWhileItsFolderExists) {
  EXPECT_TRUE(Manager().IsSystemd());
  EXPECT_FALSE(ServiceManager({places_folder_.GetPath("nosuch"), "/nosuch"}).IsSystemd());
  EXPECT_FALSE(ServiceManager({places_folder_.Write("file", ""), "/nosuch"}).IsSystemd());
}

TEST_F(SystemdManagerTest, ListsUnits) {
  systemd_.Answer("list-units", "[]");
  systemd_.Answer("list-unit-files", R"([{"unit_file":"a.service","state":"static"}])");
  const auto services = Manager().List();
  ASSERT_THAT(services, SizeIs(1));
  EXPECT_EQ(services[0].name, "a");
  EXPECT_EQ(services[0].source, kSystemd);
}

TEST_F(SystemdManagerTest, FindsAServiceByBothNames) {
  systemd_.Answer("show", ShownUnit("ssh.service", "active", "running", 812));
  EXPECT_EQ(Manager().Get("ssh").mainProcess, 812);
  EXPECT_EQ(Manager().Get("ssh.service").mainProcess, 812);
}

TEST_F(SystemdManagerTest, ReportsAnUnknownServiceByItsName) {
  systemd_.Answer("show", ShownUnknown("nosuch.service"));
  EXPECT_THAT([this] { Manager().Get("nosuch"); },
              ThrowsMessage<KestrelException>("There is no service 'nosuch'"));
  EXPECT_THAT([this] { Manager().Change("start", "nosuch.service", kLimit); },
              ThrowsMessage<KestrelException>("There is no service 'nosuch.service'"));
}

TEST_F(SystemdManagerTest, DoesNotQueryInvalidNames) {
  EXPECT_THAT([this] { Manager().Get("ssh*"); },
              ThrowsMessage<KestrelException>("There is no service 'ssh*'"));
  EXPECT_THAT([this] { Manager().Change("stop", "*", kLimit); },
              ThrowsMessage<KestrelException>("There is no service '*'"));
  EXPECT_THAT([this] { Manager().Change("stop", "", kLimit); },
              ThrowsMessage<KestrelException>("There is no service ''"));
  EXPECT_THAT([this] { Manager().Get("a\x1b\n"); },
              ThrowsMessage<KestrelException>("There is no service 'a\\x1b\\x0a'"));
  EXPECT_THAT(systemd_.GetCalls(), IsEmpty());
}

TEST_F(SystemdManagerTest, RefusesTheNameOfATemplate) {
  for (const char* const name : {"getty@", "getty@.service"}) {
    EXPECT_THAT([&] { Manager().Get(name); },
                ThrowsMessage<KestrelException>(
                    "The service '" + std::string(name) +
                    "' is a template: name a service that is made from it, such as 'getty@NAME'"));
  }
  EXPECT_THAT(systemd_.GetCalls(), IsEmpty());
}

TEST_F(SystemdManagerTest, ReportsAMissingProgram) {
  systemd_.Remove("systemctl");
  constexpr char kMissing[] = "systemd runs here, but its program systemctl is not in PATH";
  EXPECT_THAT([this] { Manager().List(); }, ThrowsMessage<KestrelException>(kMissing));
  EXPECT_THAT([this] { Manager().Get("ssh"); }, ThrowsMessage<KestrelException>(kMissing));
}

TEST_F(SystemdManagerTest, ChangesAService) {
  systemd_.Answer("show", ShownUnit("ssh.service", "inactive", "dead", 0, "disabled"));
  systemd_.AnswerAfter("start", ShownUnit("ssh.service", "active", "running", 4711));
  const ServiceChange change = Manager().Change("start", "ssh", kLimit);
  EXPECT_EQ(change.before.service.state, "stopped");
  EXPECT_EQ(change.before.service.bootState, "disabled");
  EXPECT_EQ(change.before.mainProcess, 0);
  EXPECT_EQ(change.after.service.state, "running");
  EXPECT_EQ(change.after.service.bootState, "enabled");
  EXPECT_EQ(change.after.mainProcess, 4711);
  EXPECT_EQ(change.message, "");
  EXPECT_THAT(systemd_.GetCalls(),
              ElementsAre(StartsWith("show "), "--no-ask-password --no-pager start -- ssh.service",
                          StartsWith("show ")));
}

TEST_F(SystemdManagerTest, PassesTheActionToSystemctl) {
  systemd_.Answer("show", ShownUnit("ssh.service", "active", "running", 1));
  for (const std::string action : {"start", "stop", "restart", "enable", "disable"}) {
    systemd_.Answer(action, "");
    Manager().Change(action, "ssh.service", kLimit);
    EXPECT_THAT(systemd_.GetCalls(),
                Contains("--no-ask-password --no-pager " + action + " -- ssh.service"));
  }
}

TEST_F(SystemdManagerTest, ReturnsTheMessagesOfSystemctl) {
  systemd_.Answer("show", ShownUnit("ssh.service", "active", "running", 1));
  systemd_.Answer("enable", "a line\n", 0,
                  "Created symlink /etc/a -> /lib/a.\nCreated symlink /etc/b -> /lib/b.\n");
  EXPECT_EQ(Manager().Change("enable", "ssh", kLimit).message,
            "a line Created symlink /etc/a -> /lib/a. Created symlink /etc/b -> /lib/b.");
}

// An alias may no longer exist after the change.
TEST_F(SystemdManagerTest, ChangesTheServiceThatAnAliasStandsFor) {
  systemd_.Answer("show", ShownUnit("ssh.service", "active", "running", 7));
  systemd_.Answer("disable", "");
  EXPECT_EQ(Manager().Change("disable", "sshd", kLimit).after.service.name, "ssh");
  const auto calls = systemd_.GetCalls();
  ASSERT_THAT(calls, SizeIs(3));
  EXPECT_THAT(calls[0], EndsWith(" -- sshd.service"));
  EXPECT_THAT(calls[1], EndsWith(" -- ssh.service"));
  EXPECT_THAT(calls[2], EndsWith(" -- ssh.service"));
}

// The unit ran without a file, and systemd forgot it when it stopped.
TEST_F(SystemdManagerTest, StopsAServiceWithoutAFile) {
  systemd_.Answer("show", ShownUnit("ssh.service", "active", "running", 7, "", "not-found"));
  systemd_.AnswerAfter("stop", ShownUnknown("ssh.service"));
  const ServiceChange change = Manager().Change("stop", "ssh", kLimit);
  EXPECT_EQ(change.before.service.state, "running");
  EXPECT_EQ(change.after.service.state, "not-found");
}

TEST_F(SystemdManagerTest, ReportsAFailureWithTheMessageOfSystemctl) {
  ExpectFailure("start",
                "Job for ssh.service failed because the control process exited with error code.\n"
                "See \"systemctl status ssh.service\" and \"journalctl -xeu ssh.service\" for "
                "details.",
                "Unable to start the service 'ssh': Job for ssh.service failed because the control "
                "process exited with error code. See \"systemctl status ssh.service\" and "
                "\"journalctl -xeu ssh.service\" for details.");
  ExpectFailure("start", "Failed to start ssh.service: Unit ssh.service is masked.",
                "Unable to start the service 'ssh': Failed to start ssh.service: Unit ssh.service "
                "is masked.");
  ExpectFailure("stop", "\x1b[31mno\xff", "Unable to stop the service 'ssh': \\x1b[31mno\\xff");
  ExpectFailure("restart", "", "Unable to restart the service 'ssh': exit status 1");
}

TEST_F(SystemdManagerTest, ReportsAMissingPermission) {
  ExpectFailure("start",
                "Failed to start ssh.service: Interactive authentication required.\n"
                "See system logs and 'systemctl status ssh.service' for details.",
                "You may not start the service 'ssh': Failed to start ssh.service: Interactive "
                "authentication required. See system logs and 'systemctl status ssh.service' for "
                "details.");
  ExpectFailure("enable", "Failed to enable unit: Access denied",
                "You may not enable the service 'ssh': Failed to enable unit: Access denied");
  ExpectFailure("disable", "Failed to disable unit: Permission denied",
                "You may not disable the service 'ssh': Failed to disable unit: Permission denied");
}

TEST_F(SystemdManagerTest, DoesNotWaitForAChangeForever) {
  systemd_.Answer("show", ShownUnit("ssh.service", "inactive", "dead", 0));
  systemd_.Do("start", "sleep 60");
  EXPECT_THAT([this] { Manager().Change("start", "ssh", std::chrono::seconds(1)); },
              ThrowsMessage<KestrelException>(
                  "It takes longer than 1 s to start the service 'ssh'; the change may still "
                  "go on, see 'service get'"));
}

TEST_F(SystemdManagerTest, ReportsAStateThatCannotBeReadAfterAChange) {
  systemd_.Answer("show", ShownUnit("ssh.service", "active", "running", 1));
  systemd_.Answer("restart", "");
  systemd_.Do("restart",
              "echo 'Connection reset' >\"$folder/show.err\"; echo 1 "
              ">\"$folder/show.status\"");
  EXPECT_THAT([this] { Manager().Change("restart", "ssh", kLimit); },
              ThrowsMessage<KestrelException>("systemctl failed: Connection reset"));
}

// ---- with scripts

class ScriptManagerTest : public ::testing::Test {
 protected:
  ScriptManagerTest() : places_{"/nosuch", files_.MakeDirectory("init.d")} {
    EXPECT_EQ(::chmod(files_.GetPath().c_str(), 0755), 0);
    Add("init.d/ssh", "case $1 in start) touch '" + Running() +
                          "'; echo 'Starting it: ssh.' ;;\n"
                          "stop) rm '" +
                          Running() +
                          "' ;;\n"
                          "restart) echo 'no restart' >&2; exit 1 ;;\n"
                          "status) if ! [ -e '" +
                          Running() + "' ]; then exit 3; fi ;; esac");
  }

  void Add(const std::string& path, const std::string& script) const {
    EXPECT_EQ(::chmod(files_.Write(path, "#!/bin/sh\n" + script + "\n").c_str(), 0755), 0);
  }

  std::string Running() const { return files_.GetPath("running"); }
  ServiceManager Manager() const { return ServiceManager(places_); }

  // Only root may change services.
  void SetUp() override {
    if (::geteuid() != 0) {
      GTEST_SKIP() << "scripts start services as root only";
    }
  }

  const ScopedTempDir files_;
  const ServicePlaces places_;
};

TEST_F(ScriptManagerTest, ListsScripts) {
  EXPECT_FALSE(Manager().IsSystemd());
  const auto services = Manager().List();
  ASSERT_THAT(services, SizeIs(1));
  EXPECT_EQ(services[0].name, "ssh");
  EXPECT_EQ(services[0].state, "stopped");
  EXPECT_EQ(services[0].source, kInitScripts);
}

TEST_F(ScriptManagerTest, FindsAServiceByBothNames) {
  EXPECT_EQ(Manager().Get("ssh").file, places_.scripts + "/ssh");
  EXPECT_EQ(Manager().Get("ssh.service").file, places_.scripts + "/ssh");
}

TEST_F(ScriptManagerTest, ReportsAnUnknownService) {
  for (const std::string name : {"nosuch", "ssh*", "../init.d/ssh", "/bin/sh", ".."}) {
    EXPECT_THAT([&] { Manager().Get(name); },
                ThrowsMessage<KestrelException>("There is no service '" + name + "'"));
    EXPECT_THAT([&] { Manager().Change("start", name, kLimit); },
                ThrowsMessage<KestrelException>("There is no service '" + name + "'"));
  }
}

TEST_F(ScriptManagerTest, StartsAndStopsAService) {
  const ServiceChange start = Manager().Change("start", "ssh.service", kLimit);
  EXPECT_EQ(start.before.service.state, "stopped");
  EXPECT_EQ(start.after.service.state, "running");
  EXPECT_EQ(start.message, "Starting it: ssh.");
  const ServiceChange stop = Manager().Change("stop", "ssh", kLimit);
  EXPECT_EQ(stop.before.service.state, "running");
  EXPECT_EQ(stop.after.service.state, "stopped");
  EXPECT_EQ(stop.message, "");
}

TEST_F(ScriptManagerTest, ReportsAFailure) {
  EXPECT_THAT([this] { Manager().Change("restart", "ssh", kLimit); },
              ThrowsMessage<KestrelException>("Unable to restart the service 'ssh': no restart"));
}

TEST_F(ScriptManagerTest, DoesNotWaitForever) {
  Add("init.d/slow", "[ \"$1\" != start ] || sleep 60");
  EXPECT_THAT([this] { Manager().Change("start", "slow", std::chrono::seconds(1)); },
              ThrowsMessage<KestrelException>(StartsWith("It takes longer than 1 s to start")));
}

TEST_F(ScriptManagerTest, RefusesOtherUsersBeforeItDoesAnything) {
  const PlainUser user;
  for (const std::string action : {"start", "stop", "restart", "enable", "disable"}) {
    EXPECT_THAT([&] { Manager().Change(action, "ssh", kLimit); },
                ThrowsMessage<KestrelException>("You may not " + action +
                                                " the service 'ssh': only root may"));
  }
  EXPECT_NE(::access(Running().c_str(), F_OK), 0);
}

TEST_F(ScriptManagerTest, EnablesAServiceByRunningUpdateRcD) {
  const std::string tools = files_.MakeDirectory("tools");
  files_.MakeDirectory("rc2.d");
  Add("tools/update-rc.d", "/bin/echo \"$*\" >>'" + files_.GetPath("words") +
                               "'\ncase $2 in enable) /bin/ln -s x '" +
                               files_.GetPath("rc2.d/S01ssh") + "' ;; *) /bin/rm '" +
                               files_.GetPath("rc2.d/S01ssh") + "' ;; esac");
  const Testing::ScopedEnvironment path("PATH", tools);
  const ServiceChange enabled = Manager().Change("enable", "ssh", kLimit);
  EXPECT_EQ(enabled.before.service.bootState, "disabled");
  EXPECT_EQ(enabled.after.service.bootState, "enabled");
  EXPECT_EQ(Manager().Change("disable", "ssh", kLimit).after.service.bootState, "disabled");
  EXPECT_EQ(files_.Read("words"), "ssh enable\nssh disable\n");
}

TEST_F(ScriptManagerTest, ReportsThatUpdateRcDIsMissing) {
  const Testing::ScopedEnvironment path("PATH", files_.GetPath("nosuch"));
  EXPECT_THAT([this] { Manager().Change("enable", "ssh", kLimit); },
              ThrowsMessage<KestrelException>(
                  "Unable to enable the service 'ssh': the program update-rc.d (package "
                  "init-system-helpers) is not in PATH"));
}

// Both managers use the same words for the same states.
TEST_F(ScriptManagerTest, AgreesWithSystemdOnTheStates) {
  const MadeUpSystemd systemd;
  const ServiceManager other({files_.MakeDirectory("systemd"), "/nosuch"});
  const struct {
    const char* script;
    const char* active;
    const char* sub;
  } states[] = {{"exit 0", "active", "running"},
                {"exit 3", "inactive", "dead"},
                {"exit 1", "failed", "failed"}};
  for (const auto& each : states) {
    Add("init.d/each", std::string(each.script) + " # status");
    systemd.Answer("show", ShownUnit("each.service", each.active, each.sub, 0));
    EXPECT_EQ(Manager().Get("each").service.state, other.Get("each").service.state) << each.script;
  }
}

}  // namespace
}  // namespace Kestrel::Host
