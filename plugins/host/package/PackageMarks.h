// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>
#include <unordered_set>

#include "plugins/host/package/PackageDatabase.h"

namespace Kestrel::Host {

/// The folder in which apt keeps its data.
extern const char* const kAptFolder;

/// apt's marks of packages that were installed automatically, as dependencies of others.
class PackageMarks {
 public:
  /// Without a file of marks none is marked, as on a machine without apt. Throws KestrelException
  /// when the file cannot be read, is cut or damaged.
  explicit PackageMarks(std::string_view nativeArchitecture,
                        const std::string& folder = kAptFolder);

  bool IsAutomatic(const Package& package) const;

 private:
  std::string native_;
  std::unordered_set<std::string> automatic_;  // "name:architecture"
};

}  // namespace Kestrel::Host
