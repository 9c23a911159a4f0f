// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>

#include "autocli/process/ProcessRights.h"

// Whose plug-ins a process loads. The policy refuses only where a user other than root and the
// owner of the program could make a process with more rights run code: see docs/security.md.

namespace Kestrel::AutoCli {

/// Whether a process with these rights checks a plug-in: all of them with the rights of another
/// user, those in the default folders as root.
bool IsTrustRequired(const ProcessRights& rights, bool isInDefaultFolder);

/// Returns why a file, a folder above it or a symbolic link on its path is not trusted: the end of
/// a sentence that begins with its path. Nothing when only root and `owner`, the owner of the
/// running program, can change it.
///
/// The mode of a link has no meaning. A sticky folder passes, because others cannot remove or
/// rename what is in it and does not belong to them; what is in it must pass itself.
std::optional<std::string> FindDistrust(const struct stat& status, uid_t owner);

}  // namespace Kestrel::AutoCli
