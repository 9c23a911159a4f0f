// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "plugins/support/CommandCall.h"
#include "support/ScopedEnvironment.h"
#include "support/ScopedTempDir.h"

// The commands below "crontab".
namespace Kestrel::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(CrontabCommandsTest, ListsCrontabs) {
  const ScopedTempDir folder;
  folder.Write("ann",
               "# comment\n\nMAILTO = ann\n  */5 *\t* * 1-5   echo a\tb & <c> \"d\"\n"
               "@reboot /bin/true");
  folder.Write("bob", "0 1 2 3 4 A=b run\n");
  folder.Write("o\\n\"x", "1 1 1 1 1 x\xFF\n");
  const ScopedEnvironment crontabs("CRONTAB_DIR", folder.GetPath());
  const Row ann = {
      {"User", "ann"}, {"Schedule", "*/5 * * * 1-5"}, {"Command", "echo a\tb & <c> \"d\""}};
  const Row boot = {{"User", "ann"}, {"Schedule", "@reboot"}, {"Command", "/bin/true"}};
  const Row bob = {{"User", "bob"}, {"Schedule", "0 1 2 3 4"}, {"Command", "A=b run"}};
  const Row odd = {{"User", "o\\n\"x"}, {"Schedule", "1 1 1 1 1"}, {"Command", "x\\xff"}};
  EXPECT_THAT(CallRows("crontab list"), ElementsAre(ann, boot, bob, odd));
  EXPECT_THAT(CallRows("crontab list", {{"user", "bob"}, {"user", "nobody"}}), ElementsAre(bob));
  EXPECT_THAT(CallRows("crontab list", {{"user", "bo"}}), IsEmpty());
}

TEST(CrontabCommandsTest, ReportsThatThereIsNoCron) {
  const ScopedEnvironment crontabs("CRONTAB_DIR", "/nosuch");
  EXPECT_THAT(CallErrors("crontab list"),
              ElementsAre("There is no folder /nosuch: is the package cron installed?"));
}

}  // namespace
}  // namespace Kestrel::Testing
