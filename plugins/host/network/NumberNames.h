// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

namespace Kestrel::Host {

/// The name of a number or of a bit that the kernel defines.
struct NumberName {
  unsigned number;
  const char* name;
};

/// Returns the name of `number`, or its decimal digits if it is not in the table.
template <std::size_t Count>
std::string NameOf(const NumberName (&names)[Count], unsigned number) {
  for (const NumberName& entry : names) {
    if (entry.number == number) {
      return entry.name;
    }
  }
  return std::to_string(number);
}

/// Returns the names of the bits that are set, in the order of the table. Ignores bits that are not
/// in the table.
template <std::size_t Count>
std::vector<std::string> NamesOfBits(const NumberName (&names)[Count], unsigned bits) {
  std::vector<std::string> found;
  for (const NumberName& entry : names) {
    if ((bits & entry.number) != 0) {
      found.emplace_back(entry.name);
    }
  }
  return found;
}

}  // namespace Kestrel::Host
