// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "plugins/host/support/HostCall.h"
#include "plugins/host/support/Namespaces.h"
#include "plugins/host/support/Rows.h"
#include "support/ScopedEnvironment.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

// The commands in the namespace "service" with a real systemd. Some tests use the systemd of this
// host, others a user instance that the test starts in its own mount namespace.
namespace Kestrel::Testing {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

constexpr char kProgram[] = "/lib/systemd/systemd";

// Returns the units that systemctl lists, selected by `awk`, without their endings.
std::vector<std::string> WitnessNames(const std::string& awk) {
  return WitnessLines(
      "{ systemctl list-units --type=service --all --plain --no-legend --full; "
      "systemctl list-unit-files --type=service --no-legend; } | awk '" +
      awk + " { sub(/[.]service$/, \"\", $1); print $1 }' | LC_ALL=C sort -u");
}

void ExpectTheListOfSystemctl() {
  const Agreement names = Compare(
      [] {
        std::vector<Row> rows;
        for (const std::string& name : CallColumn("service list", "Name")) {
          rows.push_back({{"Name", name}});
        }
        return rows;
      },
      [] {
        std::vector<Row> rows;
        for (const std::string& name : WitnessNames("")) {
          rows.push_back({{"Name", name}});
        }
        return rows;
      });
  EXPECT_EQ(names.command, names.witness);
  EXPECT_EQ(CallColumn("service list", "Name", {{"state", "running"}}),
            WitnessNames("$3 == \"active\" && $4 == \"running\""));
  EXPECT_EQ(CallColumn("service list", "Name", {{"state", "failed"}}),
            WitnessNames("$3 == \"failed\""));
}

TEST(RealSystemdTest, ListsTheServicesOfThisHost) {
  if (::access("/run/systemd/system", F_OK) != 0) {
    GTEST_SKIP() << "systemd does not run on this host";
  }
  ExpectTheListOfSystemctl();
}

class OwnSystemdTest : public ::testing::Test {
 protected:
  OwnSystemdTest() {
    const std::string program =
        tools_.Write("systemctl", "#!/bin/sh\nexec /usr/bin/systemctl --user \"$@\"\n");
    EXPECT_EQ(::chmod(program.c_str(), 0755), 0);
    AddUnit("web.service",
            "[Unit]\nDescription=A web server\n[Service]\nExecStart=/bin/sleep 120\n"
            "[Install]\nWantedBy=default.target\nAlias=www.service\n");
    AddUnit("once.service",
            "[Unit]\nDescription=Ran once\n[Service]\nType=oneshot\nRemainAfterExit=yes\n"
            "ExecStart=/bin/true\n");
    AddUnit("bad.service", "[Service]\nType=oneshot\nExecStart=/bin/false\n");
    AddUnit("slow.service", "[Service]\nType=oneshot\nExecStart=/bin/sleep 120\n");
    AddUnit("term@.service",
            "[Unit]\nDescription=Terminal %i\n[Service]\nExecStart=/bin/sleep 120\n"
            "[Install]\nWantedBy=default.target\n");
  }

  void AddUnit(const std::string& name, const std::string& text) const {
    tools_.Write("units/" + name, text);
  }

  // Runs `body` where systemd runs. Skips the test if that is not possible here.
  void RunThere(const std::function<void()>& body) const {
    if (::access(kProgram, X_OK) != 0) {
      GTEST_SKIP() << kProgram << " is not here";
    }
    GetDispatcher();  // loads the plug-in before the mounts change
    const std::string refusal = RunInNamespaces(CLONE_NEWNS, [&] {
      if (Shell(kStart)) {
        tools_.Write("started", "");
        body();
        EXPECT_TRUE(Shell(kEnd)) << tools_.Read("output");
      }
    });
    if (!refusal.empty() || ::access(tools_.GetPath("started").c_str(), F_OK) != 0) {
      GTEST_SKIP() << "systemd cannot be started here: " << refusal << tools_.Read("output");
    }
  }

  // Runs a script whose first parameter is the folder of this test.
  bool Shell(const char* script) const {
    tools_.Write("script", script);
    const std::string file = tools_.GetPath("script");
    const std::string words =
        "sh -e " + file + " '" + tools_.GetPath() + "' >'" + tools_.GetPath("output") + "' 2>&1";
    return std::system(words.c_str()) == 0;
  }

  static Row Get(const std::string& name) { return CallStruct("service get", {{"name", name}}); }

  static bool IsAlive(const std::string& process) {
    return process != "0" && ::access(("/proc/" + process).c_str(), F_OK) == 0;
  }

