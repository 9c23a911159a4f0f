// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/storage/BlockDevices.h"

#include <algorithm>
#include <cctype>
#include <limits>
#include <optional>
#include <string_view>

#include "plugins/host/frame/DeviceNumber.h"
#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {
namespace {

// The kernel reports sizes in units of 512 bytes, regardless of the sector size.
constexpr long kSizeUnit = 512;

long ReadNumber(const std::string& path, long otherwise = 0) {
  return ParseNumber(ReadLine(path)).value_or(otherwise);
}

// A "!" in /sys represents a "/" in the name.
std::string DeviceName(std::string folderName) {
  std::replace(folderName.begin(), folderName.end(), '!', '/');
  return folderName;
}

// The identifier starts with the owner of the volume, as in "LVM-..." and "CRYPT-LUKS2-...".
std::string MappedKind(const std::string& folder) {
  const std::string identifier = ReadLine(folder + "/dm/uuid");
  std::string owner = identifier.substr(0, identifier.find('-'));
  for (char& letter : owner) {
    letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
  }
  if (owner.empty()) {
    return "dm";
  }
  return StartsWith(owner, "part") ? "part" : owner;
}

std::string DiskKind(const std::string& folder, const std::string& name) {
  constexpr long kScsiRom = 5;
  if (StartsWith(name, "dm-")) {
    return MappedKind(folder);
  }
  if (StartsWith(name, "loop")) {
    return "loop";
  }
  if (StartsWith(name, "md")) {
    const std::string level = ReadLine(folder + "/md/level");
    return level.empty() ? "md" : level;
  }
  return ReadNumber(folder + "/device/type") == kScsiRom ? "rom" : "disk";
}

std::vector<std::string> UnderlyingDevices(const std::string& folder) {
  std::vector<std::string> names = ListFolder(folder + "/slaves");
  std::transform(names.begin(), names.end(), names.begin(), DeviceName);
  return names;
}

long SizeInBytes(long units) {
  constexpr long kMax = std::numeric_limits<long>::max() / kSizeUnit;
  return std::clamp(units, 0L, kMax) * kSizeUnit;
}

// Reads what disks and partitions have in common.
std::optional<BlockDevice> ReadDevice(const std::string& folder, const std::string& folderName) {
  const auto number = ParseDeviceNumber(ReadLine(folder + "/dev"));
  const auto size = ParseNumber(ReadLine(folder + "/size"));
  if (!number || !size) {
    return std::nullopt;
  }
  BlockDevice device;
  device.name = DeviceName(folderName);
  device.number = *number;
  device.size = SizeInBytes(*size);
  device.isReadOnly = ReadNumber(folder + "/ro") != 0;
  return device;
}

std::optional<BlockDevice> ReadDisk(const std::string& folder, const std::string& folderName) {
  auto disk = ReadDevice(folder, folderName);
  if (disk) {
    disk->kind = DiskKind(folder, folderName);
    disk->mappedName = ReadLine(folder + "/dm/name");
    disk->sectorSize = ReadNumber(folder + "/queue/logical_block_size", kSizeUnit);
    disk->isRemovable = ReadNumber(folder + "/removable") != 0;
    disk->isRotational = ReadNumber(folder + "/queue/rotational") != 0;
    disk->model = ReadLine(folder + "/device/model");
    disk->parents = UnderlyingDevices(folder);
  }
  return disk;
}

void AppendParts(const std::string& folder, const BlockDevice& disk,
                 std::vector<BlockDevice>& devices) {
  for (const std::string& name : ListFolder(folder)) {
    const std::string partFolder = folder + "/" + name;
    if (!ReadFile(partFolder + "/partition")) {
      continue;
    }
    auto part = ReadDevice(partFolder, name);
    if (!part) {
      continue;
    }
    part->kind = "part";
    part->sectorSize = disk.sectorSize;
    part->isRemovable = disk.isRemovable;
    part->isRotational = disk.isRotational;
    part->parents = {disk.name};
    devices.push_back(std::move(*part));
  }
}

// Some file systems have a device number of their own; their mounts name the device as source.
bool LiesOn(const Mount& mount, const BlockDevice& device) {
  return mount.device == device.number || mount.source == "/dev/" + device.name ||
         (!device.mappedName.empty() && mount.source == "/dev/mapper/" + device.mappedName);
}

void SetMountPoints(const std::vector<Mount>& mounts, BlockDevice& device) {
  for (const Mount& mount : mounts) {
    if (LiesOn(mount, device)) {
      device.mountPoints.push_back(mount.target);
    }
  }
  std::sort(device.mountPoints.begin(), device.mountPoints.end());
}

std::string Property(const DeviceProperties& properties, const char* name) {
  const auto found = properties.find(name);
  return found == properties.end() ? std::string() : found->second;
}

// Bytes that are not allowed in a property are written as in "\x20".
std::string DecodeProperty(const std::string& text) {
  std::string decoded;
  for (std::size_t index = 0; index < text.size(); ++index) {
    const bool isEscape = text.compare(index, 2, "\\x") == 0 && index + 3 < text.size() &&
                          std::isxdigit(static_cast<unsigned char>(text[index + 2])) != 0 &&
                          std::isxdigit(static_cast<unsigned char>(text[index + 3])) != 0;
    if (!isEscape) {
      decoded += text[index];
      continue;
    }
    decoded += static_cast<char>(std::stoi(text.substr(index + 2, 2), nullptr, 16));
    index += 3;
  }
  return decoded;
}

void SetContent(const DeviceProperties& properties, BlockDevice& device) {
  device.filesystem = Property(properties, "ID_FS_TYPE");
  device.label = DecodeProperty(Property(properties, "ID_FS_LABEL_ENC"));
  device.uuid = DecodeProperty(Property(properties, "ID_FS_UUID_ENC"));
}

}  // namespace

std::vector<BlockDevice> ReadBlockDevices(const std::string& sysFolder,
                                          const PropertyReader& readProperties,
                                          const std::vector<Mount>& mounts) {
  std::vector<BlockDevice> devices;
  for (const std::string& name : ListFolder(sysFolder + "/block")) {
    const std::string folder = sysFolder + "/block/" + name;
    if (auto disk = ReadDisk(folder, name)) {
      devices.push_back(*disk);
      AppendParts(folder, *disk, devices);
    }
  }
  for (BlockDevice& device : devices) {
    SetMountPoints(mounts, device);
    SetContent(readProperties(device.number), device);
  }
  return devices;
}

DeviceProperties ReadDeviceProperties(dev_t device, const std::string& folder) {
  DeviceProperties properties;
  // Must outlive `line`, which is a view of it.
  const std::string text =
      ReadFile(folder + "/b" + FormatDeviceNumber(device)).value_or(std::string());
  for (const std::string_view line : SplitLines(text)) {
    const std::size_t equals = line.find('=');
    if (StartsWith(line, "E:") && equals != std::string_view::npos) {
      properties[std::string(line.substr(2, equals - 2))] = line.substr(equals + 1);
    }
  }
  return properties;
}

}  // namespace Kestrel::Host
