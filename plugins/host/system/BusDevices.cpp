// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/BusDevices.h"

#include <kestrel/KestrelException.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <optional>
#include <string_view>

#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {
namespace {

struct ClassName {
  std::uint8_t number;
  const char* name;
};

// Names of standard classes, used if the file of names does not contain the class.
constexpr ClassName kPciClasses[] = {{0x00, "Unclassified device"},
                                     {0x01, "Mass storage controller"},
                                     {0x02, "Network controller"},
                                     {0x03, "Display controller"},
                                     {0x04, "Multimedia controller"},
                                     {0x05, "Memory controller"},
                                     {0x06, "Bridge"},
                                     {0x07, "Communication controller"},
                                     {0x08, "Generic system peripheral"},
                                     {0x09, "Input device controller"},
                                     {0x0a, "Docking station"},
                                     {0x0b, "Processor"},
                                     {0x0c, "Serial bus controller"},
                                     {0x0d, "Wireless controller"},
                                     {0x0e, "Intelligent controller"},
                                     {0x0f, "Satellite communications controller"},
                                     {0x10, "Encryption controller"},
                                     {0x11, "Signal processing controller"},
                                     {0x12, "Processing accelerators"},
                                     {0x13, "Non-Essential Instrumentation"}};
constexpr ClassName kUsbClasses[] = {{0x01, "Audio"},
                                     {0x02, "Communications"},
                                     {0x03, "Human Interface Device"},
                                     {0x05, "Physical"},
                                     {0x06, "Imaging"},
                                     {0x07, "Printer"},
                                     {0x08, "Mass Storage"},
                                     {0x09, "Hub"},
                                     {0x0a, "CDC Data"},
                                     {0x0b, "Smart Card"},
                                     {0x0e, "Video"},
                                     {0xe0, "Wireless"},
                                     {0xef, "Miscellaneous Device"},
                                     {0xff, "Vendor Specific Class"}};

template <std::size_t Count>
std::string FindName(const ClassName (&classes)[Count], std::uint8_t number) {
  const auto found =
      std::find_if(std::begin(classes), std::end(classes),
                   [number](const ClassName& each) { return each.number == number; });
  return found == std::end(classes) ? std::string() : found->name;
}

std::uint8_t ClassByte(std::uint32_t classId) { return static_cast<std::uint8_t>(classId >> 16); }
std::uint8_t SubclassByte(std::uint32_t classId) { return static_cast<std::uint8_t>(classId >> 8); }

// Returns the names below "bus/<bus>/devices"; none if the bus is missing but there are other
// buses. Throws if the bus exists without that folder, and if there is no bus at all, because then
// `sys` is not mounted.
std::vector<std::string> ListDevices(const std::string& sys, const std::string& bus) {
  const std::string folder = sys + "/bus/" + bus + "/devices";
  auto names = ListOptionalFolder(folder);
  if (names) {
    return std::move(*names);
  }
  const auto buses = ListOptionalFolder(sys + "/bus");
  if (!buses || buses->empty() || std::find(buses->begin(), buses->end(), bus) != buses->end()) {
    throw KestrelException("Unable to read " + folder + ": " + std::strerror(ENOENT));
  }
  return {};
}

// Reads a hexadecimal number, with or without "0x".
std::uint32_t ParseHexadecimal(const std::string& path) {
  const std::string text = ReadRequiredFile(path);
  std::string_view digits = Trim(text);
  if (StartsWith(digits, "0x")) {
    digits.remove_prefix(2);
  }
  std::uint32_t number = 0;
  const auto [end, error] =
      std::from_chars(digits.data(), digits.data() + digits.size(), number, 16);
  if (error != std::errc() || end != digits.data() + digits.size()) {
    throw KestrelException("Unable to understand " + path);
  }
  return number;
}

std::uint16_t ParseId(const std::string& path) {
  const std::uint32_t number = ParseHexadecimal(path);
  if (number > UINT16_MAX) {
    throw KestrelException("Unable to understand " + path);
  }
  return static_cast<std::uint16_t>(number);
}

std::uint32_t ParseByte(const std::string& path) { return ParseHexadecimal(path) & 0xff; }

// Returns the name of the driver: that of the folder to which the link "driver" refers. Returns an
// empty string if there is no driver.
std::string ReadDriver(const std::string& folder) {
  const std::string link = folder + "/driver";
  const auto target = ReadLink(link);
  if (!target && errno != ENOENT) {
    throw KestrelException("Unable to read " + link + ": " + std::strerror(errno));
  }
  return target ? target->substr(target->rfind('/') + 1) : std::string();
}

// Reads the name that the device itself reports; empty if there is none.
std::string ReadOwnName(const std::string& path) {
  const auto text = ReadOptionalFile(path);
  return text ? std::string(Trim(*text)) : std::string();
}

BusDevice ReadPciDevice(const std::string& folder, const HardwareNames& names) {
  BusDevice device;
  device.bus = Bus::Pci;
  device.vendorId = ParseId(folder + "/vendor");
  device.deviceId = ParseId(folder + "/device");
  device.classId = ParseHexadecimal(folder + "/class") & 0xffffff;
  device.vendor = names.FindVendor(device.vendorId);
  device.device = names.FindDevice(device.vendorId, device.deviceId);
  const std::string driver = ReadDriver(folder);
  if (!driver.empty()) {
    device.drivers.push_back(driver);
  }
  return device;
}

std::uint32_t ReadUsbClass(const std::string& folder, const std::string& prefix) {
  return ParseByte(folder + "/" + prefix + "Class") << 16 |
         ParseByte(folder + "/" + prefix + "SubClass") << 8 |
         ParseByte(folder + "/" + prefix + "Protocol");
}

// Returns the folders of a device's interfaces, such as "1-1:1.0" in "1-1". Those of the root hub
// "usb1" are called "1-0:1.0".
std::vector<std::string> ListInterfaces(const std::string& folder) {
  std::vector<std::string> interfaces;
  for (const std::string& name : ListOptionalFolder(folder).value_or(std::vector<std::string>())) {
    if (name.find(':') != std::string::npos && Exists(folder + "/" + name + "/bInterfaceClass")) {
      interfaces.push_back(folder + "/" + name);
    }
  }
  return interfaces;
}

std::vector<std::string> ReadDrivers(const std::vector<std::string>& folders) {
  std::vector<std::string> drivers;
  for (const std::string& folder : folders) {
    std::string driver = ReadDriver(folder);
    if (!driver.empty()) {
      drivers.push_back(std::move(driver));
    }
  }
  std::sort(drivers.begin(), drivers.end());
  drivers.erase(std::unique(drivers.begin(), drivers.end()), drivers.end());
  return drivers;
}

BusDevice ReadUsbDevice(const std::string& folder, const HardwareNames& names) {
  BusDevice device;
  device.bus = Bus::Usb;
  device.vendorId = ParseId(folder + "/idVendor");
  device.deviceId = ParseId(folder + "/idProduct");
  device.classId = ReadUsbClass(folder, "bDevice");
  const auto interfaces = ListInterfaces(folder);
  if (ClassByte(device.classId) == 0 && !interfaces.empty()) {
    device.classId = ReadUsbClass(interfaces.front(), "bInterface");
  }
  device.vendor = names.FindVendor(device.vendorId);
  device.device = names.FindDevice(device.vendorId, device.deviceId);
  if (device.vendor.empty()) {
    device.vendor = ReadOwnName(folder + "/manufacturer");
  }
  if (device.device.empty()) {
    device.device = ReadOwnName(folder + "/product");
  }
  device.drivers = ReadDrivers(interfaces);
  return device;
}

std::string NameClass(const BusDevice& device, const HardwareNames& names) {
  const std::uint8_t number = ClassByte(device.classId);
  if (device.bus == Bus::Pci) {
    const std::string subclass = names.FindSubclass(number, SubclassByte(device.classId));
    if (!subclass.empty()) {
      return subclass;
    }
  }
  const std::string name = names.FindClass(number);
  if (!name.empty()) {
    return name;
  }
  return device.bus == Bus::Pci ? FindName(kPciClasses, number) : FindName(kUsbClasses, number);
}

// Whether a name in the folder of a bus is that of a device.
bool IsDevice(Bus bus, const std::string& name) {
  // The folder of the bus also contains the interfaces of USB devices, as in "1-1:1.0".
  return bus == Bus::Pci || name.find(':') == std::string::npos;
}

std::vector<BusDevice> ReadDevices(const std::string& sys, const HardwareNames& names, Bus bus) {
  const std::string busName = bus == Bus::Pci ? "pci" : "usb";
  std::vector<BusDevice> devices;
  for (const std::string& name : ListDevices(sys, busName)) {
    const std::string folder = sys + "/bus/" + busName + "/devices/" + name;
    if (!IsDevice(bus, name)) {
      continue;
    }
    try {
      devices.push_back(bus == Bus::Pci ? ReadPciDevice(folder, names)
                                        : ReadUsbDevice(folder, names));
      devices.back().address = name;
      devices.back().className = NameClass(devices.back(), names);
    } catch (const KestrelException&) {
      if (Exists(folder)) {
        throw;
      }  // otherwise it was removed while it was read
    }
  }
  return devices;
}

}  // namespace

std::vector<BusDevice> ReadPciDevices(const std::string& sys, const HardwareNames& names) {
  return ReadDevices(sys, names, Bus::Pci);
}

std::vector<BusDevice> ReadUsbDevices(const std::string& sys, const HardwareNames& names) {
  return ReadDevices(sys, names, Bus::Usb);
}

}  // namespace Kestrel::Host
