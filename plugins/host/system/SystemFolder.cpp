// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/SystemFolder.h"

#include <dirent.h>
#include <kestrel/KestrelException.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <string_view>

#include "plugins/host/frame/HostFile.h"

namespace Kestrel::Host {
namespace {

struct CloseFolder {
  void operator()(DIR* folder) const { ::closedir(folder); }
};

bool IsMissing(int error) { return error == ENOENT || error == ENOTDIR; }

[[noreturn]] void ThrowUnreadable(const std::string& path, int error) {
  throw KestrelException("Unable to read " + path + ": " + std::strerror(error));
}

std::vector<std::string> ReadNames(DIR& folder, const std::string& path) {
  std::vector<std::string> names;
  for (;;) {
    errno = 0;  // distinguishes an error from the end
    const dirent* const entry = ::readdir(&folder);
    if (entry == nullptr) {
      break;
    }
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") {
      names.emplace_back(name);
    }
  }
  if (errno != 0) {
    ThrowUnreadable(path, errno);
  }
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace

std::optional<std::string> ReadOptionalFile(const std::string& path) {
  auto text = ReadFile(path);
  if (!text && !IsMissing(errno)) {
    ThrowUnreadable(path, errno);
  }
  return text;
}

std::optional<std::vector<std::string>> ListOptionalFolder(const std::string& path) {
  const std::unique_ptr<DIR, CloseFolder> folder(::opendir(path.c_str()));
  if (folder != nullptr) {
    return ReadNames(*folder, path);
  }
  if (!IsMissing(errno)) {
    ThrowUnreadable(path, errno);
  }
  return std::nullopt;
}

bool Exists(const std::string& path) {
  struct stat status = {};
  if (::lstat(path.c_str(), &status) == 0) {
    return true;
  }
  if (!IsMissing(errno)) {
    ThrowUnreadable(path, errno);
  }
  return false;
}

}  // namespace Kestrel::Host
