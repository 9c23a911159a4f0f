// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/storage/SysAttributes.h"

#include <kestrel/KestrelException.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {
namespace {

// Whether an attribute does not exist, has no value or may not be read. A driver that does not know
// the value answers EIO or EINVAL.
bool IsMissing(int error) {
  return error == ENOENT || error == ENOTDIR || error == ENODEV || error == ENXIO || error == EIO ||
         error == EINVAL || error == EOPNOTSUPP || error == EACCES;
}

[[noreturn]] void ThrowReadError(const std::string& path, int error) {
  throw KestrelException("Unable to read " + path + ": " + std::strerror(error));
}

// Adds the names of the entries. Returns 0 or an error number.
int AddNames(const std::string& folder, std::vector<std::string>& names) {
  std::error_code error;
  for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    names.push_back(entry->path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return error.value();
}

}  // namespace

std::string ReadAttribute(const std::string& path) {
  const auto text = ReadFile(path);
  if (!text && !IsMissing(errno)) {
    ThrowReadError(path, errno);
  }
  return text ? std::string(Trim(*text)) : std::string();
}

std::optional<long> ReadNumber(const std::string& path) { return ParseNumber(ReadAttribute(path)); }

std::vector<std::string> ListAttributes(const std::string& folder) {
  std::vector<std::string> names;
  const int error = AddNames(folder, names);
  if (error != 0 && !IsMissing(error)) {
    ThrowReadError(folder, error);
  }
  return names;
}

std::vector<std::string> ListDevices(const std::string& folder) {
  std::vector<std::string> names;
  const int error = AddNames(folder, names);
  if (error != 0) {
    ThrowReadError(folder, error);
  }
  return names;
}

}  // namespace Kestrel::Host
