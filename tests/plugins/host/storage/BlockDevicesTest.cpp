// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/storage/BlockDevices.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/sysmacros.h>

#include <algorithm>

#include "support/ScopedTempDir.h"

namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

DeviceProperties NoProperties(dev_t) { return {}; }

/// A made-up /sys.
class SysTree {
 public:
  SysTree& Device(const std::string& folder, const std::string& number, const std::string& size) {
    current_ = "block/" + folder;
    return Attribute("dev", number + "\n").Attribute("size", size + "\n");
  }
  SysTree& Attribute(const std::string& name, const std::string& text) {
    folder_.Write(current_ + "/" + name, text);
    return *this;
  }
  SysTree& Slave(const std::string& name) {
    folder_.MakeDirectory(current_ + "/slaves/" + name);
    return *this;
  }
  std::vector<BlockDevice> Read(const std::vector<Mount>& mounts = {},
                                const PropertyReader& properties = NoProperties) const {
    return ReadBlockDevices(folder_.GetPath(), properties, mounts);
  }

 private:
  Testing::ScopedTempDir folder_;
  std::string current_;
};

Mount MakeMount(dev_t device, const std::string& source, const std::string& target) {
  Mount mount;
  mount.device = device;
  mount.source = source;
  mount.target = target;
  return mount;
}

TEST(BlockDevicesTest, ReadsADiskAndItsParts) {
  SysTree tree;
  tree.Device("sda", "8:0", "2048")
      .Attribute("ro", "1\n")
      .Attribute("removable", "1\n")
      .Attribute("queue/rotational", "1\n")
      .Attribute("queue/logical_block_size", "4096\n")
      .Attribute("device/model", "Fast Disk       \n")
      .Device("sda/sda2", "8:2", "1000")
      .Attribute("partition", "2\n")
      .Device("sda/sda1", "8:1", "24")
      .Attribute("partition", "1\n")
      .Device("sda/notapart", "8:9", "24");
  const auto devices = tree.Read();
  ASSERT_EQ(devices.size(), 3u);
  EXPECT_EQ(devices[0].name, "sda");
  EXPECT_EQ(devices[0].kind, "disk");
  EXPECT_EQ(devices[0].number, makedev(8, 0));
  EXPECT_EQ(devices[0].size, 2048 * 512);
  EXPECT_EQ(devices[0].sectorSize, 4096);
  EXPECT_TRUE(devices[0].isReadOnly);
  EXPECT_TRUE(devices[0].isRemovable);
  EXPECT_TRUE(devices[0].isRotational);
  EXPECT_EQ(devices[0].model, "Fast Disk");
  EXPECT_THAT(devices[0].parents, IsEmpty());
  EXPECT_EQ(devices[1].name, "sda1");
  EXPECT_EQ(devices[1].kind, "part");
  EXPECT_EQ(devices[1].size, 24 * 512);
  EXPECT_EQ(devices[1].sectorSize, 4096);
  EXPECT_FALSE(devices[1].isReadOnly);
  EXPECT_TRUE(devices[1].isRemovable);
  EXPECT_TRUE(devices[1].isRotational);
  EXPECT_THAT(devices[1].parents, ElementsAre("sda"));
  EXPECT_EQ(devices[2].name, "sda2");
}

struct KindCase {
  const char* folder;
  const char* attribute;
  const char* text;
  const char* kind;
};

class BlockDeviceKindTest : public ::testing::TestWithParam<KindCase> {};

TEST_P(BlockDeviceKindTest, IsReported) {
  SysTree tree;
  tree.Device(GetParam().folder, "8:0", "1").Attribute(GetParam().attribute, GetParam().text);
  const auto devices = tree.Read();
  ASSERT_EQ(devices.size(), 1u);
  EXPECT_EQ(devices[0].kind, GetParam().kind);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, BlockDeviceKindTest,
    ::testing::Values(KindCase{"sr0", "device/type", "5\n", "rom"},
                      KindCase{"sdb", "device/type", "0\n", "disk"},
                      KindCase{"nvme0n1", "device/type", "what\n", "disk"},
                      KindCase{"loop7", "loop/backing_file", "/file\n", "loop"},
                      KindCase{"md0", "md/level", "raid1\n", "raid1"},
                      KindCase{"md1", "ro", "0\n", "md"},
                      KindCase{"dm-0", "dm/uuid", "LVM-abc\n", "lvm"},
                      KindCase{"dm-1", "dm/uuid", "CRYPT-LUKS2-abc\n", "crypt"},
                      KindCase{"dm-2", "dm/uuid", "part1-mpath-abc\n", "part"},
                      KindCase{"dm-3", "dm/uuid", "mpath-abc\n", "mpath"},
                      KindCase{"dm-4", "dm/uuid", "\n", "dm"}),
    [](const auto& row) {
      std::string name = row.param.folder;
      name.erase(std::remove(name.begin(), name.end(), '-'), name.end());
      return name;
    });

