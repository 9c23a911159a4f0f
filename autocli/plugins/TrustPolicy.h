// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>

#include "autocli/process/ProcessRights.h"

// Decides whose plug-ins a process loads. The policy refuses a plug-in only where a user other than
// root and the owner of the program could make a process with more rights run code: see
// docs/security.md. The functions are inline because vexil-complete and vexil-doctor use them too,
// and the library does not export them.

namespace Kestrel::AutoCli {

/// Whether a process with these rights checks a plug-in. A process with rights that its user does
/// not have checks every plug-in; root checks those in the default folders.
inline bool IsTrustRequired(const ProcessRights& rights, bool isInDefaultFolder) {
  return HasForeignRights(rights) || (isInDefaultFolder && rights.effectiveUser == 0);
}

/// Whether `mode` is that of a folder in which users can remove and rename only their own files.
inline bool IsStickyFolder(mode_t mode) { return S_ISDIR(mode) && (mode & S_ISVTX) != 0; }

/// Returns the end of a sentence that begins with a path and says who may write there besides the
/// owner. Returns nothing if no one else may.
inline std::optional<std::string> FindOtherWriters(mode_t mode) {
  if ((mode & S_IWOTH) != 0) {
    return "can be written by every user";
  }
  if ((mode & S_IWGRP) != 0) {
    return "can be written by its group";
  }
  return std::nullopt;
}

/// Returns why a file, a folder above it or a symbolic link on its path is not trusted: the end of
/// a sentence that begins with its path. Nothing when only root and `owner`, the owner of the
/// running program, can change it.
///
/// The mode of a link has no meaning. A sticky folder passes, because users can remove and rename
/// only their own files in it; each file in it must pass by itself.
inline std::optional<std::string> FindDistrust(const struct stat& status, uid_t owner) {
  if (status.st_uid != 0 && status.st_uid != owner) {
    return "belongs to user " + std::to_string(status.st_uid) +
           ", who is neither root nor the owner of this program";
  }
  if (S_ISLNK(status.st_mode) || IsStickyFolder(status.st_mode)) {
    return std::nullopt;
  }
  return FindOtherWriters(status.st_mode);
}

}  // namespace Kestrel::AutoCli
