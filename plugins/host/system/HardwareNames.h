// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace Kestrel::Host {

/// The names of vendors, devices and classes in a file such as pci.ids or usb.ids.
///
/// A line with a number of four hexadecimal digits is a vendor, and the lines below it that are
/// indented by one tab are its devices. A line with "C" and two digits is a class, and the lines
/// below it that are indented by one tab are its subclasses. Everything else is skipped.
class HardwareNames {
 public:
  /// Contains no names.
  HardwareNames() = default;
  explicit HardwareNames(std::string text);
  HardwareNames(const HardwareNames&) = delete;
  HardwareNames& operator=(const HardwareNames&) = delete;

  // Each of these returns an empty string if the file does not contain the name.
  std::string FindVendor(std::uint16_t vendor) const;
  std::string FindDevice(std::uint16_t vendor, std::uint16_t device) const;
  std::string FindClass(std::uint8_t deviceClass) const;
  std::string FindSubclass(std::uint8_t deviceClass, std::uint8_t subclass) const;

 private:
  /// A named entry, and where the lines below it begin.
  struct Entry {
    std::string_view name;
    std::size_t below = 0;
  };
  using Entries = std::map<unsigned long, Entry>;

  void AddEntry(std::string_view line, std::size_t below);
  std::string FindBelow(const Entry& entry, std::size_t digits, unsigned long number) const;

  std::string text_;
  Entries vendors_;
  Entries classes_;
};

/// Reads the file of that name in "misc" or "hwdata" in the folder `share`; empty if it is not
/// installed. Throws KestrelException if it exists and cannot be read.
std::string ReadHardwareNames(const std::string& share, const std::string& file);

}  // namespace Kestrel::Host