TEST(BlockDevicesTest, TheParentsOfAVolumeAreItsSlaves) {
  SysTree tree;
  tree.Device("dm-0", "253:0", "8").Slave("sdb1").Slave("cciss!c0d0");
  const auto devices = tree.Read();
  ASSERT_EQ(devices.size(), 1u);
  EXPECT_THAT(devices[0].parents, ElementsAre("cciss/c0d0", "sdb1"));
}

TEST(BlockDevicesTest, ASlashInANameIsRestored) {
  SysTree tree;
  tree.Device("cciss!c0d0", "104:0", "8");
  EXPECT_EQ(tree.Read().at(0).name, "cciss/c0d0");
}

TEST(BlockDevicesTest, ADeviceWithoutItsFilesIsSkipped) {
  SysTree tree;
  tree.Device("sda", "8:0", "1")
      .Device("sdb", "", "1")
      .Device("sdc", "8:32", "")
      .Device("sdd", "8", "1")
      .Device("sde", "8:x", "1")
      .Device("sda/sda1", "", "")
      .Attribute("partition", "1\n");
  const auto devices = tree.Read();
  ASSERT_EQ(devices.size(), 1u);
  EXPECT_EQ(devices[0].name, "sda");
}

TEST(BlockDevicesTest, WithoutTheFolderThereAreNone) {
  EXPECT_THAT(ReadBlockDevices("/nonexistent", NoProperties, {}), IsEmpty());
}

TEST(BlockDevicesTest, AnAbsurdSizeStaysInRange) {
  SysTree tree;
  tree.Device("sda", "8:0", "9223372036854775807").Device("sdb", "8:16", "-5");
  const auto devices = tree.Read();
  ASSERT_EQ(devices.size(), 2u);
  EXPECT_EQ(devices[0].size, 9223372036854775807 / 512 * 512);
  EXPECT_EQ(devices[1].size, 0);
}

TEST(BlockDevicesTest, FindsMountPointsByNumberAndByName) {
  SysTree tree;
  tree.Device("sda", "8:0", "1").Device("dm-0", "253:0", "1").Attribute("dm/name", "vg-root\n");
  const auto devices = tree.Read({MakeMount(makedev(8, 0), "none", "/z"),
                                  MakeMount(makedev(0, 40), "/dev/sda", "/b"),
                                  MakeMount(makedev(0, 41), "/dev/mapper/vg-root", "/"),
                                  MakeMount(makedev(0, 42), "/dev/mapper/", "/none"),
                                  MakeMount(makedev(0, 43), "tmpfs", "/tmp")});
  ASSERT_EQ(devices.size(), 2u);
  EXPECT_THAT(devices[0].mountPoints, ElementsAre("/"));
  EXPECT_THAT(devices[1].mountPoints, ElementsAre("/b", "/z"));
}

TEST(BlockDevicesTest, TheDeviceManagerKnowsTheContentOfADevice) {
  SysTree tree;
  tree.Device("sda", "8:0", "1");
  const auto devices = tree.Read({}, [](dev_t number) -> DeviceProperties {
    EXPECT_EQ(number, makedev(8, 0));
    return {{"ID_FS_TYPE", "ext4"},
            {"ID_FS_LABEL_ENC", "My\\x20Disk\\x5cx\\xg0\\x2"},
            {"ID_FS_UUID_ENC", "12-34"}};
  });
  ASSERT_EQ(devices.size(), 1u);
  EXPECT_EQ(devices[0].filesystem, "ext4");
  EXPECT_EQ(devices[0].label, "My Disk\\x\\xg0\\x2");
  EXPECT_EQ(devices[0].uuid, "12-34");
}

