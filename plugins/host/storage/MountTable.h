// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "plugins/host/frame/HostFile.h"

namespace Kestrel::Host {

/// A mounted file system, as seen from the root directory of this process.
struct Mount {
  long id = 0;
  long parentId = 0;
  dev_t device = 0;
  std::string source;  ///< A device, a path on a server, or a word such as "tmpfs".
  std::string target;  ///< The mount point.
  std::string type;
  std::string root;                  ///< The mounted folder of the file system; "/" for all of it.
  std::vector<std::string> options;  ///< "ro" or "rw", followed by the other options.
  bool isHidden = false;             ///< Whether no path leads to it, because of a mount over it.

  bool HasOption(const std::string& option) const;
};

/// Returns the mounts listed in a file in the format of /proc/self/mountinfo, in its order. Skips
/// damaged lines. `sysFolder` is where the name of the root device is looked up. Throws
/// KestrelException if the file cannot be read.
std::vector<Mount> ReadMounts(const std::string& path = "/proc/self/mountinfo",
                              const std::string& sysFolder = kSys);

}  // namespace Kestrel::Host
