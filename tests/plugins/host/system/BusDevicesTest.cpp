// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/BusDevices.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "kestrel/KestrelException.h"
#include "plugins/host/support/PlainUser.h"
#include "support/ScopedTempDir.h"

namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Testing::PlainUser;
using Testing::ScopedTempDir;
using ::testing::ThrowsMessage;

constexpr char kPciNames[] =
    "8086  Maker A\n\t1234  Bridge One\n\tabcd  Card\n10de  Maker B\n"
    "C 02  Network controller\n\t00  Ethernet controller\n"
    "C 03  Display controller\n";
constexpr char kUsbNames[] = "046d  Maker M\n\tc077  Mouse\nC 03  HID\n\t01  Boot\n";

class BusDevicesTest : public ::testing::Test {
 protected:
  void Pci(const std::string& address, const std::string& vendor, const std::string& device,
           const std::string& deviceClass, const std::string& driver = "") const {
    const std::string folder = "bus/pci/devices/" + address;
    sys_.Write(folder + "/vendor", vendor);
    sys_.Write(folder + "/device", device);
    sys_.Write(folder + "/class", deviceClass);
    if (!driver.empty()) {
      Link("../../../../bus/pci/drivers/" + driver, folder + "/driver");
    }
  }

  // `deviceClass` contains the class, the subclass and the protocol, with two digits each.
  void Usb(const std::string& address, const std::string& vendor, const std::string& product,
           const std::string& deviceClass) const {
    const std::string folder = "bus/usb/devices/" + address;
    sys_.Write(folder + "/idVendor", vendor);
    sys_.Write(folder + "/idProduct", product);
    Class(folder + "/bDevice", deviceClass);
    Link("../../../../bus/usb/drivers/usb", folder + "/driver");
  }

  // The kernel lists an interface both next to the folder of its device and in that folder.
  void Interface(const std::string& device, const std::string& name, const std::string& itsClass,
                 const std::string& driver) const {
    for (const std::string& folder :
         {"bus/usb/devices/" + name, "bus/usb/devices/" + device + "/" + name}) {
      Class(folder + "/bInterface", itsClass);
      if (!driver.empty()) {
        Link("../../../../../bus/usb/drivers/" + driver, folder + "/driver");
      }
    }
  }

  void Link(const std::string& target, const std::string& name) const {
    ASSERT_EQ(::symlink(target.c_str(), sys_.GetPath(name).c_str()), 0) << name;
  }

  std::vector<BusDevice> ReadPci() const {
    return ReadPciDevices(sys_.GetPath(), HardwareNames(kPciNames));
  }
  std::vector<BusDevice> ReadUsb() const {
    return ReadUsbDevices(sys_.GetPath(), HardwareNames(kUsbNames));
  }

  const ScopedTempDir sys_;

 private:
  void Class(const std::string& prefix, const std::string& numbers) const {
    sys_.Write(prefix + "Class", numbers.substr(0, 2) + "\n");
    sys_.Write(prefix + "SubClass", numbers.substr(2, 2) + "\n");
    sys_.Write(prefix + "Protocol", numbers.substr(4, 2) + "\n");
  }
};

TEST_F(BusDevicesTest, ReadsADeviceOnPci) {
  Pci("0000:00:1f.6", "0x8086\n", "0xabcd\n", "0x020000\n", "e1000e");
  const auto devices = ReadPci();
  ASSERT_EQ(devices.size(), 1u);
  EXPECT_EQ(devices[0].bus, Bus::Pci);
  EXPECT_EQ(devices[0].address, "0000:00:1f.6");
  EXPECT_EQ(devices[0].vendorId, 0x8086);
  EXPECT_EQ(devices[0].deviceId, 0xabcd);
  EXPECT_EQ(devices[0].classId, 0x020000u);
  EXPECT_EQ(devices[0].vendor, "Maker A");
  EXPECT_EQ(devices[0].device, "Card");
  EXPECT_EQ(devices[0].className, "Ethernet controller");
  EXPECT_THAT(devices[0].drivers, ElementsAre("e1000e"));
}

