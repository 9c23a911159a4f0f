// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/service/SystemdServices.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "kestrel/KestrelException.h"
#include "plugins/host/service/MadeUpSystemd.h"
#include "support/ScopedEnvironment.h"

namespace Kestrel::Host {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Testing::MadeUpSystemd;
using Testing::ShownUnit;
using Testing::ShownUnknown;
using ::testing::SizeIs;
using ::testing::StartsWith;
using ::testing::ThrowsMessage;

std::string Unit(const std::string& unit, const std::string& load, const std::string& active,
                 const std::string& sub, const std::string& description = "d") {
  return R"({"unit":")" + unit + R"(","load":")" + load + R"(","active":")" + active +
         R"(","sub":")" + sub + R"(","description":")" + description + R"("})";
}

std::string File(const std::string& unit, const std::string& state) {
  return R"({"unit_file":")" + unit + R"(","state":")" + state + R"(","preset":null})";
}

std::string List(const std::vector<std::string>& rows) {
  std::string list = "[";
  for (const std::string& row : rows) {
    list.append(list.size() == 1 ? "" : ",").append(row);
  }
  return list + "]\n";
}

// Returns the fields of a service, joined by spaces; "-" if a field is empty.
std::string Line(const Service& service) {
  std::string line = service.name;
  for (const std::string& text :
       {service.state, service.subState, service.bootState, service.source, service.description}) {
    line.append(" ").append(text.empty() ? "-" : text);
  }
  return line;
}

std::vector<std::string> Lines(const std::vector<Service>& services) {
  std::vector<std::string> lines;
  for (const Service& service : services) {
    lines.push_back(Line(service));
  }
  return lines;
}

class SystemdServicesTest : public ::testing::Test {
 protected:
  void SetLists(const std::vector<std::string>& units, const std::vector<std::string>& files) {
    systemd_.Answer("list-units", List(units));
    systemd_.Answer("list-unit-files", List(files));
  }

  static std::vector<std::string> Read() { return Lines(ReadSystemdServices(Systemctl())); }

  const MadeUpSystemd systemd_;
};

TEST_F(SystemdServicesTest, AreLoadedOrInstalled) {
  SetLists({Unit("ssh.service", "loaded", "active", "running", "OpenBSD Secure Shell server"),
            Unit("auditd.service", "not-found", "inactive", "dead", "auditd.service")},
           {File("rsync.service", "disabled"), File("ssh.service", "enabled")});
  EXPECT_THAT(Read(),
              ElementsAre("auditd not-found dead - systemd auditd.service",
                          "rsync stopped - disabled systemd -",
                          "ssh running running enabled systemd OpenBSD Secure Shell server"));
}

TEST_F(SystemdServicesTest, AreAskedForInTwoCalls) {
  SetLists({Unit("a.service", "loaded", "active", "running")}, {});
  Read();
  EXPECT_THAT(
      systemd_.GetCalls(),
      ElementsAre("list-units --type=service --all --full --plain --no-legend --no-pager "
                  "--output=json",
                  "list-unit-files --type=service --all --full --plain --no-legend --no-pager "
                  "--output=json"));
}

TEST_F(SystemdServicesTest, MayBeAbsent) {
  SetLists({}, {});
  EXPECT_THAT(Read(), IsEmpty());
}

TEST_F(SystemdServicesTest, AreInTheOrderOfTheirNames) {
  SetLists({Unit("b.service", "loaded", "active", "running"),
            Unit("B.service", "loaded", "active", "running"),
            Unit("a-b.service", "loaded", "active", "running")},
           {File("a.service", "static"), File("c.service", "static")});
  std::vector<std::string> names;
  for (const Service& service : ReadSystemdServices(Systemctl())) {
    names.push_back(service.name);
  }
  EXPECT_THAT(names, ElementsAre("B", "a", "a-b", "b", "c"));
}

struct StateOfUnit {
  const char* name;
  const char* load;
  const char* active;
  const char* sub;
  const char* state;
};

class UnitStateTest : public SystemdServicesTest,
                      public ::testing::WithParamInterface<StateOfUnit> {};

TEST_P(UnitStateTest, IsOneOfTheDeclaredStates) {
  const StateOfUnit& each = GetParam();
  SetLists({Unit("a.service", each.load, each.active, each.sub)}, {});
  const auto services = ReadSystemdServices(Systemctl());
  ASSERT_THAT(services, SizeIs(1));
  EXPECT_EQ(services[0].state, each.state);
  EXPECT_EQ(services[0].subState, each.sub);
  EXPECT_THAT(kServiceStates, Contains(services[0].state));
}

