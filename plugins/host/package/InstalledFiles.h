// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

#include "plugins/host/package/PackageDatabase.h"

namespace Kestrel::Host {

/// A file or directory that belongs to a package.
struct InstalledFile {
  std::string path;
  std::string divertedTo;  ///< the actual path of a diverted file; otherwise empty
};

/// Returns the files of a package in the order in which dpkg recorded them. Throws KestrelException
/// if the list or the diversions cannot be read completely.
std::vector<InstalledFile> ReadInstalledFiles(const Package& package,
                                              const std::string& folder = kDpkgFolder);

}  // namespace Kestrel::Host