TEST_F(BusDevicesTest, ListsDevicesByAddress) {
  Pci("0000:03:00.0", "0x1\n", "0x1\n", "0x0\n");
  Pci("0000:00:02.0", "0x1\n", "0x1\n", "0x0\n");
  Pci("10000:e0:06.0", "0x1\n", "0x1\n", "0x0\n");
  std::vector<std::string> addresses;
  for (const BusDevice& device : ReadPci()) {
    addresses.push_back(device.address);
  }
  EXPECT_THAT(addresses, ElementsAre("0000:00:02.0", "0000:03:00.0", "10000:e0:06.0"));
}

TEST_F(BusDevicesTest, NamesThatAreInNoListAreEmpty) {
  Pci("a", "0x10de\n", "0x1\n", "0x058000\n");
  Pci("b", "0x1\n", "0x1\n", "0xfe0000\n");
  const auto devices = ReadPci();
  ASSERT_EQ(devices.size(), 2u);
  EXPECT_EQ(devices[0].vendor, "Maker B");
  EXPECT_EQ(devices[0].device, "");
  EXPECT_EQ(devices[0].className, "Memory controller");  // a name from the standard
  EXPECT_THAT(devices[0].drivers, IsEmpty());
  EXPECT_EQ(devices[1].vendor, "");
  EXPECT_EQ(devices[1].className, "");
}

TEST_F(BusDevicesTest, ASubclassWithoutANameHasTheNameOfItsClass) {
  Pci("a", "0x1\n", "0x1\n", "0x038000\n");
  EXPECT_EQ(ReadPci().at(0).className, "Display controller");
}

TEST_F(BusDevicesTest, WithoutNamesTheClassHasItsStandardName) {
  Pci("a", "0x8086\n", "0xabcd\n", "0x020000\n");
  const auto devices = ReadPciDevices(sys_.GetPath(), HardwareNames());
  ASSERT_EQ(devices.size(), 1u);
  EXPECT_EQ(devices[0].vendor, "");
  EXPECT_EQ(devices[0].className, "Network controller");
}

TEST_F(BusDevicesTest, AnAddressMayBeAnyName) {
  Pci("new\nline \x1b[31m", "0x1\n", "0x1\n", "0x0\n");
  EXPECT_EQ(ReadPci().at(0).address, "new\nline \x1b[31m");
}

TEST_F(BusDevicesTest, ReadsADeviceOnUsb) {
  Usb("1-1.2", "046d\n", "c077\n", "000000");
  Interface("1-1.2", "1-1.2:1.0", "030102", "usbhid");
  const auto devices = ReadUsb();
  ASSERT_EQ(devices.size(), 1u);
  EXPECT_EQ(devices[0].bus, Bus::Usb);
  EXPECT_EQ(devices[0].address, "1-1.2");
  EXPECT_EQ(devices[0].vendorId, 0x046d);
  EXPECT_EQ(devices[0].deviceId, 0xc077);
  EXPECT_EQ(devices[0].vendor, "Maker M");
  EXPECT_EQ(devices[0].device, "Mouse");
  EXPECT_EQ(devices[0].classId, 0x030102u);
  EXPECT_EQ(devices[0].className, "HID");
  EXPECT_THAT(devices[0].drivers, ElementsAre("usbhid"));
}

TEST_F(BusDevicesTest, ADeviceWithAClassOfItsOwnKeepsIt) {
  Usb("usb1", "1d6b\n", "0002\n", "090001");
  Interface("usb1", "1-0:1.0", "090000", "hub");
  const auto devices = ReadUsb();
  ASSERT_EQ(devices.size(), 1u);
  EXPECT_EQ(devices[0].classId, 0x090001u);
  EXPECT_EQ(devices[0].className, "Hub");
}