INSTANTIATE_TEST_SUITE_P(
    States, UnitStateTest,
    ::testing::Values(
        StateOfUnit{"Running", "loaded", "active", "running", "running"},
        // Not "stopped", because units that need it may start.
        StateOfUnit{"Exited", "loaded", "active", "exited", "exited"},
        StateOfUnit{"Reloading", "loaded", "reloading", "reload", "reloading"},
        StateOfUnit{"Refreshing", "loaded", "refreshing", "refresh", "refreshing"},
        StateOfUnit{"Activating", "loaded", "activating", "start-pre", "activating"},
        StateOfUnit{"Restarting", "loaded", "activating", "auto-restart", "activating"},
        StateOfUnit{"Deactivating", "loaded", "deactivating", "stop-sigterm", "deactivating"},
        StateOfUnit{"Failed", "loaded", "failed", "failed", "failed"},
        StateOfUnit{"Maintenance", "loaded", "maintenance", "cleaning", "maintenance"},
        StateOfUnit{"Stopped", "loaded", "inactive", "dead", "stopped"},
        StateOfUnit{"Masked", "masked", "inactive", "dead", "stopped"},
        StateOfUnit{"BadSetting", "bad-setting", "inactive", "dead", "stopped"},
        StateOfUnit{"NotFound", "not-found", "inactive", "dead", "not-found"},
        // The unit file was removed while the service ran, or after it failed.
        StateOfUnit{"RunningWithoutFile", "not-found", "active", "running", "running"},
        StateOfUnit{"FailedWithoutFile", "not-found", "failed", "failed", "failed"},
        // Words that a future version might use.
        StateOfUnit{"NewState", "loaded", "levitating", "up", "unknown"},
        StateOfUnit{"NewSubState", "loaded", "active", "levitating", "running"},
        StateOfUnit{"NoState", "loaded", "", "", "unknown"}),
    [](const auto& row) { return row.param.name; });

TEST_F(SystemdServicesTest, IncludeTemplatesAndAliases) {
  SetLists({Unit("ssh.service", "loaded", "active", "running")},
           {File("getty@.service", "enabled"), File("sshd.service", "alias"),
            File("autovt@.service", "alias"), File("ssh.service", "enabled")});
  EXPECT_THAT(Read(),
              ElementsAre("autovt@ alias - alias systemd -", "getty@ template - enabled systemd -",
                          "ssh running running enabled systemd d", "sshd alias - alias systemd -"));
}

TEST_F(SystemdServicesTest, MayBeCalledByTheNameOfAnAlias) {
  SetLists({Unit("a.service", "loaded", "active", "running")}, {File("a.service", "alias")});
  EXPECT_THAT(Read(), ElementsAre("a running running alias systemd d"));
}

TEST_F(SystemdServicesTest, IncludeInstancesWithTheirOwnBootStates) {
  SetLists({Unit("getty@tty1.service", "loaded", "active", "running"),
            Unit("getty@tty2.service", "loaded", "active", "running"),
            Unit("user@0.service", "loaded", "active", "running")},
           {File("getty@.service", "enabled"), File("user@.service", "static")});
  systemd_.Answer("show",
                  "Id=getty@tty1.service\nUnitFileState=enabled\n\n"
                  "Id=getty@tty2.service\nUnitFileState=disabled\n\n"
                  "Id=user@0.service\nUnitFileState=static\n");
  EXPECT_THAT(Read(), ElementsAre("getty@ template - enabled systemd -",
                                  "getty@tty1 running running enabled systemd d",
                                  "getty@tty2 running running disabled systemd d",
                                  "user@ template - static systemd -",
                                  "user@0 running running static systemd d"));
  EXPECT_EQ(systemd_.GetCalls().back(),
            "show --no-pager --property=Id,UnitFileState -- getty@tty1.service getty@tty2.service "
            "user@0.service");
}

TEST_F(SystemdServicesTest, IncludeInstancesWithFilesOfTheirOwn) {
  SetLists({Unit("a@1.service", "loaded", "active", "running")}, {File("a@1.service", "linked")});
  EXPECT_THAT(Read(), ElementsAre("a@1 running running linked systemd d"));
  EXPECT_THAT(systemd_.GetCalls(), SizeIs(2));
}

// Units may be created or removed after the lists were made.
TEST_F(SystemdServicesTest, IgnoreAnswersAboutOthers) {
  SetLists({Unit("a@1.service", "loaded", "active", "running")}, {});
  systemd_.Answer("show", "Id=b@1.service\nUnitFileState=enabled\n");
  EXPECT_THAT(Read(), ElementsAre("a@1 running running - systemd d"));
}

