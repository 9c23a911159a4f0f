// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

namespace Kestrel::Host {

/// The usage of a file system in bytes and in inodes.
struct FilesystemUsage {
  std::uint64_t size = 0;
  std::uint64_t free = 0;
  std::uint64_t available =
      0;  ///< Free for all users. The rest of `free` is reserved for the superuser.
  std::uint64_t inodes = 0;  ///< 0 if there is no limit.
  std::uint64_t freeInodes = 0;

  std::uint64_t GetUsed() const;
  std::uint64_t GetUsedInodes() const;
  /// Returns the used part of the used and available space, in percent, rounded up; 0 if both are
  /// 0.
  long GetPercent() const;
};

/// Converts a number to long. Numbers that are too large become the largest long.
long ToLong(std::uint64_t number);

}  // namespace Kestrel::Host
