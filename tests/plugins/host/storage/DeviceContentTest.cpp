// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/storage/DeviceContent.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kestrel/KestrelException.h>
#include <sys/sysmacros.h>

#include <map>
#include <string>

#include "plugins/host/frame/FileDescriptor.h"
#include "plugins/host/support/FileLimit.h"
#include "support/Sanitizer.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using Testing::ScopedTempDir;
using ::testing::ThrowsMessage;

const dev_t kNumber = makedev(8, 1);

// Returns the content of a device for which the device manager has stored `lines`.
std::optional<DeviceContent> Stored(const std::string& lines) {
  const ScopedTempDir folder;
  folder.Write("b8:1", lines);
  return ReadDeviceContent("nosuch", kNumber, folder.GetPath(), folder.GetPath());
}

TEST(DeviceContentTest, IsReadFromWhatTheDeviceManagerStored) {
  const auto content = Stored(
      "I:1\nE:ID_FS_TYPE=ext4\nE:ID_FS_LABEL=My_Disk\n"
      "E:ID_FS_LABEL_ENC=My\\x20Disk\\x5cx\\xg0\\x2\nE:ID_FS_UUID_ENC=12-34\n"
      "E:ID_PART_ENTRY_NAME=EFI\\x20system\nE:ID_PART_ENTRY_UUID=56-78\n");
  ASSERT_TRUE(content.has_value());
  EXPECT_EQ(content->filesystem, "ext4");
  EXPECT_EQ(content->label, "My Disk\\x\\xg0\\x2");
  EXPECT_EQ(content->uuid, "12-34");
  EXPECT_EQ(content->partitionLabel, "EFI system");
  EXPECT_EQ(content->partitionUuid, "56-78");
}

TEST(DeviceContentTest, TheDeviceManagerMayReportThatThereIsNoContent) {
  const auto content = Stored("I:1\n");
  ASSERT_TRUE(content.has_value());
  EXPECT_EQ(content->filesystem, "");
  EXPECT_EQ(content->partitionUuid, "");
}

TEST(DeviceContentTest, WithoutFileAndDeviceItIsUnknown) {
  const ScopedTempDir folder;
  EXPECT_FALSE(ReadDeviceContent("nosuch", kNumber, folder.GetPath(), folder.GetPath()));
}

TEST(DeviceContentTest, AnotherFileWithTheNameOfTheDeviceIsNotRead) {
  const ScopedTempDir folder;
  folder.Write("sda1", "text");
  EXPECT_FALSE(ReadDeviceContent("sda1", kNumber, folder.GetPath(), folder.GetPath()));
  EXPECT_FALSE(ReadDeviceContent("zero", kNumber, folder.GetPath(), "/dev"));
}

TEST(DeviceContentTest, ReadsThePropertiesOfTheDeviceManager) {
  const ScopedTempDir folder;
  folder.Write("b8:1", "E:ID_FS_TYPE=ext4\nS:disk/by-label/a\nE:ID_FS_LABEL_ENC=a=b\nE:\n");
  const auto properties = ReadDeviceProperties(kNumber, folder.GetPath());
  ASSERT_TRUE(properties.has_value());
  EXPECT_THAT(*properties, ElementsAre(Pair("ID_FS_LABEL_ENC", "a=b"), Pair("ID_FS_TYPE", "ext4")));
}

TEST(DeviceContentTest, PropertiesOfADeviceMayBeDamaged) {
  const ScopedTempDir folder;
  folder.Write("b8:1", "E:\nE\n=\nE:=empty\nE:A=1\nE:A=2\nX:B=3\nE:C=\n");
  const auto properties = ReadDeviceProperties(kNumber, folder.GetPath());
  ASSERT_TRUE(properties.has_value());
  EXPECT_THAT(*properties, ElementsAre(Pair("", "empty"), Pair("A", "2"), Pair("C", "")));
}

TEST(DeviceContentTest, AnUnknownDeviceHasNoProperties) {
  EXPECT_FALSE(ReadDeviceProperties(makedev(4095, 1048575), "/run/udev/data"));
  EXPECT_FALSE(ReadDeviceProperties(kNumber, "/nowhere"));
}

