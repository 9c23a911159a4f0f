// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "plugins/shell-common/DescriptorCall.h"
#include "plugins/shell-common/MadeUpTool.h"
#include "support/ScopedEnvironment.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

// The commands below "address" and "service".
namespace Kestrel::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

bool HasTool(const std::string& name) { return Witness("command -v " + name + " || :") != ""; }

// ---- address

TEST(AddressCommandsTest, ReadsWhatPingSays) {
  const MadeUpTool ping("ping",
                        "echo \"$*\" >&2; [ \"$*\" = '-4 -n -q -c 5 -W 2 -- 10.0.0.1' ] || exit 2\n"
                        "echo 'PING 10.0.0.1 (10.0.0.1) 56(84) bytes of data.'; echo\n"
                        "echo '--- 10.0.0.1 ping statistics ---'\n"
                        "echo '5 packets transmitted, 4 received, 20% packet loss, time 4001ms'\n"
                        "echo 'rtt min/avg/max/mdev = 0.034/0.041/0.048/0.007 ms'\n");
  EXPECT_EQ(
      CallRecord("address check", {{"address", "10.0.0.1"}, {"count", "+05"}, {"family", " 4"}}),
      Row({{"Address", "10.0.0.1"},
           {"Sent", "5"},
           {"Received", "4"},
           {"Average", "0.041"},
           {"Reachable", "true"}}));
}

TEST(AddressCommandsTest, TakesSilenceForAnAnswer) {
  const MadeUpTool ping("ping",
                        "[ \"$*\" = '-n -q -c 3 -W 2 -- fe80::1%eth0' ] || exit 2\n"
                        "echo '3 packets transmitted, 0 received, 100% packet loss'\nexit 1\n");
  EXPECT_EQ(CallRecord("address check", {{"address", "fe80::1%eth0"}}),
            Row({{"Address", "fe80::1%eth0"},
                 {"Sent", "3"},
                 {"Received", "0"},
                 {"Average", ""},
                 {"Reachable", "false"}}));
}

TEST(AddressCommandsTest, PassesPingsComplaintOn) {
  const MadeUpTool ping("ping", "printf 'ping: x: Name unknown\\nmore\\n' >&2\nexit 2\n");
  EXPECT_THAT(CallErrors("address check", {{"address", "x"}}),
              ElementsAre("ping: x: Name unknown"));
}

TEST(AddressCommandsTest, ReachesThisMachine) {
  if (!HasTool("ping")) {
    GTEST_SKIP() << "There is no ping here";
  }
  const DescriptorResult result = Call("address check", {{"address", "127.0.0.1"}, {"count", "1"}});
  if (result.value == nullptr) {
    GTEST_SKIP() << "ping may not be used here: " << ::testing::PrintToString(result.errors);
  }
  EXPECT_THAT(result.value->ToString(), ::testing::HasSubstr("127.0.0.1"));
}

TEST(AddressCommandsTest, ResolvesAsTheHostDoes) {
  std::vector<Row> rows;
  for (const std::string& address :
       WitnessLines("getent ahosts localhost | awk '{ print $1 }' | awk '!seen[$0]++'")) {
    rows.push_back({{"Address", address},
                    {"Family", address.find(':') == std::string::npos ? "IPv4" : "IPv6"}});
  }
  EXPECT_EQ(CallRows("address resolve", {{"name", "localhost"}}), rows);
  EXPECT_THAT(CallRows("address resolve", {{"name", "::1"}}),
              ElementsAre(Row({{"Address", "::1"}, {"Family", "IPv6"}})));
}

TEST(AddressCommandsTest, SaysThatANameIsUnknown) {
  EXPECT_THAT(CallErrors("address resolve", {{"name", "no-such-name.invalid"}}),
              ElementsAre("There is no address for the name no-such-name.invalid"));
}

TEST(AddressCommandsTest, NamesPorts) {
  std::vector<Row> rows;
  for (const char* const port : {"22/tcp", "53/tcp", "53/udp"}) {
    const std::string service =
        Witness("getent services " + std::string(port) + " | awk '{ print $1 }'");
    ASSERT_NE(service, "") << "The host does not name port " << port;
    const std::string text = port;
    rows.push_back({{"Port", text.substr(0, 2)},
                    {"Protocol", text.substr(3)},
                    {"Service", service.substr(0, service.size() - 1)}});
  }
  EXPECT_EQ(CallRows("address ports", {{"number", "22"}, {"number", "+053"}}), rows);
  EXPECT_THAT(CallRows("address ports", {{"number", "65535"}}), IsEmpty());
}

// ---- service

class ScriptServicesTest : public ::testing::Test {
 protected:
  ScriptServicesTest()
      : manager_("SYSTEMD_DIR", "/nosuch"), variable_("INIT_DIR", scripts_.GetPath()) {
    Add("ann",
        "# Short-Description:  Runs & <rests>\tnow\n# Short-Description: no\n"
        "[ \"$1\" = status ]\n");
    Add("bob", "case $1 in status) exit 3 ;; esac\n");
    Add("odd\nname", "echo status; exit 1\n");
    Add("silent", "touch '" + scripts_.GetPath("touched") + "'\n");
    scripts_.Write("README", "status\n");
  }

