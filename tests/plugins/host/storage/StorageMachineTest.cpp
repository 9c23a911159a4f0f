// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "plugins/host/support/HostCall.h"
#include "plugins/host/support/MadeUpMachine.h"

// The commands in the namespace "storage" on a machine with simulated devices and mounts.
namespace Kestrel::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class StorageMachineTest : public MadeUpMachineTest {
 protected:
  void AddDevice(const std::string& folder, const std::string& number, const std::string& size) {
    File("sys/block/" + folder + "/dev", number + "\n");
    File("sys/block/" + folder + "/size", size + "\n");
  }

  void AddSampleDevices() {
    AddDevice("sda", "8:0", "409600");
    File("sys/block/sda/device/model", "Fast\x1b[2JDisk  \n");
    File("sys/block/sda/queue/rotational", "1\n");
    AddDevice("sda/sda1", "8:1", "204800");
    File("sys/block/sda/sda1/partition", "1\n");
    AddDevice("sda/sda2", "8:2", "2047");
    File("sys/block/sda/sda2/partition", "2\n");
    File("sys/block/sda/sda2/ro", "1\n");
    AddDevice("sr0", "11:0", "0");
    File("sys/block/sr0/device/type", "5\n");
    File("sys/block/sr0/removable", "1\n");
    AddDevice("dm-0", "253:0", "8192");
    File("sys/block/dm-0/dm/uuid", "LVM-abc\n");
    File("sys/block/dm-0/dm/name", "vg-root\n");
    Folder("sys/block/dm-0/slaves/sda1");
    AddDevice("cciss!c0d0", "104:0", "2048");
    File("run/udev/data/b8:0", "I:1\n");
    File("run/udev/data/b8:1",
         "E:ID_FS_TYPE=ext4\nE:ID_FS_LABEL_ENC=My\\x20Disk\nE:ID_FS_UUID_ENC=12-34\n"
         "E:ID_PART_ENTRY_NAME=data\nE:ID_PART_ENTRY_UUID=56-78\n");
    AddSampleMounts();
  }

  void AddSampleMounts() {
    File("proc/self/mountinfo",
         "1 0 253:0 / / rw,relatime - ext4 /dev/mapper/vg-root rw,errors=remount-ro\n"
         "2 1 8:1 / /srv ro,noexec - ext4 /dev/sda1 rw\n"
         "3 1 0:20 / /proc rw,nosuid - proc proc rw\n"
         "4 2 8:1 /data /srv/a\\040b rw - ext4 /dev/sda1 rw\n"
         "5 1 0:30 / /tmp rw - tmpfs none rw,size=4k\n"
         "6 5 0:31 / /tmp rw - tmpfs none rw\n"
         "7 1 0:32 / /srvx rw - xfs bad\\012name rw\n");
  }

  static std::vector<std::string> Devices(const Parameters& parameters) {
    return CallColumn("storage device list", "Name", parameters);
  }
  static std::vector<std::string> Mounts(const Parameters& parameters) {
    return CallColumn("storage mount list", "Id", parameters);
  }
};

TEST_F(StorageMachineTest, ListsDevices) {
  AddSampleDevices();
  ExpectPrinted("storage device list",
                "Name        Kind  Size Bytes  Transport  Filesystem  Mount Points\n"
                "----------  ----  ----------  ---------  ----------  ------------\n"
                "cciss/c0d0  disk     1048576  none       unknown     \n"
                "dm-0        lvm      4194304  none       unknown     /\n"
                "sda         disk   209715200  none       none        \n"
                "sda1        part   104857600  none       ext4        /srv, /srv/a b\n"
                "sda2        part     1048064  none       unknown     \n");
}

