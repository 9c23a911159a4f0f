// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "plugins/host/system/HardwareNames.h"

namespace Kestrel::Host {

enum class Bus { Pci, Usb };

/// A device on a bus. Unknown strings are empty.
struct BusDevice {
  Bus bus = Bus::Pci;
  std::string address;  ///< Its name in the kernel: "0000:00:1f.2", "1-1.4".
  std::uint16_t vendorId = 0;
  std::uint16_t deviceId = 0;
  std::uint32_t classId = 0;  ///< Class, subclass and interface (USB: protocol), one byte each.
  std::string vendor;
  std::string device;
  std::string className;
  /// The drivers that serve the device, sorted; for USB, those of its interfaces.
  std::vector<std::string> drivers;
};

/// Returns the devices in "bus/pci/devices" in `sys`, in the order of their addresses, with their
/// names from `names`. There are none if the machine has no such bus. Skips a device that is
/// removed while it is read. Throws KestrelException if the folder or an attribute of a device
/// cannot be read or understood.
std::vector<BusDevice> ReadPciDevices(const std::string& sys, const HardwareNames& names);

/// Like ReadPciDevices, for "bus/usb/devices". If `names` lacks a name, the one reported by the
/// device is used. If a device leaves its class to its interfaces, the class of the first interface
/// is used.
std::vector<BusDevice> ReadUsbDevices(const std::string& sys, const HardwareNames& names);

}  // namespace Kestrel::Host
