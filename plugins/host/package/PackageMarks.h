// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>
#include <unordered_set>

#include "plugins/host/package/PackageDatabase.h"

namespace Kestrel::Host {

/// The folder in which apt stores its data.
extern const char* const kAptFolder;

/// apt's marks for packages that were installed automatically, as dependencies of others.
class PackageMarks {
 public:
  /// Without a file of marks, as on a machine without apt, no package is marked. Throws
  /// KestrelException if the file cannot be read, is incomplete or is damaged.
  explicit PackageMarks(std::string_view nativeArchitecture,
                        const std::string& folder = kAptFolder);

  bool IsAutomatic(const Package& package) const;

 private:
  std::string native_;
  std::unordered_set<std::string> automatic_;  // "name:architecture"
};

}  // namespace Kestrel::Host