TEST_F(StorageMachineTest, ShowsEveryFieldOfADevice) {
  AddSampleDevices();
  RunThere([] {
    EXPECT_THAT(CallRows("storage device list", {{"name", "sda1"}}),
                ElementsAre(Row({{"Name", "sda1"},
                                 {"Kind", "part"},
                                 {"Number", "8:1"},
                                 {"Size", "100.0 MiB"},
                                 {"Size Bytes", "104857600"},
                                 {"Sector Size", "512"},
                                 {"Read Only", "false"},
                                 {"Removable", "false"},
                                 {"Rotational", "true"},
                                 {"Model", "none"},
                                 {"Transport", "none"},
                                 {"Parents", "sda"},
                                 {"Filesystem", "ext4"},
                                 {"Label", "My Disk"},
                                 {"UUID", "12-34"},
                                 {"Partition Label", "data"},
                                 {"Partition UUID", "56-78"},
                                 {"Mount Points", "/srv, /srv/a b"}})));
    EXPECT_THAT(CallColumn("storage device list", "Model", {{"name", "sda"}}),
                ElementsAre("Fast\\x1b[2JDisk"));
    EXPECT_THAT(CallColumn("storage device list", "Parents", {{"name", "dm-0"}}),
                ElementsAre("sda1"));
  });
}

struct ListCase {
  const char* name;
  Parameters parameters;
  std::vector<std::string> listed;
};

const ListCase kDeviceFilters[] = {
    {"None", {}, {"cciss/c0d0", "dm-0", "sda", "sda1", "sda2"}},
    {"All", {{"all", ""}}, {"cciss/c0d0", "dm-0", "sda", "sda1", "sda2", "sr0"}},
    {"Name", {{"name", "sda"}}, {"sda"}},
    {"Names", {{"name", "sda2"}, {"name", "dm-0"}, {"name", "none"}}, {"dm-0", "sda2"}},
    {"NamePattern", {{"name", "sd*"}}, {"sda", "sda1", "sda2"}},
    {"NameInAnotherCase", {{"name", "SDA"}}, {}},
    {"NameWithASlash", {{"name", "cciss/c0d0"}}, {"cciss/c0d0"}},
    {"NameOfAnEmptyDevice", {{"name", "sr0"}}, {}},
    {"NameOfAnEmptyDeviceAndAll", {{"name", "sr0"}, {"all", ""}}, {"sr0"}},
    {"Kind", {{"kind", "part"}}, {"sda1", "sda2"}},
    {"Kinds", {{"kind", "lvm"}, {"kind", "disk"}}, {"cciss/c0d0", "dm-0", "sda"}},
    {"KindOfNone", {{"kind", "raid1"}}, {}},
    {"ReadOnly", {{"read-only", "true"}}, {"sda2"}},
    {"Writable", {{"read-only", "false"}}, {"cciss/c0d0", "dm-0", "sda", "sda1"}},
    {"Removable", {{"removable", "true"}, {"all", ""}}, {"sr0"}},
    {"BuiltIn", {{"removable", "no"}}, {"cciss/c0d0", "dm-0", "sda", "sda1", "sda2"}},
    {"MinimumSize", {{"minimum-size", "100"}}, {"sda", "sda1"}},
    {"MinimumSizeRoundsDown", {{"minimum-size", "1"}}, {"cciss/c0d0", "dm-0", "sda", "sda1"}},
    {"AllTogether",
     {{"kind", "part"}, {"read-only", "false"}, {"minimum-size", "50"}, {"name", "sda1"}},
     {"sda1"}},
};

class DeviceFilterTest : public StorageMachineTest,
                         public ::testing::WithParamInterface<ListCase> {};

TEST_P(DeviceFilterTest, ListsTheSelectedDevices) {
  AddSampleDevices();
  RunThere([] { EXPECT_EQ(Devices(GetParam().parameters), GetParam().listed); });
}

INSTANTIATE_TEST_SUITE_P(Filters, DeviceFilterTest, ::testing::ValuesIn(kDeviceFilters),
                         [](const auto& test) { return test.param.name; });

TEST_F(StorageMachineTest, ListsMounts) {
  AddSampleMounts();
  ExpectPrinted("storage mount list",
                "Type   Read Only  Source               Mount Point\n"
                "-----  ---------  -------------------  -----------\n"
                "ext4   false      /dev/mapper/vg-root  /\n"
                "ext4   true       /dev/sda1            /srv\n"
                "proc   false      proc                 /proc\n"
                "ext4   false      /dev/sda1            /srv/a b\n"
                "tmpfs  false      none                 /tmp\n"
                "xfs    false      bad\\x0aname          /srvx\n");
}