 private:
  // systemd needs a folder that indicates a running systemd, and a folder in which it may create
  // control groups. Each instance needs its own folder for control groups, because another instance
  // would end the services in a shared one.
  static constexpr char kStart[] = R"sh(
mount -t tmpfs none /run
mkdir -p /run/systemd/system /run/user-files /run/home/.config/systemd
cp -r "$1/units" /run/home/.config/systemd/user
ln -s /dev/null /run/home/.config/systemd/user/masked.service
if [ "$(stat -fc %T /sys/fs/cgroup)" != cgroup2fs ]; then
  umount -R /sys/fs/cgroup
  mount -t cgroup2 none /sys/fs/cgroup
fi
mkdir "/sys/fs/cgroup/${1##*/}"
echo $$ >"/sys/fs/cgroup/${1##*/}/cgroup.procs"
/lib/systemd/systemd --user </dev/null >"$1/log" 2>&1 &
for attempt in 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20; do
  sleep 0.25
  if systemctl is-active default.target; then exit 0; fi
done
cat "$1/log"
exit 1
)sh";
  static constexpr char kEnd[] = R"sh(
systemctl exit || true
group=/sys/fs/cgroup/${1##*/}
for attempt in 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20; do
  find "$group" -depth -type d -exec rmdir {} + || true
  if [ ! -e "$group" ]; then exit 0; fi
  sleep 0.5
done
exit 1
)sh";

  const ScopedTempDir tools_;
  const ScopedEnvironment path_{"PATH", tools_.GetPath() + ":/usr/bin:/bin:/usr/sbin:/sbin"};
  const ScopedEnvironment home_{"HOME", "/run/home"};
  const ScopedEnvironment configuration_{"XDG_CONFIG_HOME", std::nullopt};
  const ScopedEnvironment runtime_{"XDG_RUNTIME_DIR", "/run/user-files"};
  const ScopedEnvironment bus_{"DBUS_SESSION_BUS_ADDRESS", std::nullopt};
  const ScopedEnvironment zone_{"TZ", "UTC"};
};

TEST_F(OwnSystemdTest, ListsWhatSystemctlLists) {
  RunThere([] {
    Witness("systemctl start web once term@a; systemctl start bad || true");
    ExpectTheListOfSystemctl();
    const auto state = [](const std::string& name) {
      return CallColumn("service list", "State", {{"name", name}});
    };
    EXPECT_THAT(state("web"), ElementsAre("running"));
    EXPECT_THAT(state("once"), ElementsAre("exited"));
    EXPECT_THAT(state("bad"), ElementsAre("failed"));
    EXPECT_THAT(state("term@"), ElementsAre("template"));
    EXPECT_THAT(state("term@a"), ElementsAre("running"));
    EXPECT_THAT(state("slow"), ElementsAre("stopped"));
  });
}

TEST_F(OwnSystemdTest, ListsServicesWithUnusualNamesAndDescriptions) {
  RunThere([] {
    Witness(
        "systemd-run --user --quiet --description=\"$(printf 'a\\nb  c')\" "
        "--unit='odd\\x2dname' sleep 120");
    const auto rows = CallRows("service list", {{"match", "odd"}});
    ASSERT_THAT(rows, SizeIs(1));
    EXPECT_EQ(rows[0].at("Name"), "odd\\x2dname");
    EXPECT_EQ(rows[0].at("Description"), "a\\x0ab  c");
    EXPECT_EQ(rows[0].at("Boot State"), "transient");
    EXPECT_EQ(Get("odd\\x2dname").at("State"), "running");
  });
}

TEST_F(OwnSystemdTest, StartsRestartsAndStops) {
  RunThere([] {
    const Row start = CallStruct("service start", {{"name", "web"}});
    EXPECT_EQ(start.at("State Before"), "stopped");
    EXPECT_EQ(start.at("State After"), "running");
    EXPECT_EQ(start.at("Main Process Before"), "0");
    const std::string first = start.at("Main Process After");
    EXPECT_TRUE(IsAlive(first)) << first;
    const Row restart = CallStruct("service restart", {{"name", "web.service"}});
    EXPECT_EQ(restart.at("Main Process Before"), first);
    EXPECT_TRUE(IsAlive(restart.at("Main Process After")));
    EXPECT_FALSE(IsAlive(first));
    const Row stop = CallStruct("service stop", {{"name", "web"}});
    EXPECT_EQ(stop.at("State Before"), "running");
    EXPECT_EQ(stop.at("State After"), "stopped");
    EXPECT_EQ(stop.at("Main Process After"), "0");
  });
}