TEST_F(BusDevicesTest, ADeviceOnUsbMayNameItself) {
  Usb("1-1", "ffff\n", "0001\n", "ff0000");
  sys_.Write("bus/usb/devices/1-1/manufacturer", "  House Made \n");
  sys_.Write("bus/usb/devices/1-1/product", "Lamp\n");
  Usb("1-2", "046d\n", "0001\n", "ff0000");
  sys_.Write("bus/usb/devices/1-2/manufacturer", "Not this\n");
  sys_.Write("bus/usb/devices/1-2/product", "Unlisted mouse\n");
  Usb("1-3", "ffff\n", "0001\n", "000000");
  const auto devices = ReadUsb();
  ASSERT_EQ(devices.size(), 3u);
  EXPECT_EQ(devices[0].vendor, "House Made");
  EXPECT_EQ(devices[0].device, "Lamp");
  EXPECT_EQ(devices[1].vendor, "Maker M");
  EXPECT_EQ(devices[1].device, "Unlisted mouse");
  EXPECT_EQ(devices[2].vendor, "");
  EXPECT_EQ(devices[2].device, "");
  EXPECT_EQ(devices[2].className, "");  // it has no interface whose class could be used
}

TEST_F(BusDevicesTest, EachDriverOfTheInterfacesIsNamedOnce) {
  Usb("1-1", "1\n", "1\n", "000000");
  Interface("1-1", "1-1:1.2", "0a0000", "cdc_ncm");
  Interface("1-1", "1-1:1.0", "020d00", "cdc_ncm");
  Interface("1-1", "1-1:1.3", "ff0000", "");
  Interface("1-1", "1-1:1.1", "030000", "btusb");
  const auto devices = ReadUsb();
  ASSERT_EQ(devices.size(), 1u);
  EXPECT_THAT(devices[0].drivers, ElementsAre("btusb", "cdc_ncm"));
  EXPECT_EQ(devices[0].classId, 0x020d00u);  // the class of the first interface
}

TEST_F(BusDevicesTest, WithoutTheBusThereAreNoDevices) {
  sys_.MakeDirectory("bus/platform");
  EXPECT_THAT(ReadPci(), IsEmpty());
  EXPECT_THAT(ReadUsb(), IsEmpty());
}

TEST_F(BusDevicesTest, ABusWithoutDevicesHasNone) {
  sys_.MakeDirectory("bus/pci/devices");
  EXPECT_THAT(ReadPci(), IsEmpty());
}

TEST_F(BusDevicesTest, NoBusAtAllAndABusWithoutItsFolderAreErrors) {
  const auto missing = ThrowsMessage<KestrelException>(
      "Unable to read " + sys_.GetPath("bus/usb/devices") + ": No such file or directory");
  EXPECT_THAT([this] { ReadUsb(); }, missing);
  sys_.MakeDirectory("bus");
  EXPECT_THAT([this] { ReadUsb(); }, missing);
  sys_.MakeDirectory("bus/usb");
  EXPECT_THAT([this] { ReadUsb(); }, missing);
}

TEST_F(BusDevicesTest, AFolderThatMayNotBeReadIsAnError) {
  Pci("0000:00:00.0", "0x1\n", "0x1\n", "0x0\n");
  const std::string folder = sys_.GetPath("bus/pci/devices");
  ASSERT_EQ(::chmod(sys_.GetPath().c_str(), 0755), 0);
  ASSERT_EQ(::chmod(folder.c_str(), 0), 0);
  {
    const PlainUser user;
    EXPECT_THAT([this] { ReadPci(); }, ThrowsMessage<KestrelException>("Unable to read " + folder +
                                                                       ": Permission denied"));
  }
  ASSERT_EQ(::chmod(folder.c_str(), 0755), 0);
}

TEST_F(BusDevicesTest, AnUnreadableAttributeIsAnErrorAndNotAShorterList) {
  Pci("0000:00:00.0", "0x1\n", "0x1\n", "0x0\n");
  Pci("0000:00:01.0", "0x1\n", "0x1\n", "0x0\n");
  const std::string path = sys_.GetPath("bus/pci/devices/0000:00:01.0/class");
  ASSERT_EQ(::chmod(sys_.GetPath().c_str(), 0755), 0);
  ASSERT_EQ(::chmod(path.c_str(), 0), 0);
  const PlainUser user;
  EXPECT_THAT([this] { ReadPci(); },
              ThrowsMessage<KestrelException>("Unable to read " + path + ": Permission denied"));
}