TEST_F(StorageMachineTest, ShowsEveryFieldOfAMount) {
  AddSampleMounts();
  RunThere([] {
    const std::vector<Row> rows = CallRows("storage mount list", {{"below", "/srv/a b"}});
    EXPECT_THAT(rows, ElementsAre(Row({{"Mount Point", "/srv/a b"},
                                       {"Source", "/dev/sda1"},
                                       {"Type", "ext4"},
                                       {"Options", "rw"},
                                       {"Root", "/data"},
                                       {"Device", "8:1"},
                                       {"Id", "4"},
                                       {"Parent Id", "2"},
                                       {"Read Only", "false"},
                                       {"Hidden", "false"}})));
  });
}

const ListCase kMountFilters[] = {
    {"None", {}, {"1", "2", "3", "4", "6", "7"}},
    {"All", {{"all", ""}}, {"1", "2", "3", "4", "5", "6", "7"}},
    {"Type", {{"type", "ext4"}}, {"1", "2", "4"}},
    {"Types", {{"type", "proc"}, {"type", "xfs"}}, {"3", "7"}},
    {"TypeOfNone", {{"type", "ext"}}, {}},
    {"OptionOfTheMount", {{"option", "noexec"}}, {"2"}},
    {"OptionOfTheFileSystem", {{"option", "errors=remount-ro"}}, {"1"}},
    {"OptionReadOnly", {{"option", "ro"}}, {"2"}},
    {"Options", {{"option", "nosuid"}, {"option", "noexec"}}, {"2", "3"}},
    {"OptionOfAHiddenMount", {{"option", "size=4k"}}, {}},
    {"OptionOfAHiddenMountAndAll", {{"option", "size=4k"}, {"all", ""}}, {"5"}},
    {"Below", {{"below", "/srv"}}, {"2", "4"}},
    {"BelowAPathWithDetours", {{"below", "/proc/..//./srv"}}, {"2", "4"}},
    {"BelowARelativePath", {{"below", "srv"}}, {}},
    {"BelowWithASlashAtItsEnd", {{"below", "/srv/"}}, {"2", "4"}},
    {"BelowTheRoot", {{"below", "/"}}, {"1", "2", "3", "4", "6", "7"}},
    {"BelowNothing", {{"below", "/srv/a"}}, {}},
    {"ReadOnly", {{"read-only", "true"}}, {"2"}},
    {"Writable", {{"read-only", "false"}, {"below", "/srv"}}, {"4"}},
    {"AllTogether",
     {{"type", "ext4"}, {"below", "/srv"}, {"read-only", "true"}, {"option", "noexec"}},
     {"2"}},
};

class MountFilterTest : public StorageMachineTest,
                        public ::testing::WithParamInterface<ListCase> {};

TEST_P(MountFilterTest, ListsTheSelectedMounts) {
  AddSampleMounts();
  RunThere([] { EXPECT_EQ(Mounts(GetParam().parameters), GetParam().listed); });
}

INSTANTIATE_TEST_SUITE_P(Filters, MountFilterTest, ::testing::ValuesIn(kMountFilters),
                         [](const auto& test) { return test.param.name; });

TEST_F(StorageMachineTest, AnEmptyTableOfMountsIsAnEmptyList) {
  File("proc/self/mountinfo", "");
  RunThere([] {
    EXPECT_THAT(CallRows("storage mount list"), IsEmpty());
    EXPECT_THAT(CallRows("storage filesystem list"), IsEmpty());
  });
}

TEST_F(StorageMachineTest, AMissingTableOfMountsIsReported) {
  RunThere([] {
    for (const char* const path : {"storage mount list", "storage filesystem list"}) {
      EXPECT_THAT(CallErrors(path),
                  ElementsAre("Unable to read the mounts in /proc/self/mountinfo: No such file or "
                              "directory"));
    }
  });
}

TEST_F(StorageMachineTest, ARelativePathBeginsInTheCurrentFolder) {
  AddSampleMounts();
  RunThere([] {
    ASSERT_EQ(::chdir("/"), 0);
    EXPECT_THAT(Mounts({{"below", "srv"}}), ElementsAre("2", "4"));
    EXPECT_THAT(Mounts({{"below", "./srv/a b"}}), ElementsAre("4"));
  });
}

