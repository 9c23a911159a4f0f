// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace Kestrel::Fuzz {

/// Bounds of the targets that print values. The output grows at most with the square of the input:
/// each byte can add a line or a column, whose indentation depends on the bytes before it.
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

/// Like Require, for two strings that must be equal. Prints both if they differ.
inline void RequireEqual(std::string_view actual, std::string_view expected,
                         std::string_view claim) {
  if (actual != expected) {
    WriteLine("--- actual\n", actual);
    WriteLine("--- expected\n", expected);
  }
  Require(actual == expected, claim);
}

}  // namespace Kestrel::Fuzz
