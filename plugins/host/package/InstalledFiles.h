// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

#include "plugins/host/package/PackageDatabase.h"

namespace Kestrel::Host {

/// A file or directory that a package brought.
struct InstalledFile {
  std::string path;
  std::string divertedTo;  ///< where it is instead, because another has the path; else empty
};

/// The files of a package in the order in which dpkg recorded them. Throws KestrelException when
/// they, or the diversions, cannot be read whole.
std::vector<InstalledFile> ReadInstalledFiles(const Package& package,
                                              const std::string& folder = kDpkgFolder);

}  // namespace Kestrel::Host