TEST_F(StorageMachineTest, AMountWithoutASourceHasAWordForIt) {
  File("proc/self/mountinfo", "1 0 0:20 / / rw - tmpfs  rw\n");
  RunThere([] {
    EXPECT_THAT(CallColumn("storage mount list", "Source"), ElementsAre("none"));
    EXPECT_THAT(CallColumn("storage filesystem list", "Source", {{"all", ""}}),
                ElementsAre("none"));
  });
}

TEST_F(StorageMachineTest, AMissingListOfDevicesIsReported) {
  AddSampleMounts();
  RunThere([] {
    EXPECT_THAT(CallErrors("storage device list"),
                ElementsAre("Unable to read /sys/block: No such file or directory"));
    EXPECT_THAT(CallErrors("storage device counter list"),
                ElementsAre("Unable to read /proc/diskstats: No such file or directory"));
  });
}

TEST_F(StorageMachineTest, AMachineWithoutDevicesHasAnEmptyList) {
  AddSampleMounts();
  Folder("sys/block");
  File("proc/diskstats", "");
  RunThere([] {
    EXPECT_THAT(CallRows("storage device list", {{"all", ""}}), IsEmpty());
    EXPECT_THAT(CallRows("storage device counter list", {{"all", ""}}), IsEmpty());
  });
}

TEST_F(StorageMachineTest, ListsCounters) {
  File("proc/diskstats",
       " 8 0 sda 1200 5 409600 4000 700 60 81920 8000 1 9000 12000 3 0 2048 40 7 80\n"
       " 8 1 sda1 1 0 8 1 0 0 0 0 0 1 1 0 0 0 0 0 0\n"
       " 7 0 loop0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0\n");
  ExpectPrinted("storage device counter list",
                "Reads  Read Bytes  Writes  Written Bytes  Busy Milliseconds  Name\n"
                "-----  ----------  ------  -------------  -----------------  ----\n"
                " 1200   209715200     700       41943040               9000  sda\n"
                "    1        4096       0              0                  1  sda1\n");
  RunThere([] {
    EXPECT_THAT(CallRows("storage device counter list", {{"name", "sda"}}),
                ElementsAre(Row({{"Name", "sda"},
                                 {"Reads", "1200"},
                                 {"Reads Merged", "5"},
                                 {"Read", "200.0 MiB"},
                                 {"Read Bytes", "209715200"},
                                 {"Read Milliseconds", "4000"},
                                 {"Writes", "700"},
                                 {"Writes Merged", "60"},
                                 {"Written", "40.0 MiB"},
                                 {"Written Bytes", "41943040"},
                                 {"Write Milliseconds", "8000"},
                                 {"Discards", "3"},
                                 {"Discarded", "1.0 MiB"},
                                 {"Discarded Bytes", "1048576"},
                                 {"Discard Milliseconds", "40"},
                                 {"Flushes", "7"},
                                 {"Flush Milliseconds", "80"},
                                 {"In Progress", "1"},
                                 {"Busy Milliseconds", "9000"},
                                 {"Queued Milliseconds", "12000"}})));
    EXPECT_THAT(CallColumn("storage device counter list", "Name", {{"all", ""}, {"name", "*0"}}),
                ElementsAre("loop0"));
    EXPECT_THAT(CallColumn("storage device counter list", "Reads",
                           {{"interval", "1"}, {"sort", "Name"}, {"descending", ""}}),
                ElementsAre("0", "0"));
  });
}

TEST_F(StorageMachineTest, TheRowOfAMissingFileSystemContainsTheReason) {
  File("proc/self/mountinfo", "1 0 8:1 / /gone/away rw - ext4 /dev/sda1 rw\n");
  ExpectPrinted("storage filesystem list --type=ext4",
                "Source     Available Bytes  Percent  Status                     Mount Point\n"
                "---------  ---------------  -------  -------------------------  -----------\n"
                "/dev/sda1                0      0 %  No such file or directory  /gone/away\n");
}

TEST_F(StorageMachineTest, TheMountPointOfTheAutomounterIsNotListed) {
  File("proc/self/mountinfo", "1 0 0:1 / /gone rw - autofs none rw\n");
  RunThere([] { EXPECT_THAT(CallRows("storage filesystem list", {{"all", ""}}), IsEmpty()); });
}

}  // namespace
}  // namespace Kestrel::Testing
