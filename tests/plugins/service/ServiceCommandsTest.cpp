// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "plugins/shell-common/MadeUpTool.h"
#include "plugins/support/CommandCall.h"
#include "support/ScopedEnvironment.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

// The commands below "service".
namespace Kestrel::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

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

  const Row ann_ = Service("ann", "running", "Runs & <rests>\\x09now");
  const Row bob_ = Service("bob", "stopped");
  const Row odd_ = Service("odd\\x0aname", "unknown");
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
  EXPECT_EQ(CallStruct("service get", {{"name", "bob"}}), bob_);
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
  EXPECT_EQ(CallStruct("service get", {{"name", "getty@tty1"}}), getty);
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
