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

/// One block device: a disk, a part of one, or a volume laid over others.
struct BlockDevice {
  std::string name;        ///< As below /dev, for instance "sda1" or "cciss/c0d0".
  std::string mappedName;  ///< Of a device-mapper volume, as below /dev/mapper; else empty.
  dev_t number = 0;
  std::string kind;  ///< "disk", "part", "loop", "rom", "lvm", "crypt", "raid1", ...
  long size = 0;     ///< In bytes.
  long sectorSize = 0;
  bool isReadOnly = false;
  bool isRemovable = false;
  bool isRotational = false;
  std::string model;
  std::vector<std::string> parents;      ///< The devices that it lies on.
  std::vector<std::string> mountPoints;  ///< Ascending.
  // What is written on it, where the device manager knows.
  std::string filesystem;
  std::string label;
  std::string uuid;
};

/// What the device manager knows of a device: property names to values.
using DeviceProperties = std::map<std::string, std::string>;
using PropertyReader = std::function<DeviceProperties(dev_t)>;

/// The block devices below a folder in the form of /sys, each disk ahead of its parts, by name. A
/// device that goes away while it is read is left out. Without the folder there are none.
std::vector<BlockDevice> ReadBlockDevices(const std::string& sysFolder,
                                          const PropertyReader& readProperties,
                                          const std::vector<Mount>& mounts);

/// What the device manager noted of a device in `folder`: one file a device, with a line
/// "E:NAME=VALUE" for each property. No properties where there is no such file.
DeviceProperties ReadDeviceProperties(dev_t device, const std::string& folder = "/run/udev/data");

}  // namespace Kestrel::Host
