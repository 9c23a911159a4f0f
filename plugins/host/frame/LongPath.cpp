// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/LongPath.h"

#include <fcntl.h>

#include <algorithm>
#include <climits>
#include <optional>

namespace Kestrel::Host {
namespace {

// Returns where to split `path` so that the system accepts the first part; npos if `path` needs no
// split or cannot be split.
std::size_t FindSplit(const std::string& path) {
  constexpr std::size_t kMaxLength = PATH_MAX - 1;
  return path.size() <= kMaxLength ? std::string::npos : path.rfind('/', kMaxLength - 1);
}

}  // namespace

FileDescriptor OpenPath(const std::string& path, int flags) {
  std::optional<FileDescriptor> folder;
  int at = AT_FDCWD;
  std::string rest = path;
  for (std::size_t split = FindSplit(rest); split != std::string::npos; split = FindSplit(rest)) {
    FileDescriptor next(
        ::openat(at, rest.substr(0, split + 1).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!next.IsOpen()) {
      return next;
    }
    at = folder.emplace(std::move(next)).Get();
    // Removes the slashes at the start of the rest, because they would make it an absolute path.
    rest.erase(0, std::min(rest.find_first_not_of('/', split), rest.size()));
    if (rest.empty()) {
      rest = ".";
    }
  }
  return FileDescriptor(::openat(at, rest.c_str(), flags | O_RDONLY | O_CLOEXEC));
}

}  // namespace Kestrel::Host
