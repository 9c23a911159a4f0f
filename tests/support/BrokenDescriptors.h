// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

namespace Kestrel::Testing {

/// A descriptor that breaks a rule.
struct BrokenDescriptor {
  std::string name;   ///< the name of the file, without its suffix
  std::string fault;  ///< the end of the error message; "@" stands for the path
};

/// Returns all descriptors of the folder below, grouped by the part that has the fault.
const std::vector<BrokenDescriptor>& GetBrokenDescriptors();

/// Returns the folder that contains the files of these descriptors.
std::string GetBrokenDescriptorFolder();

}  // namespace Kestrel::Testing
