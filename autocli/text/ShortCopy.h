// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstring>

namespace Kestrel::AutoCli {

// Like memcpy, but without a function call for short strings, such as names and numbers. The call
// would take longer than the copy.

/// Copies `size` bytes as two blocks that may overlap. `size` is at least `Half` and at most
/// 2 * `Half`.
template <std::size_t Half>
void CopyEnds(char* to, const char* from, std::size_t size) {
  char first[Half];
  char last[Half];
  std::memcpy(first, from, Half);
  std::memcpy(last, from + size - Half, Half);
  std::memcpy(to, first, Half);
  std::memcpy(to + size - Half, last, Half);
}

/// Copies up to 16 bytes.
[[gnu::always_inline]] inline void CopyUpTo16(char* to, const char* from, std::size_t size) {
  if (size >= 8) {
    CopyEnds<8>(to, from, size);
  } else if (size >= 4) {
    CopyEnds<4>(to, from, size);
  } else if (size > 0) {
    to[0] = from[0];
    to[size / 2] = from[size / 2];
    to[size - 1] = from[size - 1];
  }
}

/// Copies `size` bytes; up to 64 without a function call.
[[gnu::always_inline]] inline void CopyBytes(char* to, const char* from, std::size_t size) {
  if (size <= 16) {
    return CopyUpTo16(to, from, size);
  }
  if (size <= 32) {
    return CopyEnds<16>(to, from, size);
  }
  if (size > 64) {
    std::memcpy(to, from, size);
    return;
  }
  CopyEnds<16>(to, from, 32);
  CopyEnds<16>(to + size - 32, from + size - 32, 32);
}

}  // namespace Kestrel::AutoCli