TEST_F(BusDevicesTest, AnAttributeThatIsMissingIsAnError) {
  sys_.Write("bus/pci/devices/0000:00:00.0/vendor", "0x1\n");
  EXPECT_THAT([this] { ReadPci(); },
              ThrowsMessage<KestrelException>("Unable to read " +
                                              sys_.GetPath("bus/pci/devices/0000:00:00.0/device") +
                                              ": No such file or directory"));
}

TEST_F(BusDevicesTest, ADeviceIsSkippedOnlyIfItsNameIsGone) {
  Pci("0000:00:00.0", "0x1\n", "0x1\n", "0x0\n");
  // While the kernel removes a device, the target of its link may already be missing. The name of
  // the device still exists then. A device may be skipped only if its name is gone too.
  Link("../../../devices/gone", "bus/pci/devices/0000:00:01.0");
  EXPECT_THAT([this] { ReadPci(); },
              ThrowsMessage<KestrelException>("Unable to read " +
                                              sys_.GetPath("bus/pci/devices/0000:00:01.0/vendor") +
                                              ": No such file or directory"));
  ASSERT_EQ(::unlink(sys_.GetPath("bus/pci/devices/0000:00:01.0").c_str()), 0);
  EXPECT_EQ(ReadPci().size(), 1u);
}

TEST_F(BusDevicesTest, ADriverThatIsNotALinkIsAnError) {
  Pci("0000:00:00.0", "0x1\n", "0x1\n", "0x0\n");
  const std::string path = sys_.Write("bus/pci/devices/0000:00:00.0/driver", "e1000e");
  EXPECT_THAT([this] { ReadPci(); },
              ThrowsMessage<KestrelException>("Unable to read " + path + ": Invalid argument"));
}

struct NumberCase {
  const char* name;
  std::string text;
  long number;  // -1 if it is not understood
};

const NumberCase kNumbers[] = {
    {"WithPrefix", "0x8086\n", 0x8086},
    {"WithoutPrefix", "8086\n", 0x8086},
    {"UpperCase", "0xABCD\n", 0xabcd},
    {"WithoutALineFeed", "0x1", 1},
    {"Zero", "0x0000\n", 0},
    {"TheGreatest", "0xffff\n", 0xffff},
    {"TooGreat", "0x10000\n", -1},
    {"FarTooGreat", "0xffffffffff\n", -1},
    {"Empty", "", -1},
    {"OnlyThePrefix", "0x\n", -1},
    {"AWord", "maker\n", -1},
    {"Negative", "-1\n", -1},
    {"TwoNumbers", "0x1 0x2\n", -1},
    {"ANulByte", std::string("0x1\0\n", 5), -1},
};

class BusNumberTest : public ::testing::TestWithParam<NumberCase> {};

TEST_P(BusNumberTest, IsHexadecimal) {
  const ScopedTempDir sys;
  const std::string folder = "bus/pci/devices/0000:00:00.0";
  const std::string path = sys.Write(folder + "/vendor", GetParam().text);
  sys.Write(folder + "/device", "0x1\n");
  sys.Write(folder + "/class", "0x0\n");
  if (GetParam().number >= 0) {
    EXPECT_EQ(ReadPciDevices(sys.GetPath(), HardwareNames()).at(0).vendorId, GetParam().number);
    return;
  }
  EXPECT_THAT([&] { ReadPciDevices(sys.GetPath(), HardwareNames()); },
              ThrowsMessage<KestrelException>("Unable to understand " + path));
}

INSTANTIATE_TEST_SUITE_P(Texts, BusNumberTest, ::testing::ValuesIn(kNumbers),
                         [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace Kestrel::Host
