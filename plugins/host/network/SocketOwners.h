// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <map>
#include <string>
#include <vector>

namespace Kestrel::Host {

/// A process that has a socket open.
struct SocketOwner {
  long processId = 0;
  std::string name;
};

/// Which processes have sockets open.
struct SocketOwners {
  /// The processes by the inode of the socket, sorted by number.
  std::map<long, std::vector<SocketOwner>> byInode;
  /// Whether this process could look into all processes.
  bool isComplete = true;
};

/// Reads the open files of all processes. Those that this process may not look into make the result
/// incomplete; those that end before they are read are skipped. Throws KestrelException if the
/// system refuses for another reason.
SocketOwners ReadSocketOwners(const std::string& procFolder);

}  // namespace Kestrel::Host
