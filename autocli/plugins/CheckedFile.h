// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

#include "autocli/process/FileDescriptor.h"

namespace Kestrel::AutoCli {

/// A file that has passed the checks.
struct CheckedFile {
  FileDescriptor descriptor;  ///< Refers to the file, but not for reading; none after an error.
  int error = 0;              ///< Why `descriptor` is none, as an errno value.
};

/// Opens the file at `path`. Checks the file, and every folder and symbolic link on the way to it,
/// by the policy in TrustPolicy.h. Each is opened only once, and the checks apply to what was
/// opened.
///
/// Throws KestrelException when something is not trusted or cannot be examined, and when there is
/// no /proc, without which the file cannot be opened through its file descriptor.
CheckedFile OpenCheckedFile(const std::string& path);

/// Whether this process checks a plug-in before it loads it.
bool IsTrustRequired(bool isInDefaultFolder);

/// Returns a path that refers to the file of `descriptor` as long as `descriptor` is open.
std::string PathOfDescriptor(int descriptor);

}  // namespace Kestrel::AutoCli
