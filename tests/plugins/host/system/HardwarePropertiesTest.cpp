// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <numeric>
#include <string>
#include <vector>

#include "kestrel/KestrelException.h"
#include "plugins/host/system/BusDevices.h"
#include "plugins/host/system/CpuUsage.h"
#include "plugins/host/system/HardwareNames.h"
#include "support/Sanitizer.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

// Properties of the readers for processors and devices, tested with many inputs.
namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Testing::ScopedTempDir;
using ::testing::SizeIs;
using ::testing::ThrowsMessage;
using Testing::WitnessLines;

/// A sequence of numbers that depends only on the seed.
class Numbers {
 public:
  explicit Numbers(unsigned seed) : state_(seed) {}

  unsigned Below(unsigned bound) {
    state_ = state_ * 1664525u + 1013904223u;
    return (state_ >> 16) % bound;
  }

 private:
  unsigned state_;
};

// ---- shares of processor time

class CpuShareProperty : public ::testing::TestWithParam<unsigned> {
 protected:
  // Returns nine columns. The first one includes the time of guests.
  static std::vector<long> Ticks(Numbers& numbers, unsigned bound) {
    std::vector<long> ticks(9);
    for (long& column : ticks) {
      column = static_cast<long>(numbers.Below(bound));
    }
    ticks[8] = std::min(ticks[8], ticks[0]);
    return ticks;
  }

  static std::vector<CpuTimes> Sample(const std::vector<long>& ticks) {
    std::string line = "cpu";
    for (const long column : ticks) {
      line += " " + std::to_string(column);
    }
    const ScopedTempDir proc;
    proc.Write("stat", line + "\n");
    return ReadCpuTimes(proc.GetPath());
  }

  // Computes a share with integers, to the nearest hundredth of a percent.
  static long Share(long part, long total) { return (2 * 10000 * part + total) / (2 * total); }
};

TEST_P(CpuShareProperty, EachIsItsPartOfTheWhole) {
  Numbers numbers(GetParam());
  for (const unsigned bound : {2u, 10u, 1000u, 60000u}) {
    const std::vector<long> before = Ticks(numbers, bound);
    const std::vector<long> passed = Ticks(numbers, bound);
    std::vector<long> after = before;
    std::transform(after.begin(), after.end(), passed.begin(), after.begin(), std::plus<>());
    const long total = std::accumulate(passed.begin(), passed.end() - 1, 0L);
    const auto usages = CompareCpuTimes(Sample(before), Sample(after));
    ASSERT_THAT(usages, SizeIs(1));
    const CpuUsage& usage = usages.front();
    if (total == 0) {
      EXPECT_EQ(usage.busy, -1);
      continue;
    }
    EXPECT_EQ(usage.user, Share(passed[0], total));
    EXPECT_EQ(usage.nice, Share(passed[1], total));
    EXPECT_EQ(usage.system, Share(passed[2], total));
    EXPECT_EQ(usage.idle, Share(passed[3], total));
    EXPECT_EQ(usage.inputWait, Share(passed[4], total));
    EXPECT_EQ(usage.interrupt, Share(passed[5], total));
    EXPECT_EQ(usage.softInterrupt, Share(passed[6], total));
    EXPECT_EQ(usage.steal, Share(passed[7], total));
    EXPECT_EQ(usage.guest, Share(passed[8], total));
    EXPECT_EQ(usage.busy, Share(total - passed[3] - passed[4], total));
  }
}

TEST_P(CpuShareProperty, BusyAndIdleAreTheWhole) {
  Numbers numbers(GetParam() + 1000);
  const std::vector<long> none(9, 0);
  const auto usages = CompareCpuTimes(Sample(none), Sample(Ticks(numbers, 5000)));
  ASSERT_THAT(usages, SizeIs(1));
  EXPECT_NEAR(static_cast<double>(usages[0].busy + usages[0].idle + usages[0].inputWait), 10000, 1);
  EXPECT_LE(usages[0].guest, usages[0].user);
}

INSTANTIATE_TEST_SUITE_P(Seeds, CpuShareProperty, ::testing::Range(1u, 9u));

// ---- names of hardware

constexpr char kPciIds[] = "/usr/share/misc/pci.ids";

class InstalledNamesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (::access(kPciIds, R_OK) != 0) {
      GTEST_SKIP() << "there is no " << kPciIds;
    }
  }

  static std::uint16_t Hexadecimal(const std::string& digits) {
    return static_cast<std::uint16_t>(std::stoul(digits, nullptr, 16));
  }

  const HardwareNames names_{ReadHardwareNames("/usr/share", "pci.ids")};
};

