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
#include "plugins/host/storage/SysAttributes.h"

namespace Kestrel::Host {
namespace {

// The kernel reports sizes in units of 512 bytes, regardless of the sector size.
constexpr long kSizeUnit = 512;

// A "!" in /sys represents a "/" in the name.
std::string DeviceName(std::string folderName) {
  std::replace(folderName.begin(), folderName.end(), '!', '/');
  return folderName;
}

// Returns the kind of a mapped volume. Its identifier starts with the owner of the volume, as in
// "LVM-..." and "CRYPT-LUKS2-...".
std::string MappedKind(const std::string& folder) {
  const std::string identifier = ReadAttribute(folder + "/dm/uuid");
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
    const std::string level = ReadAttribute(folder + "/md/level");
    return level.empty() ? "md" : level;
  }
  return ReadNumber(folder + "/device/type").value_or(0) == kScsiRom ? "rom" : "disk";
}

std::vector<std::string> UnderlyingDevices(const std::string& folder) {
  std::vector<std::string> names = ListAttributes(folder + "/slaves");
  std::transform(names.begin(), names.end(), names.begin(), DeviceName);
  return names;
}

long SizeInBytes(long units) {
  constexpr long kMax = std::numeric_limits<long>::max() / kSizeUnit;
  return std::clamp(units, 0L, kMax) * kSizeUnit;
}

bool IsSet(const std::string& path) { return ReadNumber(path).value_or(0) != 0; }

std::string ReadModel(const std::string& folder) {
  const std::string model = ReadAttribute(folder + "/device/model");
  return model.empty() ? ReadAttribute(folder + "/device/name") : model;
}

// A name that starts with `beginning`, then a digit, indicates the transport. It is the name of a
// folder on the path to the device, or of the disk itself.
struct TransportName {
  std::string_view beginning;
  std::string_view transport;
};

std::string FindTransportName(std::string_view name, const std::vector<TransportName>& known) {
  for (const auto& [beginning, transport] : known) {
    if (StartsWith(name, beginning) && name.size() > beginning.size() &&
        std::isdigit(static_cast<unsigned char>(name[beginning.size()])) != 0) {
      return std::string(transport);
    }
  }
  return std::string();
}

// The folder of a disk is a link to the path of the buses that lead to it. The last bus on that
// path is the transport.
std::string FindTransport(const std::string& folder, const std::string& name) {
  static const std::vector<TransportName> buses = {
      {"usb", "usb"},       {"ata", "sata"},     {"end_device-", "sas"}, {"rport-", "fc"},
      {"session", "iscsi"}, {"nvme", "nvme"},    {"virtio", "virtio"},   {"mmc", "mmc"},
      {"fw", "firewire"},   {"vmbus_", "vmbus"}, {"xen", "xen"}};
  const std::string path = ReadLink(folder).value_or(std::string());
  const std::vector<std::string_view> steps = Split(path, '/');
  for (auto step = steps.rbegin(); step != steps.rend(); ++step) {
    const std::string transport = FindTransportName(*step, buses);
    if (!transport.empty()) {
      return transport;
    }
  }
  return FindTransportName(name, {{"nvme", "nvme"}, {"mmcblk", "mmc"}});
}

// Returns an attribute that every device has; an empty string if the device has gone. Throws for
// any other failure, because the device would otherwise be missing from the list.
std::string ReadRequiredAttribute(const std::string& path) {
  return std::string(Trim(ReadOptionalFile(path).value_or(std::string())));
}

// Reads what disks and partitions have in common.
std::optional<BlockDevice> ReadDevice(const std::string& folder, const std::string& folderName) {
  const auto number = ParseDeviceNumber(ReadRequiredAttribute(folder + "/dev"));
  const auto size = ParseNumber(ReadRequiredAttribute(folder + "/size"));
  if (!number || !size) {
    return std::nullopt;
  }
  BlockDevice device;
  device.name = DeviceName(folderName);
  device.number = *number;
  device.size = SizeInBytes(*size);
  device.isReadOnly = IsSet(folder + "/ro");
  return device;
}

std::optional<BlockDevice> ReadDisk(const std::string& folder, const std::string& folderName) {
  auto disk = ReadDevice(folder, folderName);
  if (disk) {
    disk->kind = DiskKind(folder, folderName);
    disk->mappedName = ReadAttribute(folder + "/dm/name");
    disk->sectorSize = ReadNumber(folder + "/queue/logical_block_size").value_or(kSizeUnit);
    disk->isRemovable = IsSet(folder + "/removable");
    disk->isRotational = IsSet(folder + "/queue/rotational");
    disk->model = ReadModel(folder);
    disk->transport = FindTransport(folder, folderName);
    disk->parents = UnderlyingDevices(folder);
  }
  return disk;
}

void AppendParts(const std::string& folder, const BlockDevice& disk,
                 std::vector<BlockDevice>& devices) {
  for (const std::string& name : ListAttributes(folder)) {
    const std::string partFolder = folder + "/" + name;
    if (ReadAttribute(partFolder + "/partition").empty()) {
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

// Some file systems have a device number of their own. The sources of their mounts name the device
// nevertheless.
bool IsMountedFrom(const Mount& mount, const BlockDevice& device) {
  return mount.device == device.number || mount.source == "/dev/" + device.name ||
         (!device.mappedName.empty() && mount.source == "/dev/mapper/" + device.mappedName);
}

void SetMountPoints(const std::vector<Mount>& mounts, BlockDevice& device) {
  for (const Mount& mount : mounts) {
    if (IsMountedFrom(mount, device)) {
      device.mountPoints.push_back(mount.target);
    }
  }
  std::sort(device.mountPoints.begin(), device.mountPoints.end());
}

}  // namespace

std::vector<BlockDevice> ReadBlockDevices(const std::string& sysFolder,
                                          const std::vector<Mount>& mounts) {
  std::vector<BlockDevice> devices;
  for (const std::string& name : ListDevices(sysFolder + "/block")) {
    const std::string folder = sysFolder + "/block/" + name;
    if (auto disk = ReadDisk(folder, name)) {
      devices.push_back(*disk);
      AppendParts(folder, *disk, devices);
    }
  }
  for (BlockDevice& device : devices) {
    SetMountPoints(mounts, device);
  }
  return devices;
}

}  // namespace Kestrel::Host