TEST(DeviceContentTest, AFileThatCannotBeReadIsAnError) {
  const ScopedTempDir folder;
  const std::string path = folder.MakeDirectory("b8:1");
  EXPECT_THAT([&] { ReadDeviceContent("x", kNumber, folder.GetPath(), "/dev"); },
              ThrowsMessage<KestrelException>("Unable to read " + path + ": Is a directory"));
}

TEST(DeviceContentTest, TooManyOpenFilesAreAnError) {
  if (Testing::kIsSanitized) {
    GTEST_SKIP() << "the sanitizer needs descriptors of its own";
  }
  const Testing::FileLimit limit(0);
  EXPECT_THAT([&] { ReadDeviceProperties(kNumber, "/nowhere"); },
              ThrowsMessage<KestrelException>("Unable to read /nowhere/b8:1: Too many open files"));
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
  const auto content = Stored(std::string("E:ID_FS_LABEL_ENC=") + GetParam().encoded + "\n");
  ASSERT_TRUE(content.has_value());
  EXPECT_EQ(content->label, GetParam().label);
}

INSTANTIATE_TEST_SUITE_P(Labels, DeviceLabelTest, ::testing::ValuesIn(kLabels),
                         [](const auto& test) { return test.param.name; });

#ifdef KESTREL_HOST_HAS_BLKID

// Images of devices.
struct ImageCase {
  const char* name;
  const char* command;  // creates the content in a file of 8 MiB of zeros
};

class ProbeContentTest : public ::testing::TestWithParam<ImageCase> {
 protected:
  std::optional<DeviceContent> Probe() const {
    const FileDescriptor file(::open(folder_.GetPath("image").c_str(), O_RDONLY | O_CLOEXEC));
    return ProbeContent(file.Get());
  }

  // Returns the tags that blkid prints.
  std::map<std::string, std::string> Tags() const {
    std::map<std::string, std::string> tags;
    for (const std::string& line :
         Testing::WitnessLines("PATH=$PATH:/sbin blkid --probe --output export '" +
                               folder_.GetPath("image") + "' || true")) {
      tags[line.substr(0, line.find('='))] = line.substr(line.find('=') + 1);
    }
    return tags;
  }

  const ScopedTempDir folder_;
};

TEST_P(ProbeContentTest, AgreesWithBlkid) {
  Testing::Witness("cd '" + folder_.GetPath() +
                   "' && PATH=$PATH:/sbin && truncate -s 8M image && " + GetParam().command);
  const auto content = Probe();
  ASSERT_TRUE(content.has_value());
  auto tags = Tags();
  EXPECT_EQ(content->filesystem, tags["TYPE"]);
  EXPECT_EQ(content->label, tags["LABEL"]);
  EXPECT_EQ(content->uuid, tags["UUID"]);
}

const ImageCase kImages[] = {
    {"Zeros", "true"},
    {"Swap", "mkswap -q -L swapped -U 11111111-2222-3333-4444-555555555555 image"},
    {"Ext4", "mkfs.ext4 -q -L MyDisk image"},
    {"Ext2WithoutALabel", "mkfs.ext2 -q image"},
    {"PartitionTable",
     "printf '\\125\\252' | dd of=image bs=1 seek=510 conv=notrunc status=none && "
     "printf '\\0\\0\\1\\0\\203\\0\\0\\0\\1\\0\\0\\0\\0\\10\\0\\0' | "
     "dd of=image bs=1 seek=446 conv=notrunc status=none"},
};
INSTANTIATE_TEST_SUITE_P(Images, ProbeContentTest, ::testing::ValuesIn(kImages),
                         [](const auto& test) { return test.param.name; });

TEST_F(ProbeContentTest, ReadsALabel) {
  Testing::Witness("cd '" + folder_.GetPath() +
                   "' && truncate -s 8M image && PATH=$PATH:/sbin mkswap -q -L swapped image");
  const auto content = Probe();
  ASSERT_TRUE(content.has_value());
  EXPECT_EQ(content->filesystem, "swap");
  EXPECT_EQ(content->label, "swapped");
}

TEST_F(ProbeContentTest, WhatCannotBeReadIsUnknown) {
  const FileDescriptor folder(::open(folder_.GetPath().c_str(), O_RDONLY | O_CLOEXEC));
  EXPECT_FALSE(ProbeContent(folder.Get()));
  EXPECT_FALSE(ProbeContent(-1));
}

#endif

}  // namespace
}  // namespace Kestrel::Host