TEST(BlockDevicesTest, ReadsWhatTheDeviceManagerNoted) {
  const Testing::ScopedTempDir folder;
  folder.Write("b8:1", "E:ID_FS_TYPE=ext4\nS:disk/by-label/a\nE:ID_FS_LABEL_ENC=a=b\nE:\n");
  EXPECT_THAT(ReadDeviceProperties(makedev(8, 1), folder.GetPath()),
              ElementsAre(Pair("ID_FS_LABEL_ENC", "a=b"), Pair("ID_FS_TYPE", "ext4")));
}

TEST(BlockDevicesTest, AnUnknownDeviceHasNoProperties) {
  EXPECT_THAT(ReadDeviceProperties(makedev(4095, 1048575)), IsEmpty());
}

struct LabelCase {
  const char* name;
  const char* encoded;
  std::string label;
};

const LabelCase kLabels[] = {
    {"Empty", "", ""},
    {"Plain", "root", "root"},
    {"Space", "My\\x20Disk", "My Disk"},
    {"UpperCaseDigits", "\\x2F\\x2f", "//"},
    {"BackslashItself", "a\\x5cx20b", "a\\x20b"},
    {"Nul", "a\\x00b", std::string("a\0b", 3)},
    {"HighByte", "\\xff", "\xff"},
    {"CutAfterTheBackslash", "a\\", "a\\"},
    {"CutAfterTheX", "a\\x", "a\\x"},
    {"CutAfterOneDigit", "a\\x2", "a\\x2"},
    {"NoDigits", "\\xzz", "\\xzz"},
    {"OneDigit", "\\x2g", "\\x2g"},
    {"CapitalX", "\\X20", "\\X20"},
    {"TwoInARow", "\\x41\\x42", "AB"},
};

class DeviceLabelTest : public ::testing::TestWithParam<LabelCase> {};

TEST_P(DeviceLabelTest, IsDecoded) {
  SysTree tree;
  tree.Device("sda", "8:0", "1");
  const auto devices = tree.Read({}, [](dev_t) -> DeviceProperties {
    return {{"ID_FS_LABEL_ENC", GetParam().encoded}};
  });
  ASSERT_EQ(devices.size(), 1u);
  EXPECT_EQ(devices[0].label, GetParam().label);
}

INSTANTIATE_TEST_SUITE_P(Labels, DeviceLabelTest, ::testing::ValuesIn(kLabels),
                         [](const auto& test) { return test.param.name; });

struct SizeCase {
  const char* name;
  const char* text;
  long size;  // -1 if the device is skipped
};

const SizeCase kSizes[] = {
    {"Zero", "0", 0},
    {"One", "1", 512},
    {"WithSpaceAroundIt", " 8 ", 4096},
    {"LargestThatFits", "18014398509481983", 9223372036854775296},
    {"OneTooMany", "18014398509481984", 9223372036854775296},
    {"LargestNumber", "9223372036854775807", 9223372036854775296},
    {"Negative", "-1", 0},
    {"SmallestNumber", "-9223372036854775808", 0},
    {"Beyond64Bits", "9223372036854775808", -1},
    {"Word", "large", -1},
    {"Empty", "", -1},
};

class DeviceSizeTest : public ::testing::TestWithParam<SizeCase> {};

TEST_P(DeviceSizeTest, IsInBytes) {
  SysTree tree;
  tree.Device("sda", "8:0", GetParam().text);
  const auto devices = tree.Read();
  EXPECT_EQ(devices.empty() ? -1 : devices[0].size, GetParam().size);
}

INSTANTIATE_TEST_SUITE_P(Sizes, DeviceSizeTest, ::testing::ValuesIn(kSizes),
                         [](const auto& test) { return test.param.name; });

TEST(BlockDevicesTest, PropertiesOfADeviceMayBeDamaged) {
  const Testing::ScopedTempDir folder;
  folder.Write("b8:1", "E:\nE\n=\nE:=empty\nE:A=1\nE:A=2\nX:B=3\nE:C=\n");
  EXPECT_THAT(ReadDeviceProperties(makedev(8, 1), folder.GetPath()),
              ElementsAre(Pair("", "empty"), Pair("A", "2"), Pair("C", "")));
}

}  // namespace
}  // namespace Kestrel::Host
