// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/storage/DeviceContent.h"

#include <fcntl.h>
#include <kestrel/KestrelException.h>
#include <sys/stat.h>

#include <cctype>
#include <cerrno>
#include <cstring>
#include <string_view>

#ifdef KESTREL_HOST_HAS_BLKID
#include <blkid/blkid.h>

#include <memory>
#endif

#include "plugins/host/frame/DeviceNumber.h"
#include "plugins/host/frame/FileDescriptor.h"
#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/LoadedLibrary.h"
#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {
namespace {

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

DeviceContent FromProperties(const DeviceProperties& properties) {
  DeviceContent content;
  content.filesystem = Property(properties, "ID_FS_TYPE");
  content.label = DecodeProperty(Property(properties, "ID_FS_LABEL_ENC"));
  content.uuid = DecodeProperty(Property(properties, "ID_FS_UUID_ENC"));
  content.partitionLabel = DecodeProperty(Property(properties, "ID_PART_ENTRY_NAME"));
  content.partitionUuid = Property(properties, "ID_PART_ENTRY_UUID");
  return content;
}

// Whether the error means that the device is missing, unreadable or closed to this process. Any
// other error means only that this attempt failed.
bool IsOutOfReach(int error) {
  return error == EACCES || error == EPERM || error == ENOENT || error == ENOTDIR ||
         error == ENODEV || error == ENXIO || error == ENOMEDIUM || error == EBUSY || error == EIO;
}

std::optional<DeviceContent> ProbeDevice(const std::string& path, dev_t number) {
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
  struct stat status = {};
  if (!file.IsOpen() || ::fstat(file.Get(), &status) != 0) {
    if (!IsOutOfReach(errno)) {
      throw KestrelException("Unable to read " + path + ": " + std::strerror(errno));
    }
    return std::nullopt;
  }
  // In a container the name may lead to another file.
  const bool isDevice = S_ISBLK(status.st_mode) && status.st_rdev == number;
  return isDevice ? ProbeContent(file.Get()) : std::nullopt;
}

#ifdef KESTREL_HOST_HAS_BLKID

struct Libblkid : LoadedLibrary {
  Libblkid() : LoadedLibrary(KESTREL_HOST_LIBBLKID) {}
  KESTREL_LOADED(blkid_do_safeprobe);
  KESTREL_LOADED(blkid_free_probe);
  KESTREL_LOADED(blkid_new_probe);
  KESTREL_LOADED(blkid_probe_enable_partitions);
  KESTREL_LOADED(blkid_probe_enable_superblocks);
  KESTREL_LOADED(blkid_probe_lookup_value);
  KESTREL_LOADED(blkid_probe_set_device);
  KESTREL_LOADED(blkid_probe_set_partitions_flags);
  KESTREL_LOADED(blkid_probe_set_superblocks_flags);
};

const Libblkid& Library() {
  static const Libblkid library;
  return library;
}

struct FreeProbe {
  void operator()(blkid_probe probe) const { Library().blkid_free_probe(probe); }
};
using Probe = std::unique_ptr<std::remove_pointer_t<blkid_probe>, FreeProbe>;

std::string ProbedValue(blkid_probe probe, const char* name) {
  const char* value = nullptr;
  return Library().blkid_probe_lookup_value(probe, name, &value, nullptr) == 0 ? value : "";
}

#endif

}  // namespace

#ifdef KESTREL_HOST_HAS_BLKID

std::optional<DeviceContent> ProbeContent(int file) {
  constexpr int kValues = BLKID_SUBLKS_TYPE | BLKID_SUBLKS_LABEL | BLKID_SUBLKS_UUID;
  const Probe probe(Library().blkid_new_probe());
  if (probe == nullptr || Library().blkid_probe_set_device(probe.get(), file, 0, 0) != 0) {
    return std::nullopt;
  }
  Library().blkid_probe_enable_superblocks(probe.get(), 1);
  Library().blkid_probe_set_superblocks_flags(probe.get(), kValues);
  Library().blkid_probe_enable_partitions(probe.get(), 1);
  Library().blkid_probe_set_partitions_flags(probe.get(), BLKID_PARTS_ENTRY_DETAILS);
  // Also fails if there seem to be two kinds of content.
  if (Library().blkid_do_safeprobe(probe.get()) < 0) {
    return std::nullopt;
  }
  DeviceContent content;
  content.filesystem = ProbedValue(probe.get(), "TYPE");
  content.label = ProbedValue(probe.get(), "LABEL");
  content.uuid = ProbedValue(probe.get(), "UUID");
  content.partitionLabel = ProbedValue(probe.get(), "PART_ENTRY_NAME");
  content.partitionUuid = ProbedValue(probe.get(), "PART_ENTRY_UUID");
  return content;
}

#else

std::optional<DeviceContent> ProbeContent(int /*file*/) { return std::nullopt; }

#endif

std::optional<DeviceContent> ReadDeviceContent(const std::string& name, dev_t number,
                                               const std::string& folder,
                                               const std::string& devFolder) {
  if (const auto properties = ReadDeviceProperties(number, folder)) {
    return FromProperties(*properties);
  }
  return ProbeDevice(devFolder + "/" + name, number);
}

std::optional<DeviceProperties> ReadDeviceProperties(dev_t device, const std::string& folder) {
  const std::string path = folder + "/b" + FormatDeviceNumber(device);
  const auto text = ReadFile(path);
  if (!text) {
    if (errno != ENOENT && errno != ENOTDIR) {
      throw KestrelException("Unable to read " + path + ": " + std::strerror(errno));
    }
    return std::nullopt;
  }
  DeviceProperties properties;
  for (const std::string_view line : SplitLines(*text)) {
    const std::size_t equals = line.find('=');
    if (StartsWith(line, "E:") && equals != std::string_view::npos) {
      properties[std::string(line.substr(2, equals - 2))] = line.substr(equals + 1);
    }
  }
  return properties;
}

}  // namespace Kestrel::Host
