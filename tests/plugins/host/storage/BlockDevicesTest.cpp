// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/storage/BlockDevices.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kestrel/KestrelException.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>

#include "support/ScopedTempDir.h"

namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::ThrowsMessage;

/// A simulated /sys.
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
  std::vector<BlockDevice> Read(const std::vector<Mount>& mounts = {}) const {
    return ReadBlockDevices(folder_.GetPath(), mounts);
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

TEST(BlockDevicesTest, ReadsADiskAndItsPartitions) {
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

TEST(BlockDevicesTest, AMissingListIsAnError) {
  EXPECT_THAT([] { ReadBlockDevices("/nonexistent", {}); },
              ThrowsMessage<KestrelException>(
                  "Unable to read /nonexistent/block: No such file or directory"));
}

struct TransportCase {
  const char* name;
  const char* disk;
  const char* path;  // the folder that contains the disk, below /sys/devices
  const char* transport;
};

class DeviceTransportTest : public ::testing::TestWithParam<TransportCase> {};

TEST_P(DeviceTransportTest, IsFoundOnThePathToTheDisk) {
  const Testing::ScopedTempDir folder;
  const std::string disk = std::string(GetParam().path) + "/" + GetParam().disk;
  folder.Write("devices/" + disk + "/dev", "8:0\n");
  folder.Write("devices/" + disk + "/size", "8\n");
  folder.MakeDirectory("block");
  ASSERT_EQ(::symlink(("../devices/" + disk).c_str(),
                      folder.GetPath(std::string("block/") + GetParam().disk).c_str()),
            0);
  const auto devices = ReadBlockDevices(folder.GetPath(), {});
  ASSERT_EQ(devices.size(), 1U);
  EXPECT_EQ(devices[0].transport, GetParam().transport);
}

const TransportCase kTransports[] = {
    {"Sata", "sda", "pci0000:00/0000:00:1f.2/ata1/host0/target0:0:0/0:0:0:0/block", "sata"},
    {"Usb", "sdb", "pci0000:00/0000:00:14.0/usb2/2-3/2-3:1.0/host4/target4:0:0/4:0:0:0/block",
     "usb"},
    {"Sas", "sdc", "pci0000:00/host0/port-0:0/end_device-0:0/target0:0:0/0:0:0:0/block", "sas"},
    {"FibreChannel", "sdd", "pci0000:00/host1/rport-1:0-0/target1:0:0/1:0:0:0/block", "fc"},
    {"Iscsi", "sde", "platform/host9/session1/target9:0:0/9:0:0:0/block", "iscsi"},
    {"Nvme", "nvme0n1", "pci0000:00/0000:00:1d.0/0000:03:00.0/nvme/nvme0", "nvme"},
    {"NvmeWithSeveralPaths", "nvme1n1", "virtual/nvme-subsystem/nvme-subsys1", "nvme"},
    {"Virtio", "vda", "pci0000:00/0000:00:02.0/virtio1/block", "virtio"},
    {"VirtioScsi", "sdf", "pci0000:00/0000:00:05.0/virtio2/host2/target2:0:0/2:0:0:0/block",
     "virtio"},
    {"Card", "mmcblk0", "platform/soc/fe340000.mmc/mmc_host/mmc0/mmc0:aaaa/block", "mmc"},
    {"DiskInAUsbHubOfAVirtualMachine", "sdg", "virtio1/usb1/1-1/host5/block", "usb"},
    {"Loop", "loop0", "virtual/block", ""},
    {"Mapped", "dm-0", "virtual/block", ""},
    {"NameOnly", "sdh", "usbfoo/ata/nvme/block", ""},
};

INSTANTIATE_TEST_SUITE_P(Paths, DeviceTransportTest, ::testing::ValuesIn(kTransports),
                         [](const auto& test) { return test.param.name; });

TEST(BlockDevicesTest, TheNameOfADiskWithoutALinkMayShowItsTransport) {
  SysTree tree;
  tree.Device("nvme0n1", "259:0", "8")
      .Device("mmcblk1", "179:0", "8")
      .Device("nvmexyz", "8:0", "8");
  const auto devices = tree.Read();
  ASSERT_EQ(devices.size(), 3U);
  EXPECT_EQ(devices[0].transport, "mmc");
  EXPECT_EQ(devices[1].transport, "nvme");
  EXPECT_EQ(devices[2].transport, "");
}

TEST(BlockDevicesTest, TheModelOfACardIsItsName) {
  SysTree tree;
  tree.Device("mmcblk0", "179:0", "8").Attribute("device/name", "SD32G\n");
  EXPECT_EQ(tree.Read().at(0).model, "SD32G");
}

TEST(BlockDevicesTest, OnlyDisksHaveAModelAndATransport) {
  SysTree tree;
  tree.Device("nvme0n1", "259:0", "8")
      .Attribute("device/model", "Fast\n")
      .Device("nvme0n1/nvme0n1p1", "259:1", "4")
      .Attribute("partition", "1\n");
  const auto devices = tree.Read();
  ASSERT_EQ(devices.size(), 2U);
  EXPECT_EQ(devices[0].model, "Fast");
  EXPECT_EQ(devices[0].transport, "nvme");
  EXPECT_EQ(devices[1].model, "");
  EXPECT_EQ(devices[1].transport, "");
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

}  // namespace
}  // namespace Kestrel::Host