TEST_F(SystemdServicesTest, AskForManyInstancesInSeveralCalls) {
  std::vector<std::string> units;
  for (int number = 0; number < 900; ++number) {
    units.push_back(
        Unit("a@" + std::to_string(number) + ".service", "loaded", "active", "running"));
  }
  SetLists(units, {});
  systemd_.Do("show",
              "shift 4; for unit; do printf 'Id=%s\\nUnitFileState=static\\n\\n' \"$unit\"; done");
  const auto services = ReadSystemdServices(Systemctl());
  ASSERT_THAT(services, SizeIs(900));
  for (const Service& service : services) {
    ASSERT_EQ(service.bootState, "static") << service.name;
  }
  EXPECT_THAT(systemd_.GetCalls(), SizeIs(2 + 3));
}

TEST_F(SystemdServicesTest, KeepEscapesInNames) {
  SetLists(
      {Unit(R"(systemd-fsck@dev-disk-by\\x2dlabel-UEFI.service)", "loaded", "active", "exited")},
      {});
  systemd_.Answer("show",
                  "Id=systemd-fsck@dev-disk-by\\x2dlabel-UEFI.service\nUnitFileState=static\n");
  EXPECT_THAT(Read(), ElementsAre("systemd-fsck@dev-disk-by\\x2dlabel-UEFI exited exited static "
                                  "systemd d"));
}

// systemctl could treat an invalid name as a pattern or an option.
TEST_F(SystemdServicesTest, DoNotQueryInvalidNames) {
  SetLists({Unit("a@*.service", "loaded", "active", "running"),
            Unit("@ b.service", "loaded", "active", "running")},
           {});
  EXPECT_THAT(Read(),
              ElementsAre("@ b running running - systemd d", "a@* running running - systemd d"));
  EXPECT_THAT(systemd_.GetCalls(), SizeIs(2));
}

TEST_F(SystemdServicesTest, AreReadFromTables) {
  systemd_.Answer("list-units",
                  "ssh.service    loaded    active   running OpenBSD Secure Shell server\n"
                  "done.service   loaded    active   exited  Ran once\n");
  systemd_.Answer("list-unit-files",
                  "ssh.service enabled enabled\nrsync.service disabled enabled\n");
  EXPECT_THAT(
      Read(),
      ElementsAre("done exited exited - systemd Ran once", "rsync stopped - disabled systemd -",
                  "ssh running running enabled systemd OpenBSD Secure Shell server"));
}

TEST_F(SystemdServicesTest, MayBeTwentyThousand) {
  std::vector<std::string> units;
  std::vector<std::string> files;
  for (int number = 0; number < 10000; ++number) {
    units.push_back(Unit("a" + std::to_string(number) + ".service", "loaded", "active", "running"));
    files.push_back(File("b" + std::to_string(number) + ".service", "static"));
  }
  SetLists(units, files);
  EXPECT_THAT(ReadSystemdServices(Systemctl()), SizeIs(20000));
}

// A user could mistake a part of the list for all of it.
TEST_F(SystemdServicesTest, AreAllListedOrNone) {
  SetLists({Unit("a@1.service", "loaded", "active", "running")}, {});
  systemd_.Fail("show", "No way");
  EXPECT_THAT([] { Read(); }, ThrowsMessage<KestrelException>("systemctl failed: No way"));
  systemd_.Fail("list-unit-files", "No files");
  EXPECT_THAT([] { Read(); }, ThrowsMessage<KestrelException>("systemctl failed: No files"));
  systemd_.Fail("list-units", "No units");
  EXPECT_THAT([] { Read(); }, ThrowsMessage<KestrelException>("systemctl failed: No units"));
}

TEST_F(SystemdServicesTest, AreNotReadFromGarbage) {
  SetLists({}, {});
  for (const char* const word : {"list-units", "list-unit-files"}) {
    systemd_.Answer(word, "no list\n");
    EXPECT_THAT([] { Read(); }, ThrowsMessage<KestrelException>(
                                    "systemctl printed something unexpected: 'no list'"));
    systemd_.Answer(word, "[]");
  }
}

TEST_F(SystemdServicesTest, AreNotAwaitedForever) {
  systemd_.Do("list-units", "sleep 60");
  EXPECT_THAT([] { ReadSystemdServices(Systemctl(std::chrono::milliseconds(200))); },
              ThrowsMessage<KestrelException>("systemctl failed: it did not finish in time"));
}

// ---- a single service

class SystemdServiceTest : public ::testing::Test {
 protected:
  ServiceDetails Read(const std::string& shown, const std::string& name = "ssh") const {
    systemd_.Answer("show", shown);
    return ReadSystemdService(Systemctl(), name);
  }

  const Testing::ScopedEnvironment zone_{"TZ", "UTC"};
  const MadeUpSystemd systemd_;
};

