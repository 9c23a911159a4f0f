// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace Kestrel::Fuzz {

/// Bounds of the targets that print values. Each byte of the input can add a line or a column,
/// indented as far as the bytes before it demand, so the output grows at most with the square of
/// the input.
constexpr std::size_t kMaxInputOfFormatter = 2048;
constexpr std::size_t kMaxOutputOfFormatter = kMaxInputOfFormatter * kMaxInputOfFormatter;

/// Writes a line to standard error. Avoids `std::cerr`, which a target may capture.
inline void WriteLine(std::string_view start, std::string_view text) {
  std::fwrite(start.data(), 1, start.size(), stderr);
  std::fwrite(text.data(), 1, text.size(), stderr);
  std::fputc('\n', stderr);
}

/// Aborts the process unless `holds`; this is how a target fails. `claim` describes the property.
inline void Require(bool holds, std::string_view claim) {
  if (!holds) {
    WriteLine("Does not hold: ", claim);
    std::abort();
  }
}

/// Aborts the process unless both strings are equal, after printing them.
inline void RequireEqual(std::string_view actual, std::string_view expected,
                         std::string_view claim) {
  if (actual != expected) {
    WriteLine("--- actual\n", actual);
    WriteLine("--- expected\n", expected);
  }
  Require(actual == expected, claim);
}

}  // namespace Kestrel::Fuzz
