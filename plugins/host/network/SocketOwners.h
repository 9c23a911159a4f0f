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

/// The processes that have sockets open.
struct SocketOwners {
  /// The processes by the inode of the socket, sorted by process number.
  std::map<long, std::vector<SocketOwner>> byInode;
  /// Whether no process is missing. False if the files of a process could not be read, or if this
  /// user is not root, because only root is sure to see all processes.
  bool isComplete = true;
};

/// Reads the open files of all processes. A process that this user may not read makes the result
/// incomplete; one that ends before it is read is skipped. Throws KestrelException if reading fails
/// for another reason.
SocketOwners ReadSocketOwners(const std::string& procFolder);

}  // namespace Kestrel::Host
