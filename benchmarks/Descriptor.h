// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Kestrel::Benchmarks {

/// Returns a descriptor with ten commands in a namespace of this name.
std::string MakeDescriptor(const std::string& name);

/// A folder of descriptors, each with its own namespace of ten commands. Deleted with the object.
class DescriptorFolder {
 public:
  explicit DescriptorFolder(std::int64_t count);
  DescriptorFolder(const DescriptorFolder&) = delete;
  DescriptorFolder& operator=(const DescriptorFolder&) = delete;
  ~DescriptorFolder();

  const std::vector<std::string>& GetFiles() const { return files_; }

 private:
  std::string path_;
  std::vector<std::string> files_;
};

}  // namespace Kestrel::Benchmarks
