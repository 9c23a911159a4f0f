#pragma once

#include <cstdlib>
#include <iostream>
#include <string_view>

namespace Kestrel::Fuzz {

/// Ends the process by `abort` unless `holds`: how a target fails. `claim` is what was to hold.
inline void Require(bool holds, std::string_view claim) {
  if (!holds) {
    std::cerr << "Does not hold: " << claim << "\n";
    std::abort();
  }
}

/// The same for two texts that have to be equal; both are shown.
inline void RequireEqual(std::string_view actual, std::string_view expected,
                         std::string_view claim) {
  if (actual != expected) {
    std::cerr << "--- actual\n" << actual << "\n--- expected\n" << expected << "\n---\n";
  }
  Require(actual == expected, claim);
}

}  // namespace Kestrel::Fuzz
