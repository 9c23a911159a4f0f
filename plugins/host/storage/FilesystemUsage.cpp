// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/storage/FilesystemUsage.h"

#include <limits>

namespace Kestrel::Host {
namespace {

// Some file systems report more free space than they have; their usage counts as 0.
std::uint64_t Difference(std::uint64_t all, std::uint64_t free) {
  return all > free ? all - free : 0;
}

}  // namespace

std::uint64_t FilesystemUsage::GetUsed() const { return Difference(size, free); }

std::uint64_t FilesystemUsage::GetUsedInodes() const { return Difference(inodes, freeInodes); }

long FilesystemUsage::GetPercent() const {
  const long double used = GetUsed();
  const long double usable = used + available;
  if (usable == 0) {
    return 0;
  }
  const long double percent = 100 * used / usable;
  const long whole = static_cast<long>(percent);
  return whole + (percent > whole ? 1 : 0);
}

long ToLong(std::uint64_t number) {
  constexpr std::uint64_t kMax = std::numeric_limits<long>::max();
  return static_cast<long>(number < kMax ? number : kMax);
}

}  // namespace Kestrel::Host
