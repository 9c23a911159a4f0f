// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/types.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "plugins/host/storage/MountTable.h"

namespace Kestrel::Host {

/// A block device: a disk, a partition, or a volume.
struct BlockDevice {
  std::string name;        ///< The path below /dev, such as "sda1" or "cciss/c0d0".
  std::string mappedName;  ///< The name below /dev/mapper; empty if it is not a mapped volume.
  dev_t number = 0;
  std::string kind;  ///< "disk", "part", "loop", "rom", "lvm", "crypt", "raid1", ...
  long size = 0;     ///< In bytes.
  long sectorSize = 0;
  bool isReadOnly = false;
  bool isRemovable = false;
  bool isRotational = false;
  std::string model;
  std::vector<std::string> parents;      ///< The devices that it is part of or consists of.
  std::vector<std::string> mountPoints;  ///< Sorted.
  // What it contains, if the device manager knows.
  std::string filesystem;
  std::string label;
  std::string uuid;
};

/// The properties of a device: names and values.
using DeviceProperties = std::map<std::string, std::string>;
using PropertyReader = std::function<DeviceProperties(dev_t)>;

/// Returns the block devices listed in `sysFolder`, usually /sys: the disks sorted by name, each
/// followed by its partitions. Skips a device that is removed while it is read. Without the folder
/// there are none.
std::vector<BlockDevice> ReadBlockDevices(const std::string& sysFolder,
                                          const PropertyReader& readProperties,
                                          const std::vector<Mount>& mounts);

/// Reads the properties that the device manager stores in `folder`, with a line "E:NAME=VALUE" for
/// each. A device without a file has none.
DeviceProperties ReadDeviceProperties(dev_t device, const std::string& folder = "/run/udev/data");

}  // namespace Kestrel::Host
