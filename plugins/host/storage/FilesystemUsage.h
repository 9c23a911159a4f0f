// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

namespace Kestrel::Host {

/// How full a file system is, in bytes and in inodes.
struct FilesystemUsage {
  std::uint64_t size = 0;
  std::uint64_t free = 0;
  std::uint64_t available = 0;  ///< Free for every user; the rest of `free` is for the superuser.
  std::uint64_t inodes = 0;     ///< 0 when the file system sets no limit.
  std::uint64_t freeInodes = 0;

  std::uint64_t GetUsed() const;
  std::uint64_t GetUsedInodes() const;
  /// The used share of what every user may use, in percent, rounded up. 0 when there is nothing.
  long GetPercent() const;
};

/// The number, or the largest long when it is beyond.
long ToLong(std::uint64_t number);

/// A number of bytes in MiB, rounded up.
long ToMebibytes(std::uint64_t bytes);

}  // namespace Kestrel::Host
