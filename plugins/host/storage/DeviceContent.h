// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/types.h>

#include <map>
#include <optional>
#include <string>

namespace Kestrel::Host {

/// What a block device contains, and what the partition table says about it. A string is empty if
/// there is no such information.
struct DeviceContent {
  std::string filesystem;
  std::string label;
  std::string uuid;
  std::string partitionLabel;
  std::string partitionUuid;
};

/// The properties of a device: names and values.
using DeviceProperties = std::map<std::string, std::string>;

/// Returns what the device manager has stored in `folder` about the device with this number. If it
/// has stored nothing, reads the content from the device called `name` in `devFolder`; returns
/// nothing if this process cannot reach the device, if its content is ambiguous, or if the build
/// does not have the required library. Throws KestrelException if the stored data cannot be read,
/// if the library cannot be loaded, or if the device cannot be opened for another reason, such as
/// too many open files.
std::optional<DeviceContent> ReadDeviceContent(const std::string& name, dev_t number,
                                               const std::string& folder = "/run/udev/data",
                                               const std::string& devFolder = "/dev");

/// Reads the properties that the device manager stores in `folder`, one line "E:NAME=VALUE" for
/// each. Returns nothing if there is no file for the device. Throws KestrelException if the file
/// cannot be read.
std::optional<DeviceProperties> ReadDeviceProperties(dev_t device, const std::string& folder);

/// Reads the content from the first and last blocks of a device or of an image of a device. Returns
/// nothing if they cannot be read, if there seem to be two kinds of content, or if the build does
/// not have the required library. Throws KestrelException if the library cannot be loaded.
std::optional<DeviceContent> ProbeContent(int file);

}  // namespace Kestrel::Host