TEST_F(OwnSystemdTest, ShowsSinceWhenAServiceRuns) {
  RunThere([] {
    const std::string before = Witness("date +'%F %T'");
    CallStruct("service start", {{"name", "web"}});
    const Row row = Get("web");
    const std::string after = Witness("date +'%F %T'");
    EXPECT_GE(row.at("Since") + "\n", before);
    EXPECT_LE(row.at("Since") + "\n", after);
    EXPECT_EQ(row.at("File"), "/run/home/.config/systemd/user/web.service");
    EXPECT_EQ(row.at("Load State"), "loaded");
    EXPECT_EQ(row.at("Main Process"),
              Witness("systemctl show --property=MainPID --value web | tr -d '\\n'"));
  });
}

TEST_F(OwnSystemdTest, EnablesAndDisables) {
  RunThere([] {
    const std::string link = "/run/home/.config/systemd/user/default.target.wants/web.service";
    const Row enable = CallStruct("service enable", {{"name", "web"}});
    EXPECT_EQ(enable.at("Boot State Before"), "disabled");
    EXPECT_EQ(enable.at("Boot State After"), "enabled");
    EXPECT_EQ(enable.at("State After"), "stopped");
    EXPECT_THAT(enable.at("Message"), AllOf(StartsWith("Created symlink "), HasSubstr(link)));
    EXPECT_EQ(::access(link.c_str(), F_OK), 0);
    // The alias is listed as such, and refers to the service.
    EXPECT_THAT(CallColumn("service list", "State", {{"name", "www"}}), ElementsAre("alias"));
    EXPECT_EQ(Get("www").at("Name"), "web");
    const Row disable = CallStruct("service disable", {{"name", "www"}});
    EXPECT_EQ(disable.at("Name"), "web");
    EXPECT_EQ(disable.at("Boot State After"), "disabled");
    EXPECT_NE(::access(link.c_str(), F_OK), 0);
  });
}

TEST_F(OwnSystemdTest, ReportsFailuresWithTheMessagesOfSystemctl) {
  RunThere([] {
    const auto error = [](const std::string& action, const std::string& name) {
      const auto errors = CallErrors("service " + action, {{"name", name}});
      return errors.size() == 1 ? errors[0] : ::testing::PrintToString(errors);
    };
    EXPECT_THAT(error("start", "bad"),
                StartsWith("Unable to start the service 'bad': Job for bad.service failed because "
                           "the control process exited with error code. See "));
    EXPECT_THAT(error("start", "masked"),
                StartsWith("Unable to start the service 'masked': Failed to start masked.service: "
                           "Unit masked.service is masked."));
    EXPECT_EQ(error("start", "nosuch"), "There is no service 'nosuch'");
    EXPECT_EQ(error("stop", "nosuch@x"), "There is no service 'nosuch@x'");
    EXPECT_EQ(error("get", "w*"), "There is no service 'w*'");
  });
}

// When the time is over, the command kills systemctl, but the job for which systemctl waits
// continues. On a busy machine, systemctl may be killed before it has requested the job. So there
// are several attempts, each with twice the time of the previous one.
TEST_F(OwnSystemdTest, ReportsAChangeThatTakesTooLong) {
  RunThere([] {
    std::string state = "stopped";
    for (int seconds = 1; state == "stopped" && seconds <= 32; seconds *= 2) {
      EXPECT_THAT(
          CallErrors("service start", {{"name", "slow"}, {"timeout", std::to_string(seconds)}}),
          ElementsAre(HasSubstr("the change may still go on")));
      state = Get("slow").at("State");
    }
    EXPECT_EQ(state, "activating");
  });
}

TEST_F(OwnSystemdTest, ListsTimers) {
  RunThere([] {
    Witness("systemd-run --user --quiet --on-calendar='2038-01-02 03:04:05' --unit=later true");
    const auto rows = CallRows("system timer list", {{"name", "later"}});
    ASSERT_THAT(rows, SizeIs(1));
    EXPECT_EQ(rows[0], (Row{{"Unit", "later.timer"},
                            {"Activates", "later.service"},
                            {"Next", "2038-01-02 03:04:05"},
                            {"Last", "never"}}));
    EXPECT_EQ(Sorted(CallColumn("system timer list", "Unit")),
              WitnessLines("systemctl list-units --all --type=timer --plain --no-legend | "
                           "awk '{ print $1 }' | LC_ALL=C sort"));
  });
}

}  // namespace
}  // namespace Kestrel::Testing