TEST_F(InstalledNamesTest, EveryVendorIsFound) {
  const auto lines = WitnessLines(std::string("grep -aE '^[0-9a-f]{4} ' ") + kPciIds);
  ASSERT_GT(lines.size(), 1000u);
  for (const std::string& line : lines) {
    EXPECT_EQ(names_.FindVendor(Hexadecimal(line.substr(0, 4))), line.substr(6)) << line;
  }
}

TEST_F(InstalledNamesTest, EverySeventhDeviceIsFound) {
  // Each line contains the numbers of vendor and device without a space between them, and the name.
  const auto lines =
      WitnessLines(std::string("awk '/^[0-9a-f]/ { v = substr($0, 1, 4) } /^C / { exit } "
                               "/^\\t[0-9a-f]/ && ++n % 7 == 0 { print v substr($0, 2) }' ") +
                   kPciIds);
  ASSERT_GT(lines.size(), 1000u);
  for (const std::string& line : lines) {
    EXPECT_EQ(names_.FindDevice(Hexadecimal(line.substr(0, 4)), Hexadecimal(line.substr(4, 4))),
              line.substr(10))
        << line;
  }
}

TEST_F(InstalledNamesTest, EveryClassAndSubclassIsFound) {
  const auto lines = WitnessLines(
      std::string(
          "awk '/^C / { c = substr($0, 3, 2); print c \"   \" substr($0, 7) } "
          "c != \"\" && /^\\t[0-9a-f]/ { print c substr($0, 2, 2) \" \" substr($0, 6) }' ") +
      kPciIds);
  ASSERT_GT(lines.size(), 20u);
  for (const std::string& line : lines) {
    const auto deviceClass = static_cast<std::uint8_t>(Hexadecimal(line.substr(0, 2)));
    const std::string name = line.substr(5);
    if (line[2] == ' ') {
      EXPECT_EQ(names_.FindClass(deviceClass), name) << line;
    } else {
      const auto subclass = static_cast<std::uint8_t>(Hexadecimal(line.substr(2, 2)));
      EXPECT_EQ(names_.FindSubclass(deviceClass, subclass), name) << line;
    }
  }
}

TEST(CutNamesTest, AFileThatIsCutAnywhereIsRead) {
  const std::string whole =
      "0001  One\n\t0002  Device\n\t\t0003 0004  Part\n0005  Other\nC 01  Class\n\t02  Sub\n";
  for (std::size_t length = 0; length <= whole.size(); ++length) {
    const HardwareNames names(whole.substr(0, length));
    const std::string name = names.FindDevice(1, 2);
    EXPECT_EQ(std::string("Device").substr(0, name.size()), name) << length;
    EXPECT_EQ(names.FindDevice(3, 4), "") << length;
  }
}

// ---- devices

class UsbFolderTest : public ::testing::Test {
 protected:
  UsbFolderTest() { AddDevice("1-1"); }

  void AddDevice(const std::string& address) const {
    const std::string folder = "bus/usb/devices/" + address + "/";
    for (const char* const name : kAttributes) {
      sys_.Write(folder + name, "01\n");
    }
  }

  std::vector<BusDevice> Read() const { return ReadUsbDevices(sys_.GetPath(), HardwareNames()); }

  static constexpr const char* kAttributes[] = {"idVendor", "idProduct", "bDeviceClass",
                                                "bDeviceSubClass", "bDeviceProtocol"};
  const ScopedTempDir sys_;
};

TEST_F(UsbFolderTest, EachAttributeIsRequired) {
  for (const char* const name : kAttributes) {
    const std::string path = sys_.GetPath(std::string("bus/usb/devices/1-1/") + name);
    ASSERT_EQ(::unlink(path.c_str()), 0);
    EXPECT_THAT([this] { Read(); }, ThrowsMessage<KestrelException>("Unable to read " + path +
                                                                    ": No such file or directory"));
    AddDevice("1-1");
  }
  EXPECT_THAT(Read(), SizeIs(1));
}

TEST_F(UsbFolderTest, EachAttributeIsANumber) {
  for (const char* const name : kAttributes) {
    const std::string path = sys_.Write(std::string("bus/usb/devices/1-1/") + name, "many\n");
    EXPECT_THAT([this] { Read(); },
                ThrowsMessage<KestrelException>("Unable to understand " + path));
    AddDevice("1-1");
  }
}

TEST_F(UsbFolderTest, AnInterfaceThatIsBeingRemovedHasNoClass) {
  sys_.Write("bus/usb/devices/1-1/bDeviceClass", "00\n");
  sys_.MakeDirectory("bus/usb/devices/1-1/1-1:1.0");
  EXPECT_EQ(Read().at(0).classId, 0x000101u);
}

