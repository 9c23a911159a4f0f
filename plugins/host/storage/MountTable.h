// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "plugins/host/frame/HostFile.h"

namespace Kestrel::Host {

/// One mounted file system, as seen from the root directory of this process.
struct Mount {
  long id = 0;
  long parentId = 0;
  dev_t device = 0;
  std::string source;  ///< A device, a server's path or a word such as "tmpfs".
  std::string target;  ///< The directory that it is mounted on.
  std::string type;
  std::string root;  ///< Which folder of the file system is mounted; "/" for all of it.
  std::vector<std::string> options;  ///< "ro" or "rw", then the mount's and the file system's.
  bool isHidden = false;  ///< Whether another mount lies over it, so that no path leads to it.

  bool HasOption(const std::string& option) const;
};

/// The mounts, with devices named as below `sysFolder`, in a file in the form of
/// /proc/self/mountinfo, in its order. A line that is damaged is left out. Throws KestrelException
/// when the file cannot be read.
std::vector<Mount> ReadMounts(const std::string& path = "/proc/self/mountinfo",
                              const std::string& sysFolder = kSys);

}  // namespace Kestrel::Host
