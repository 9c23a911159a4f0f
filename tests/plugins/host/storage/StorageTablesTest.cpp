// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "plugins/host/support/HostCall.h"
#include "plugins/host/support/MadeUpMachine.h"

// The tables of the commands in the namespace "storage" in many orders and at several widths.
namespace Kestrel::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

class StorageTablesTest : public MadeUpMachineTest {
 protected:
  StorageTablesTest() {
    AddDisk("sda", "8:0", "40960000", "1");
    File("sys/block/sda/device/model", "Slow Disk\n");
    AddDisk("nvme0n1", "259:0", "4096", "0");
    File("sys/block/nvme0n1/ro", "1\n");
    AddDisk("sdb", "8:16", "9", "1");
    File("run/udev/data/b8:0", "E:ID_FS_TYPE=xfs\nE:ID_FS_LABEL_ENC=b\n");
    File("run/udev/data/b259:0", "E:ID_FS_TYPE=ext4\nE:ID_FS_LABEL_ENC=A\n");
    File("run/udev/data/b8:16", "I:1\n");
    File("proc/diskstats",
         " 8 0 sda 9 0 100 0 10 0 3000 0 0 20 0\n"
         " 259 0 nvme0n1 10 0 20 0 9 0 4000000000 0 0 100 0\n"
         " 8 16 sdb 100 0 3 0 0 0 0 0 0 3 0\n");
    File("proc/self/mountinfo",
         "10 0 8:0 / / rw - xfs /dev/sda rw\n"
         "9 10 259:0 / /srv/a\\040folder\\040with\\040words ro - ext4 /dev/nvme0n1 ro\n"
         "100 10 0:20 / /tmp rw - tmpfs tmpfs rw\n");
  }

  void AddDisk(const std::string& name, const std::string& number, const std::string& size,
               const std::string& rotational) {
    File("sys/block/" + name + "/dev", number + "\n");
    File("sys/block/" + name + "/size", size + "\n");
    File("sys/block/" + name + "/queue/rotational", rotational + "\n");
  }
};

struct OrderCase {
  const char* name;
  const char* command;
  const char* field;
  std::vector<std::string> ascending;  // the field KeyOf(command) of the sorted rows
};

const char* KeyOf(const std::string& command) {
  return command == "storage mount list" ? "Source" : "Name";
}

class StorageOrderTest : public StorageTablesTest,
                         public ::testing::WithParamInterface<OrderCase> {};

TEST_P(StorageOrderTest, IsThatOfTheField) {
  RunThere([] {
    const auto sorted = [](Parameters parameters) {
      parameters.emplace_back("sort", GetParam().field);
      return CallColumn(GetParam().command, KeyOf(GetParam().command), parameters);
    };
    std::vector<std::string> expected = GetParam().ascending;
    EXPECT_EQ(sorted({}), expected);
    EXPECT_EQ(sorted({{"limit", "2"}}),
              std::vector<std::string>(expected.begin(), expected.begin() + 2));
    std::reverse(expected.begin(), expected.end());
    EXPECT_EQ(sorted({{"descending", ""}}), expected);
  });
}

const OrderCase kOrders[] = {
    {"DevicesByName", "storage device list", "Name", {"nvme0n1", "sda", "sdb"}},
    {"DevicesByNumber", "storage device list", "Number", {"nvme0n1", "sda", "sdb"}},
    {"DevicesBySize", "storage device list", "Size", {"sdb", "nvme0n1", "sda"}},
    {"DevicesByBytes", "storage device list", "Size Bytes", {"sdb", "nvme0n1", "sda"}},
    {"DevicesByFilesystem", "storage device list", "Filesystem", {"nvme0n1", "sdb", "sda"}},
    {"DevicesByLabel", "storage device list", "Label", {"nvme0n1", "sda", "sdb"}},
    {"CountersByName", "storage device counter list", "Name", {"nvme0n1", "sda", "sdb"}},
    {"CountersByWrites", "storage device counter list", "Writes", {"sdb", "nvme0n1", "sda"}},
    {"CountersByReads", "storage device counter list", "Reads", {"sda", "nvme0n1", "sdb"}},
    {"CountersByRead", "storage device counter list", "Read", {"sdb", "nvme0n1", "sda"}},
    {"CountersByWritten", "storage device counter list", "Written", {"sdb", "sda", "nvme0n1"}},
    {"CountersByTime",
     "storage device counter list",
     "Busy Milliseconds",
     {"sdb", "sda", "nvme0n1"}},
    {"MountsByType", "storage mount list", "Type", {"/dev/nvme0n1", "tmpfs", "/dev/sda"}},
    {"MountsById", "storage mount list", "Id", {"/dev/nvme0n1", "/dev/sda", "tmpfs"}},
    {"MountsByMountPoint",
     "storage mount list",
     "Mount Point",
     {"/dev/sda", "/dev/nvme0n1", "tmpfs"}},
};
INSTANTIATE_TEST_SUITE_P(Fields, StorageOrderTest, ::testing::ValuesIn(kOrders),
                         [](const auto& order) { return order.param.name; });

TEST_F(StorageTablesTest, EqualValuesKeepTheirOrder) {
  RunThere([] {
    EXPECT_THAT(CallColumn("storage device list", "Name", {{"sort", "Rotational"}}),
                ElementsAre("nvme0n1", "sda", "sdb"));
    EXPECT_THAT(CallColumn("storage device list", "Name", {{"sort", "Kind"}}),
                ElementsAre("nvme0n1", "sda", "sdb"));
    EXPECT_THAT(CallColumn("storage device list", "Name", {{"sort", "Model"}, {"descending", ""}}),
                ElementsAre("nvme0n1", "sdb", "sda"));
    EXPECT_THAT(CallColumn("storage device list", "Name", {{"sort", "Read Only"}}),
                ElementsAre("sda", "sdb", "nvme0n1"));
  });
}

