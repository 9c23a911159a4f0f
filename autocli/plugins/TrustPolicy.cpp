// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/plugins/TrustPolicy.h"

namespace Kestrel::AutoCli {

bool IsTrustRequired(const ProcessRights& rights, bool isInDefaultFolder) {
  return HasForeignRights(rights) || (isInDefaultFolder && rights.effectiveUser == 0);
}

std::optional<std::string> FindDistrust(const struct stat& status, uid_t owner) {
  if (status.st_uid != 0 && status.st_uid != owner) {
    return "belongs to user " + std::to_string(status.st_uid) +
           ", who is neither root nor the owner of this program";
  }
  const bool isSafe =
      S_ISLNK(status.st_mode) || (S_ISDIR(status.st_mode) && (status.st_mode & S_ISVTX) != 0);
  if (!isSafe && (status.st_mode & S_IWOTH) != 0) {
    return "can be written by every user";
  }
  if (!isSafe && (status.st_mode & S_IWGRP) != 0) {
    return "can be written by its group";
  }
  return std::nullopt;
}

}  // namespace Kestrel::AutoCli