TEST_F(SystemdServiceTest, HasAllDetails) {
  const ServiceDetails ssh = Read(ShownUnit("ssh.service", "active", "running", 812));
  EXPECT_EQ(Line(ssh.service), "ssh running running enabled systemd OpenBSD Secure Shell server");
  EXPECT_EQ(ssh.loadState, "loaded");
  EXPECT_EQ(ssh.mainProcess, 812);
  EXPECT_EQ(ssh.since, "2026-11-22 08:00:02");
  EXPECT_EQ(ssh.memoryBytes, 1536);
  EXPECT_EQ(ssh.file, "/lib/systemd/system/ssh.service");
}

TEST_F(SystemdServiceTest, IsAskedForByItsUnit) {
  Read(ShownUnit("ssh.service", "active", "running", 812), "ssh");
  Read(ShownUnit("ssh.service", "active", "running", 812), "ssh.service");
  const auto calls = systemd_.GetCalls();
  ASSERT_THAT(calls, SizeIs(2));
  EXPECT_EQ(calls[0], calls[1]);
  EXPECT_THAT(calls[0], StartsWith("show --no-pager --property=Id,Description,"));
  EXPECT_THAT(calls[0], ::testing::EndsWith(" -- ssh.service"));
}

TEST_F(SystemdServiceTest, HasItsOwnNameIfRequestedByAnAlias) {
  EXPECT_EQ(Read(ShownUnit("ssh.service", "active", "running", 1), "sshd").service.name, "ssh");
}

TEST_F(SystemdServiceTest, HasTheRequestedNameIfSystemctlReportsNone) {
  EXPECT_EQ(Read("ActiveState=active\nSubState=running\n", "ssh.service").service.name, "ssh");
}

TEST_F(SystemdServiceTest, HasTheTimeAtWhichItEnteredItsState) {
  const auto since = [this](const char* active, const char* sub) {
    return Read(ShownUnit("ssh.service", active, sub, 0)).since;
  };
  EXPECT_EQ(since("activating", "start"), "2026-11-22 08:00:01");
  EXPECT_EQ(since("active", "exited"), "2026-11-22 08:00:02");
  EXPECT_EQ(since("reloading", "reload"), "2026-11-22 08:00:02");
  EXPECT_EQ(since("deactivating", "stop"), "2026-11-22 08:00:03");
  EXPECT_EQ(since("inactive", "dead"), "2026-11-22 08:00:04");
  EXPECT_EQ(since("failed", "failed"), "2026-11-22 08:00:04");
}

TEST_F(SystemdServiceTest, NeedNotHaveATime) {
  for (const char* const text : {"", "n/a", "0"}) {
    EXPECT_EQ(
        Read("Id=a.service\nActiveState=active\nActiveEnterTimestamp=" + std::string(text) + "\n")
            .since,
        "")
        << text;
  }
}

TEST_F(SystemdServiceTest, NeedNotMeasureItsMemory) {
  const auto memory = [this](const std::string& text) {
    return Read("Id=a.service\nActiveState=active\nMemoryCurrent=" + text + "\n").memoryBytes;
  };
  EXPECT_EQ(memory("0"), 0);
  EXPECT_EQ(memory("8589934592"), 8589934592);
  // Values that mean that the memory is not measured, or that are invalid.
  EXPECT_EQ(memory("[not set]"), std::nullopt);
  EXPECT_EQ(memory("18446744073709551615"), std::nullopt);
  EXPECT_EQ(memory(""), std::nullopt);
  EXPECT_EQ(memory("-1"), std::nullopt);
}

TEST_F(SystemdServiceTest, MayComeFromAScript) {
  const ServiceDetails service = Read(
      "Id=old.service\nActiveState=active\nFragmentPath=\nSourcePath=/etc/init.d/"
      "old\nUnitFileState=generated\n");
  EXPECT_EQ(service.file, "/etc/init.d/old");
  EXPECT_EQ(service.service.bootState, "generated");
}

TEST_F(SystemdServiceTest, IsNotFoundIfThereIsNone) {
  EXPECT_EQ(Read(ShownUnknown("nosuch.service"), "nosuch").service.state, "not-found");
}

TEST_F(SystemdServiceTest, NeedsAnAnswerAboutOneUnit) {
  for (const char* const shown : {"", "Description=x\n", "Id=a.service\n",
                                  "Id=a.service\nActiveState=active\n\nId=b.service\n"}) {
    EXPECT_THAT([&] { Read(shown); }, ThrowsMessage<KestrelException>(
                                          "systemctl returned nothing about the service 'ssh'"))
        << shown;
  }
}

TEST_F(SystemdServiceTest, FailsWithTheMessageOfSystemctl) {
  systemd_.Fail("show", "Failed to get properties: Connection timed out");
  EXPECT_THAT([] { ReadSystemdService(Systemctl(), "ssh"); },
              ThrowsMessage<KestrelException>(
                  "systemctl failed: Failed to get properties: Connection timed out"));
}

}  // namespace
}  // namespace Kestrel::Host
