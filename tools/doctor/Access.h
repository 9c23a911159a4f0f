// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

namespace Kestrel::Doctor {

/// Who may change a file or folder.
struct Access {
  std::string path;
  std::string owner;  ///< the name of the user, or the number if there is none
  std::string mode;   ///< four octal digits
};

/// The access to a plug-in and to the folders above it.
struct FileAccess {
  Access file;
  std::vector<Access> folders;      ///< of the real path, from the root on, then of the given path
  std::vector<std::string> faults;  ///< how another user, except root, can replace it
};

/// Returns the access to the file that a path leads to and to the folders above it. All members are
/// empty for a file that cannot be reached.
FileAccess ReadAccess(const std::string& file);

}  // namespace Kestrel::Doctor