  void Add(const std::string& name, const std::string& text) {
    ::chmod(scripts_.Write(name, "#!/bin/sh\n" + text).c_str(), 0755);
  }

  static Row Service(const std::string& name, const std::string& state,
                     const std::string& description = "") {
    return {{"Name", name}, {"State", state}, {"Source", "init.d"}, {"Description", description}};
  }

  const Row ann_ = Service("ann", "running", "Runs & <rests>\tnow");
  const Row bob_ = Service("bob", "stopped");
  const Row odd_ = Service("odd\nname", "unknown");
  const Row silent_ = Service("silent", "unknown");
  ScopedTempDir scripts_;

 private:
  ScopedEnvironment manager_;
  ScopedEnvironment variable_;
};

TEST_F(ScriptServicesTest, AreListed) {
  EXPECT_THAT(CallRows("service list"), ElementsAre(ann_, bob_, odd_, silent_));
}

TEST_F(ScriptServicesTest, AreNotStartedWhenTheyKnowNoStatus) {
  CallRows("service list");
  EXPECT_EQ(Witness("ls '" + scripts_.GetPath() + "'").find("touched"), std::string::npos);
}

TEST_F(ScriptServicesTest, AreChosenByState) {
  EXPECT_THAT(CallRows("service list", {{"state", "running"}}), ElementsAre(ann_));
  EXPECT_THAT(CallRows("service list", {{"state", "unknown"}}), ElementsAre(odd_, silent_));
  EXPECT_THAT(CallRows("service list", {{"state", "failed"}}), IsEmpty());
}

TEST_F(ScriptServicesTest, AreChosenByName) {
  EXPECT_THAT(CallRows("service list", {{"name", "n"}}), ElementsAre(ann_, odd_, silent_));
  EXPECT_THAT(CallRows("service list", {{"name", "."}}), IsEmpty());
  EXPECT_THAT(CallRows("service list", {{"name", "n"}, {"state", "running"}}), ElementsAre(ann_));
}

TEST_F(ScriptServicesTest, AreShownAlone) {
  EXPECT_EQ(CallRecord("service get", {{"name", "bob"}}), bob_);
  EXPECT_THAT(CallErrors("service get", {{"name", "bo"}}),
              ElementsAre("There is no service named bo"));
}

TEST(ServiceCommandsTest, ReadsWhatTheManagerSays) {
  const ScopedEnvironment manager("SYSTEMD_DIR", "/");
  const MadeUpTool systemctl("systemctl",
                             "cat <<'END'\n"
                             "cron.service     loaded    active   running Runs & <rests>\n"
                             "done.service     loaded    active   exited  Ran once\n"
                             "getty@tty1.service loaded  failed   failed  Getty on tty1\n"
                             "gone.service     not-found inactive dead    gone.service\n"
                             "END\n");
  const auto service = [](const std::string& name, const std::string& state,
                          const std::string& description) {
    return Row(
        {{"Name", name}, {"State", state}, {"Source", "systemd"}, {"Description", description}});
  };
  const Row getty = service("getty@tty1", "failed", "Getty on tty1");
  EXPECT_THAT(CallRows("service list"), ElementsAre(service("cron", "running", "Runs & <rests>"),
                                                    service("done", "stopped", "Ran once"), getty,
                                                    service("gone", "unknown", "gone.service")));
  EXPECT_THAT(CallRows("service list", {{"state", "failed"}, {"name", "@"}}), ElementsAre(getty));
  EXPECT_EQ(CallRecord("service get", {{"name", "getty@tty1"}}), getty);
}

TEST(ServiceCommandsTest, PassesTheManagersComplaintOn) {
  const ScopedEnvironment manager("SYSTEMD_DIR", "/");
  const MadeUpTool systemctl("systemctl", "echo cron.service; echo 'No way' >&2; exit 1\n");
  EXPECT_THAT(CallErrors("service list"), ElementsAre("No way"));
}

TEST(ServiceCommandsTest, ListsTheScriptsOfThisHost) {
  if (Witness("if [ -d /run/systemd/system ]; then echo yes; fi") == "yes\n") {
    GTEST_SKIP() << "The service manager runs here: it is asked instead";
  }
  EXPECT_EQ(CallColumn("service list", "Name"),
            WitnessLines("cd /etc/init.d && find . -maxdepth 1 -type f -perm -u+x -printf '%f\\n' "
                         "| LC_ALL=C sort"));
}

TEST(ServiceCommandsTest, ListsTheUnitsOfThisHost) {
  if (Witness("if [ -d /run/systemd/system ]; then echo yes; fi") != "yes\n") {
    GTEST_SKIP() << "The service manager does not run here";
  }
  EXPECT_EQ(CallColumn("service list", "Name"),
            WitnessLines("systemctl list-units --type=service --all --plain --no-legend --full | "
                         "awk '{ sub(/[.]service$/, \"\", $1); print $1 }'"));
}

}  // namespace
}  // namespace Kestrel::Testing
