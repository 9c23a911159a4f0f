// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/ByteSize.h"

#include <cstddef>
#include <iterator>

namespace Kestrel::Host {
namespace {

constexpr std::uint64_t kStep = 1024;
constexpr const char* kUnits[] = {"B", "KiB", "MiB", "GiB", "TiB", "PiB", "EiB"};
constexpr std::size_t kLastUnit = std::size(kUnits) - 1;

/// Returns `bytes` in tenths of the unit 1024 to the power of `exponent`, rounded to the nearest.
/// Divides before multiplying, so that no number of bytes overflows.
std::uint64_t TenthsOf(std::uint64_t bytes, std::size_t exponent) {
  const std::uint64_t unit = std::uint64_t{1} << (10 * exponent);
  const std::uint64_t whole = bytes / unit;
  const std::uint64_t rest = bytes % unit;
  // The remainder is below 2^60, so ten times the remainder fits.
  return whole * 10 + (rest * 10 + unit / 2) / unit;
}

std::string Format(std::uint64_t bytes) {
  if (bytes < kStep) {
    return std::to_string(bytes) + " " + kUnits[0];
  }
  std::size_t exponent = 1;
  while (exponent < kLastUnit && TenthsOf(bytes, exponent) >= kStep * 10) {
    ++exponent;
  }
  const std::uint64_t tenths = TenthsOf(bytes, exponent);
  return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " " + kUnits[exponent];
}

}  // namespace

std::string FormatByteSize(std::int64_t bytes) {
  if (bytes >= 0) {
    return Format(static_cast<std::uint64_t>(bytes));
  }
  return "-" + Format(~static_cast<std::uint64_t>(bytes) + 1);
}

}  // namespace Kestrel::Host
