// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/types.h>

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
  std::string model;                     ///< Empty if unknown, like `transport`.
  std::string transport;                 ///< "sata", "sas", "usb", "nvme", "virtio", ...
  std::vector<std::string> parents;      ///< The devices that contain it or that it consists of.
  std::vector<std::string> mountPoints;  ///< Sorted.
};

/// Returns the block devices listed in `sysFolder`, usually /sys: the disks sorted by name, each
/// followed by its partitions. Skips a device that is removed while it is read. Throws
/// KestrelException if the list or a device cannot be read for another reason.
std::vector<BlockDevice> ReadBlockDevices(const std::string& sysFolder,
                                          const std::vector<Mount>& mounts);

}  // namespace Kestrel::Host
