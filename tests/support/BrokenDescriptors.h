// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

namespace Kestrel::Testing {

/// A descriptor that breaks a rule.
struct BrokenDescriptor {
  std::string name;   ///< of the file, without its suffix
  std::string fault;  ///< what is said of it; "@" stands for its path
};

/// All the files of the folder, grouped by what is wrong with them.
const std::vector<BrokenDescriptor>& GetBrokenDescriptors();

/// Where they stand.
std::string GetBrokenDescriptorFolder();

}  // namespace Kestrel::Testing
