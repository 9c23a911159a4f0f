// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstddef>
#include <fstream>

namespace Kestrel::Testing {

/// During its lifetime, the process receives at most `kRest` more bytes of memory from the system.
/// The sanitizers need too much memory for such a limit.
class MemoryLimit {
 public:
  static constexpr std::size_t kRest = 1024 * 1024;

  MemoryLimit() {
    getrlimit(RLIMIT_AS, &before_);
    malloc_trim(0);
    const rlimit low = {ReadSize() + kRest, before_.rlim_max};
    setrlimit(RLIMIT_AS, &low);
  }
  MemoryLimit(const MemoryLimit&) = delete;
  MemoryLimit& operator=(const MemoryLimit&) = delete;
  ~MemoryLimit() { setrlimit(RLIMIT_AS, &before_); }

 private:
  /// Returns the size of the address space of this process.
  static std::size_t ReadSize() {
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  }

  rlimit before_ = {};
};

}  // namespace Kestrel::Testing
