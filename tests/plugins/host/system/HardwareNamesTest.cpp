// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/HardwareNames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "kestrel/KestrelException.h"
#include "plugins/host/support/PlainUser.h"
#include "support/ScopedTempDir.h"

namespace Kestrel::Host {
namespace {

using Testing::PlainUser;
using Testing::ScopedTempDir;
using ::testing::ThrowsMessage;

constexpr char kNames[] =
    "# a comment\n"
    "\n"
    "0e11  First Maker\n"
    "\t0001  Model One\n"
    "\t\t0e11 4091  Model One in a box\n"
    "# a comment between devices\n"
    "\n"
    "\ta0f0  Model Two  \n"
    "1af4  Second Maker, Inc. [Short]\n"
    "\t1041  Network device\n"
    "ffff  Illegal\n"
    "AT 0e12  not a vendor\n"
    "\t0001  not a model\n"
    "C 02  Network controller\n"
    "\t00  Ethernet controller\n"
    "\t\t01  an interface\n"
    "\t80  Network controller, other\n"
    "C 0c  Serial bus controller\n"
    "\t03  USB controller\n"
    "HID 01  not a class\n"
    "C 1  too short\n"
    "C 123  too long\n";

struct NameCase {
  const char* name;
  unsigned vendor;
  unsigned device;
  const char* vendorName;
  const char* deviceName;
};

const NameCase kNameCases[] = {
    {"First", 0x0e11, 0x0001, "First Maker", "Model One"},
    {"AfterASubsystemACommentAndAnEmptyLine", 0x0e11, 0xa0f0, "First Maker", "Model Two"},
    {"ASubsystemIsNoDevice", 0x0e11, 0x0e11, "First Maker", ""},
    {"OfAnotherVendor", 0x1af4, 0x1041, "Second Maker, Inc. [Short]", "Network device"},
    {"TheDevicesOfTheNextVendorAreNotItsOwn", 0x0e11, 0x1041, "First Maker", ""},
    {"TheGreatestNumber", 0xffff, 0x0001, "Illegal", ""},
    {"UnknownVendor", 0x1234, 0x0001, "", ""},
    {"AnotherSectionIsNoVendor", 0x0e12, 0x0001, "", ""},
    {"AClassIsNoVendor", 0x000c, 0x0003, "", ""},
};

class HardwareNamesTest : public ::testing::TestWithParam<NameCase> {};

TEST_P(HardwareNamesTest, FindsVendorsAndDevices) {
  const HardwareNames names(kNames);
  const auto vendor = static_cast<std::uint16_t>(GetParam().vendor);
  EXPECT_EQ(names.FindVendor(vendor), GetParam().vendorName);
  EXPECT_EQ(names.FindDevice(vendor, static_cast<std::uint16_t>(GetParam().device)),
            GetParam().deviceName);
}

INSTANTIATE_TEST_SUITE_P(Numbers, HardwareNamesTest, ::testing::ValuesIn(kNameCases),
                         [](const auto& test) { return test.param.name; });

TEST(HardwareNamesClassTest, FindsClassesAndSubclasses) {
  const HardwareNames names(kNames);
  EXPECT_EQ(names.FindClass(0x02), "Network controller");
  EXPECT_EQ(names.FindSubclass(0x02, 0x00), "Ethernet controller");
  EXPECT_EQ(names.FindSubclass(0x02, 0x80), "Network controller, other");
  EXPECT_EQ(names.FindSubclass(0x02, 0x01), "");  // the number of an interface
  EXPECT_EQ(names.FindSubclass(0x02, 0x03), "");  // a subclass of another class
  EXPECT_EQ(names.FindClass(0x0c), "Serial bus controller");
  EXPECT_EQ(names.FindClass(0x01), "");
  EXPECT_EQ(names.FindClass(0x12), "");
  EXPECT_EQ(names.FindSubclass(0x01, 0x00), "");
}

TEST(HardwareNamesClassTest, HasNoneByDefault) {
  const HardwareNames names;
  EXPECT_EQ(names.FindVendor(0), "");
  EXPECT_EQ(names.FindDevice(0, 0), "");
  EXPECT_EQ(names.FindClass(0), "");
  EXPECT_EQ(names.FindSubclass(0, 0), "");
}

TEST(HardwareNamesClassTest, UsesTheFirstOfTwoEntriesOfANumber) {
  const HardwareNames names("0001  One\n\t0001  A\n\t0001  B\n0001  Other\n\t0002  C\n");
  EXPECT_EQ(names.FindVendor(1), "One");
  EXPECT_EQ(names.FindDevice(1, 1), "A");
  EXPECT_EQ(names.FindDevice(1, 2), "");
}

// Damage that a file may have. The rest is still found.
struct DamagedCase {
  const char* name;
  std::string text;
};

const DamagedCase kDamaged[] = {
    {"Nothing", ""},
    {"OnlyALineFeed", "\n"},
    {"OnlyTabs", "\t\n\t\t\n\t"},
    {"ADeviceBeforeAnyVendor", "\t0001  Model\n"},
    {"ANumberThatIsCut", "00"},
    {"ANumberWithoutAName", "0002\n\t0002\n"},
    {"NoHexadecimalNumber", "wxyz  Maker\n000x  Maker\n-001  Maker\n+001  Maker\n"},
    {"NoSpaceAfterTheNumber", "0002Maker\n00021  Maker\n"},
    {"NulBytes", std::string("\0\0\0\0\0\n0\0"
                             "02  Maker\n",
                             18)},
    {"AnEndlessLine", std::string(1 << 20, '0') + "\n"},
    {"AClassWithoutANumber", "C \nC\nC zz  Class\n"},
};

class DamagedNamesTest : public ::testing::TestWithParam<DamagedCase> {};

TEST_P(DamagedNamesTest, AreSkipped) {
  const HardwareNames names(GetParam().text + "\n0001  Maker\n\t0001  Model");
  EXPECT_EQ(names.FindVendor(1), "Maker");
  EXPECT_EQ(names.FindDevice(1, 1), "Model");
  EXPECT_EQ(names.FindVendor(2), "");
  EXPECT_EQ(names.FindVendor(0), "");
  EXPECT_EQ(names.FindClass(0), "");
}

INSTANTIATE_TEST_SUITE_P(Files, DamagedNamesTest, ::testing::ValuesIn(kDamaged),
                         [](const auto& test) { return test.param.name; });

TEST(HardwareNamesFileTest, IsInOneOfTwoFolders) {
  const ScopedTempDir share;
  EXPECT_EQ(ReadHardwareNames(share.GetPath(), "pci.ids"), "");
  share.Write("hwdata/pci.ids", "newer");
  EXPECT_EQ(ReadHardwareNames(share.GetPath(), "pci.ids"), "newer");
  EXPECT_EQ(ReadHardwareNames(share.GetPath(), "usb.ids"), "");
  share.Write("misc/pci.ids", "usual");
  EXPECT_EQ(ReadHardwareNames(share.GetPath(), "pci.ids"), "usual");
}

TEST(HardwareNamesFileTest, IsAnErrorIfItCannotBeRead) {
  const ScopedTempDir share;
  ASSERT_EQ(::chmod(share.GetPath().c_str(), 0755), 0);
  const std::string path = share.Write("misc/pci.ids", kNames);
  ASSERT_EQ(::chmod(path.c_str(), 0), 0);
  const PlainUser user;
  EXPECT_THAT([&] { ReadHardwareNames(share.GetPath(), "pci.ids"); },
              ThrowsMessage<KestrelException>("Unable to read " + path + ": Permission denied"));
}

TEST(HardwareNamesFileTest, IsAnErrorIfItIsAFolder) {
  const ScopedTempDir share;
  const std::string path = share.MakeDirectory("misc/usb.ids");
  EXPECT_THAT([&] { ReadHardwareNames(share.GetPath(), "usb.ids"); },
              ThrowsMessage<KestrelException>("Unable to read " + path + ": Is a directory"));
}

}  // namespace
}  // namespace Kestrel::Host
