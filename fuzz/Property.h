// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace Kestrel::Fuzz {

/// Writes a line past `std::cerr`, which a target may be listening to.
inline void WriteLine(std::string_view start, std::string_view text) {
  std::fwrite(start.data(), 1, start.size(), stderr);
  std::fwrite(text.data(), 1, text.size(), stderr);
  std::fputc('\n', stderr);
}

/// Ends the process by `abort` unless `holds`: how a target fails. `claim` is what was to hold.
inline void Require(bool holds, std::string_view claim) {
  if (!holds) {
    WriteLine("Does not hold: ", claim);
    std::abort();
  }
}

/// The same for two texts that have to be equal; both are shown.
inline void RequireEqual(std::string_view actual, std::string_view expected,
                         std::string_view claim) {
  if (actual != expected) {
    WriteLine("--- actual\n", actual);
    WriteLine("--- expected\n", expected);
  }
  Require(actual == expected, claim);
}

}  // namespace Kestrel::Fuzz