struct FieldCase {
  const char* name;
  const char* command;
  const char* field;
};

class StorageUnsortableTest : public StorageTablesTest,
                              public ::testing::WithParamInterface<FieldCase> {};

// Rows cannot be sorted by a field that is a list, or by a name that is not exactly that of a
// field.
TEST_P(StorageUnsortableTest, IsAnErrorThatListsTheFields) {
  RunThere([] {
    const auto errors = CallErrors(GetParam().command, {{"sort", GetParam().field}});
    ASSERT_EQ(errors.size(), 1U);
    EXPECT_THAT(errors[0], HasSubstr(GetParam().field));
    EXPECT_THAT(errors[0], HasSubstr(KeyOf(GetParam().command)));
  });
}

const FieldCase kUnsortableFields[] = {
    {"ListOfParents", "storage device list", "Parents"},
    {"ListOfMountPoints", "storage device list", "Mount Points"},
    {"ListOfOptions", "storage mount list", "Options"},
    {"LowerCase", "storage device list", "name"},
    {"WithoutItsUnit", "storage device counter list", "Busy"},
};
INSTANTIATE_TEST_SUITE_P(Fields, StorageUnsortableTest, ::testing::ValuesIn(kUnsortableFields),
                         [](const auto& field) { return field.param.name; });

struct WidthCase {
  const char* name;
  const char* command;
  unsigned short width;
  const char* printed;
};

class StorageWidthTest : public StorageTablesTest,
                         public ::testing::WithParamInterface<WidthCase> {};

TEST_P(StorageWidthTest, WrapsTheLastColumnOnly) {
  RunThere([] { EXPECT_EQ(Print(GetParam().command, {}, GetParam().width), GetParam().printed); });
}

const WidthCase kWidths[] = {
    {"MountsOn80Columns", "storage mount list", 80,
     "Type   Read Only  Source        Mount Point\n"
     "-----  ---------  ------------  -----------\n"
     "xfs    false      /dev/sda      /\n"
     "ext4   true       /dev/nvme0n1  /srv/a folder with words\n"
     "tmpfs  false      tmpfs         /tmp\n"},
    {"MountsOn50Columns", "storage mount list", 50,
     "Type   Read Only  Source        Mount Point\n"
     "-----  ---------  ------------  -----------\n"
     "xfs    false      /dev/sda      /\n"
     "ext4   true       /dev/nvme0n1  /srv/a folder \n"
     "                                with words\n"
     "tmpfs  false      tmpfs         /tmp\n"},
    {"DevicesOn70Columns", "storage device list", 70,
     "Name     Kind  Size Bytes   Transport  Filesystem  Mount Points\n"
     "-------  ----  -----------  ---------  ----------  ------------\n"
     "nvme0n1  disk      2097152  nvme       ext4        /srv/a folder with \n"
     "                                                   words\n"
     "sda      disk  20971520000  none       xfs         /\n"
     "sdb      disk         4608  none       none        \n"},
    {"DevicesOn200Columns", "storage device list", 200,
     "Name     Kind  Size Bytes   Transport  Filesystem  Mount Points\n"
     "-------  ----  -----------  ---------  ----------  ------------\n"
     "nvme0n1  disk      2097152  nvme       ext4        /srv/a folder with words\n"
     "sda      disk  20971520000  none       xfs         /\n"
     "sdb      disk         4608  none       none        \n"},
    {"CountersOn80Columns", "storage device counter list", 80,
     "Reads  Read Bytes  Writes  Written Bytes  Busy Milliseconds  Name\n"
     "-----  ----------  ------  -------------  -----------------  ----\n"
     "    9       51200      10        1536000                 20  sda\n"
     "   10       10240       9  2048000000000                100  nvme0n1\n"
     "  100        1536       0              0                  3  sdb\n"},
};
INSTANTIATE_TEST_SUITE_P(Widths, StorageWidthTest, ::testing::ValuesIn(kWidths),
                         [](const auto& width) { return width.param.name; });

TEST_F(StorageTablesTest, ShowsSizesForPeopleOnDemand) {
  RunThere([] {
    EXPECT_EQ(Print("storage device list", {{"human", ""}, {"sort", "Size"}, {"limit", "2"}}, 80),
              "Name     Kind  Size     Transport  Filesystem  Mount Points\n"
              "-------  ----  -------  ---------  ----------  ------------\n"
              "sdb      disk  4.5 KiB  none       none        \n"
              "nvme0n1  disk  2.0 MiB  nvme       ext4        /srv/a folder with words\n");
    EXPECT_EQ(Print("storage device counter list", {{"human", ""}, {"name", "nvme*"}}, 80),
              "Reads  Read      Writes  Written  Busy Milliseconds  Name\n"
              "-----  --------  ------  -------  -----------------  ----\n"
              "   10  10.0 KiB       9  1.9 TiB                100  nvme0n1\n");
  });
}

TEST_F(StorageTablesTest, TheResultIsTheSameWithAndWithoutSizesForPeople) {
  RunThere([] {
    for (const char* const command : {"storage device list", "storage device counter list"}) {
      EXPECT_EQ(CallRows(command), CallRows(command, {{"human", ""}})) << command;
    }
  });
}

TEST_F(StorageTablesTest, AListWithoutSizesRefusesHuman) {
  RunThere([] {
    EXPECT_THAT(CallErrors("storage mount list", {{"human", ""}}), ElementsAre(HasSubstr("human")));
  });
}

}  // namespace
}  // namespace Kestrel::Testing
