// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/network/SocketOwners.h"

#include <kestrel/KestrelException.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <optional>
#include <string_view>

#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {
namespace {

std::optional<long> ReadDigits(std::string_view text) {
  long number = 0;
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number);
  return result.ec == std::errc() && result.ptr == end ? std::optional<long>(number) : std::nullopt;
}

// Parses the target of a link to a socket, "socket:[1234]".
std::optional<long> SocketInode(std::string_view target) {
  constexpr std::string_view kPrefix = "socket:[";
  if (!StartsWith(target, kPrefix) || target.back() != ']') {
    return std::nullopt;
  }
  return ReadDigits(target.substr(kPrefix.size(), target.size() - kPrefix.size() - 1));
}

// Handles a failure, given by `errno`, to read the files of a process. Ignores a process that has
// ended; marks the result as incomplete if this user may not read the process. Throws for any other
// error.
void AcceptRefusal(const std::string& path, SocketOwners& owners) {
  if (errno == EACCES || errno == EPERM) {
    owners.isComplete = false;
  } else if (errno != ENOENT && errno != ESRCH) {
    throw KestrelException("Unable to read " + path + ": " + std::strerror(errno));
  }
}

std::vector<long> ReadOpenSockets(const std::string& folder, SocketOwners& owners) {
  std::vector<long> inodes;
  const auto names = ReadFolder(folder);
  if (!names) {
    AcceptRefusal(folder, owners);
    return inodes;
  }
  for (const std::string& name : *names) {
    const auto target = ReadLink(folder + "/" + name);
    if (target) {
      const auto inode = SocketInode(*target);
      inodes.insert(inodes.end(), inode ? 1 : 0, inode.value_or(0));
    } else if (errno != ENAMETOOLONG) {  // a file with a very long path is not a socket
      AcceptRefusal(folder + "/" + name, owners);
    }
  }
  std::sort(inodes.begin(), inodes.end());
  inodes.erase(std::unique(inodes.begin(), inodes.end()), inodes.end());
  return inodes;
}

void CollectProcess(const std::string& folder, long processId, SocketOwners& owners) {
  const std::vector<long> inodes = ReadOpenSockets(folder + "/fd", owners);
  if (inodes.empty()) {
    return;
  }
  const auto name = ReadFile(folder + "/comm");
  if (!name) {
    AcceptRefusal(folder + "/comm", owners);
  }
  const SocketOwner owner = {processId, name ? std::string(Trim(*name)) : "unknown"};
  for (const long inode : inodes) {
    owners.byInode[inode].push_back(owner);
  }
}

}  // namespace

SocketOwners ReadSocketOwners(const std::string& procFolder) {
  const auto names = ReadFolder(procFolder);
  if (!names) {
    throw KestrelException("Unable to read " + procFolder + ": " + std::strerror(errno));
  }
  SocketOwners owners;
  // Only root is sure to see all processes: a mount option of /proc can hide those of other users.
  owners.isComplete = ::geteuid() == 0;
  for (const std::string& name : *names) {
    if (const auto processId = ReadDigits(name)) {
      CollectProcess(procFolder + "/" + name, *processId, owners);
    }
  }
  for (auto& entry : owners.byInode) {
    std::sort(entry.second.begin(), entry.second.end(),
              [](const SocketOwner& left, const SocketOwner& right) {
                return left.processId < right.processId;
              });
  }
  return owners;
}

}  // namespace Kestrel::Host
