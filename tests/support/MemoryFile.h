// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

namespace Kestrel::Testing {

/// A file in memory that can be passed on as a file descriptor or opened by its path.
class MemoryFile {
 public:
  MemoryFile() : descriptor_(memfd_create("kestrel-test", MFD_CLOEXEC)) {
    if (descriptor_ == -1) {
      throw std::runtime_error("Unable to create a file in memory");
    }
  }
  ~MemoryFile() { close(descriptor_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  int GetDescriptor() const { return descriptor_; }
  std::string GetPath() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

  /// Replaces the contents. The next read from the file descriptor starts at the beginning.
  void Write(std::string_view text) const {
    if (ftruncate(descriptor_, 0) != 0 || lseek(descriptor_, 0, SEEK_SET) != 0 ||
        write(descriptor_, text.data(), text.size()) != static_cast<ssize_t>(text.size()) ||
        lseek(descriptor_, 0, SEEK_SET) != 0) {
      throw std::runtime_error("Unable to write to a file in memory");
    }
  }

  std::string Read() const {
    std::string text;
    std::array<char, 65536> buffer;
    off_t position = 0;
    for (;;) {
      const ssize_t count = pread(descriptor_, buffer.data(), buffer.size(), position);
      if (count <= 0) {
        return text;
      }
      text.append(buffer.data(), static_cast<std::size_t>(count));
      position += count;
    }
  }

 private:
  const int descriptor_;
};

}  // namespace Kestrel::Testing
