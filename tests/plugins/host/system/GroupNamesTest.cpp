// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/GroupNames.h"

#include <gtest/gtest.h>

#include <string>

#include "plugins/host/support/MadeUpMachine.h"
#include "plugins/host/system/Accounts.h"
#include "support/Witness.h"

namespace Kestrel::Host {
namespace {

constexpr char kFilesOnly[] = "group: files\n";

TEST(GroupNamesTest, AreThoseOfEachGroup) {
  GroupNames names;
  for (const std::string& line : Testing::WitnessLines("getent group | cut -d: -f1,3")) {
    const std::size_t colon = line.find(':');
    const auto id = static_cast<gid_t>(std::stoul(line.substr(colon + 1)));
    EXPECT_EQ(names.Get(id), GroupName(id)) << line;
  }
}

TEST(GroupNamesTest, WritesANumberWithoutAGroupInDigits) {
  GroupNames names;
  EXPECT_EQ(names.Get(3999999999u), "3999999999");
  EXPECT_EQ(names.Get(3999999999u), "3999999999");
}

class MadeUpGroupsTest : public Testing::MadeUpMachineTest {
 protected:
  void Etc(const std::string& groups, const std::string& sources) {
    File("etc/group", groups);
    File("etc/nsswitch.conf", sources);
  }

  // Looks up the names of the groups up to number 9, upwards and downwards, and compares them with
  // the results of single lookups.
  static void ExpectNamesOfEachGroup() {
    GroupNames upwards;
    GroupNames downwards;
    for (gid_t id = 0; id < 10; ++id) {
      EXPECT_EQ(upwards.Get(id), GroupName(id)) << id;
      EXPECT_EQ(upwards.Get(id), GroupName(id)) << id << ", again";
      EXPECT_EQ(downwards.Get(9 - id), GroupName(9 - id)) << 9 - id;
    }
  }
};

TEST_F(MadeUpGroupsTest, MayBeInAnyOrder) {
  Etc("five:x:5:\none:x:1:\nnine:x:9:\nzero:x:0:\ntwo:x:2:\n", kFilesOnly);
  RunThere([] {
    ExpectNamesOfEachGroup();
    EXPECT_EQ(GroupNames().Get(5), "five");
  });
}

TEST_F(MadeUpGroupsTest, UsesTheNameOfTheFirstGroupOfANumber) {
  Etc("one:x:1:\nuno:x:1:\ntwo:x:2:\neins:x:1:\ndue:x:2:\n", kFilesOnly);
  RunThere([] {
    ExpectNamesOfEachGroup();
    EXPECT_EQ(GroupNames().Get(1), "one");
  });
}

TEST_F(MadeUpGroupsTest, DamagedLinesAreReadAsTheSystemReadsThem) {
  Etc("one:x:1:\nbroken\n two:x:2:\n+:::\nthree:x: 3:\nfour:x:4a:\n+five:x:5:\n", kFilesOnly);
  RunThere([] { ExpectNamesOfEachGroup(); });
}

TEST_F(MadeUpGroupsTest, WithoutSettingsTheSystemIsAsked) {
  File("etc/group", "one:x:1:\n");
  RunThere([] { ExpectNamesOfEachGroup(); });
}

TEST_F(MadeUpGroupsTest, NoGroupAtAllIsNoError) {
  Etc("", kFilesOnly);
  RunThere([] { EXPECT_EQ(GroupNames().Get(7), "7"); });
}

// A list of all groups replaces single lookups, each of which would read the whole file.
TEST_F(MadeUpGroupsTest, AreNotLookedUpOneByOneIfTheSystemListsAll) {
  for (const char* const sources : {"group: files\n", "group: files systemd\n"}) {
    Etc("one:x:1:\n", sources);
    RunThere([this] {
      GroupNames names;
      EXPECT_EQ(names.Get(2), "2");
      File("etc/group", "one:x:1:\nthree:x:3:\n");
      EXPECT_EQ(GroupName(3), "three");
      EXPECT_EQ(names.Get(3), "3");
    });
  }
}

TEST_F(MadeUpGroupsTest, AreLookedUpOneByOneInADirectoryService) {
  Etc("one:x:1:\n", "group: files no_such_service\n");
  RunThere([this] {
    GroupNames names;
    EXPECT_EQ(names.Get(2), "2");
    File("etc/group", "one:x:1:\nthree:x:3:\n");
    EXPECT_EQ(names.Get(3), "three");
  });
}

}  // namespace
}  // namespace Kestrel::Host