TEST_F(UsbFolderTest, OtherFoldersOfADeviceAreNotInterfaces) {
  for (const char* const name : {"power", "ep_00", "1-1.1", "port:x"}) {
    sys_.MakeDirectory(std::string("bus/usb/devices/1-1/") + name);
  }
  EXPECT_THAT(Read().at(0).drivers, IsEmpty());
}

TEST_F(UsbFolderTest, TheDevicesOfAHubFollowIt) {
  for (const char* const address : {"usb1", "1-1.4", "1-1.4.2", "2-1", "usb2"}) {
    AddDevice(address);
  }
  std::vector<std::string> addresses;
  for (const BusDevice& device : Read()) {
    addresses.push_back(device.address);
  }
  EXPECT_THAT(addresses, ElementsAre("1-1", "1-1.4", "1-1.4.2", "2-1", "usb1", "usb2"));
}

TEST_F(UsbFolderTest, ThousandsOfDevicesAreListed) {
  for (int number = 2; number <= 2000; ++number) {
    AddDevice("1-" + std::to_string(number));
  }
  EXPECT_THAT(Read(), SizeIs(2000));
}

TEST_F(UsbFolderTest, TooManyOpenFilesAreAnErrorAndNotAnEmptyList) {
  if (Testing::kIsSanitized) {
    GTEST_SKIP() << "the sanitizer needs descriptors of its own";
  }
  struct rlimit limit = {};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
  struct rlimit none = limit;
  none.rlim_cur = 0;
  const HardwareNames names;
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
  EXPECT_THAT([&] { ReadUsbDevices(sys_.GetPath(), names); },
              ThrowsMessage<KestrelException>("Unable to read " + sys_.GetPath("bus/usb/devices") +
                                              ": Too many open files"));
  EXPECT_THAT([&] { ReadCpuTimes(sys_.GetPath()); },
              ThrowsMessage<KestrelException>("Unable to read " + sys_.GetPath("stat") +
                                              ": Too many open files"));
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
}

// The classes of the standards, without a file of names.
struct StandardClass {
  Bus bus;
  const char* digits;
  const char* name;
};

TEST(StandardClassTest, HasItsName) {
  const StandardClass cases[] = {{Bus::Pci, "000000", "Unclassified device"},
                                 {Bus::Pci, "010802", "Mass storage controller"},
                                 {Bus::Pci, "020000", "Network controller"},
                                 {Bus::Pci, "030000", "Display controller"},
                                 {Bus::Pci, "040300", "Multimedia controller"},
                                 {Bus::Pci, "060400", "Bridge"},
                                 {Bus::Pci, "0c0330", "Serial bus controller"},
                                 {Bus::Pci, "130000", "Non-Essential Instrumentation"},
                                 {Bus::Pci, "140000", ""},
                                 {Bus::Pci, "ff0000", ""},
                                 {Bus::Usb, "010100", "Audio"},
                                 {Bus::Usb, "030101", "Human Interface Device"},
                                 {Bus::Usb, "080650", "Mass Storage"},
                                 {Bus::Usb, "090000", "Hub"},
                                 {Bus::Usb, "0e0100", "Video"},
                                 {Bus::Usb, "e00101", "Wireless"},
                                 {Bus::Usb, "ffffff", "Vendor Specific Class"},
                                 {Bus::Usb, "040000", ""}};
  for (const StandardClass& each : cases) {
    const ScopedTempDir sys;
    const std::string digits = each.digits;
    const bool isPci = each.bus == Bus::Pci;
    const std::string folder = std::string("bus/") + (isPci ? "pci" : "usb") + "/devices/x/";
    for (const char* const name : {"vendor", "device", "idVendor", "idProduct"}) {
      sys.Write(folder + name, "0001\n");
    }
    sys.Write(folder + "class", "0x" + digits + "\n");
    sys.Write(folder + "bDeviceClass", digits.substr(0, 2) + "\n");
    sys.Write(folder + "bDeviceSubClass", digits.substr(2, 2) + "\n");
    sys.Write(folder + "bDeviceProtocol", digits.substr(4, 2) + "\n");
    const HardwareNames none;
    const auto devices =
        isPci ? ReadPciDevices(sys.GetPath(), none) : ReadUsbDevices(sys.GetPath(), none);
    ASSERT_THAT(devices, SizeIs(1)) << digits;
    EXPECT_EQ(devices[0].className, each.name) << digits;
    EXPECT_EQ(devices[0].classId, std::stoul(digits, nullptr, 16)) << digits;
  }
}

}  // namespace
}  // namespace Kestrel::Host
