// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <string>
#include <string_view>

#include "Property.h"

namespace Kestrel::Fuzz {

/// A file that has a path and touches no disk.
class MemoryFile {
 public:
  MemoryFile() : descriptor_(memfd_create("fuzz", MFD_CLOEXEC)) {
    Require(descriptor_ >= 0, "a file in memory can be made");
  }
  ~MemoryFile() { close(descriptor_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  /// Replaces what the file holds.
  void Write(std::string_view text) const {
    const bool isWritten =
        ftruncate(descriptor_, 0) == 0 &&
        pwrite(descriptor_, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size());
    Require(isWritten, "a file in memory can be written");
  }

  std::string GetPath() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

 private:
  const int descriptor_;
};

}  // namespace Kestrel::Fuzz
