// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/types.h>

#include <map>
#include <optional>
#include <string>

namespace Kestrel::Host {

/// What a block device contains, and how the table of partitions describes it. A string is empty if
/// there is no such thing.
struct DeviceContent {
  std::string filesystem;
  std::string label;
  std::string uuid;
  std::string partitionLabel;
  std::string partitionUuid;
};

/// The properties of a device: names and values.
using DeviceProperties = std::map<std::string, std::string>;

/// Returns what the device manager has stored in `folder` about the device with this name below
/// /dev and this number. If it has stored nothing, the content is read from the device, in
/// `devFolder`; there is no answer if this process may not do that, or the build does not have the
/// library for it. Throws KestrelException if either exists and cannot be read for another reason.
std::optional<DeviceContent> ReadDeviceContent(const std::string& name, dev_t number,
                                               const std::string& folder = "/run/udev/data",
                                               const std::string& devFolder = "/dev");

/// Reads the properties that the device manager stores in `folder`, with a line "E:NAME=VALUE" for
/// each. Returns nothing if it has no file for the device.
std::optional<DeviceProperties> ReadDeviceProperties(dev_t device, const std::string& folder);

/// Reads the content from the first and the last blocks of a device or of an image of one. Returns
/// nothing if these cannot be read.
std::optional<DeviceContent> ProbeContent(int file);

}  // namespace Kestrel::Host
