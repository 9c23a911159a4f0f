// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/auxv.h>
#include <unistd.h>

namespace Kestrel::AutoCli {

/// The users and groups of a process: the real ones started it, the effective ones determine what
/// it may do.
struct ProcessRights {
  uid_t user = 0;
  uid_t effectiveUser = 0;
  gid_t group = 0;
  gid_t effectiveGroup = 0;
  bool isSecure = false;  ///< The kernel reports rights that the user does not have (AT_SECURE).
};

inline ProcessRights GetProcessRights() {
  return {getuid(), geteuid(), getgid(), getegid(), getauxval(AT_SECURE) != 0};
}

/// Whether the process may do what the user that started it may not: its program is set-user-id,
/// set-group-id or has capabilities.
inline bool HasForeignRights(const ProcessRights& rights) {
  return rights.isSecure || rights.user != rights.effectiveUser ||
         rights.group != rights.effectiveGroup;
}

}  // namespace Kestrel::AutoCli
