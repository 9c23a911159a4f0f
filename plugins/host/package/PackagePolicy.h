// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <map>
#include <string>
#include <string_view>

namespace Kestrel::Host {

/// The version of a package that apt would install.
struct PackageCandidate {
  bool isKnown = false;  ///< whether the output says which version that is, or that there is none
  std::string version;   ///< empty if there is none
  std::string source;    ///< where apt would get it from; empty if no package list contains it
};

/// The result of "apt-cache policy".
struct PackagePolicy {
  std::map<std::string, PackageCandidate> candidates;  ///< by the name that apt prints
  bool hasLists = false;  ///< whether apt knows any version from a package list

  /// Adds the packages in the program's output. Throws KestrelException if the output has another
  /// form or ends within a line.
  void Add(std::string_view output);
};

}  // namespace Kestrel::Host
