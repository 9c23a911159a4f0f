// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Formats {

/// Thrown if a value cannot be printed. `problem` continues a sentence that begins with the value,
/// for example "is not valid UTF-8".
struct ValueFault {
  std::string problem;
};

/// Thrown if a result cannot be printed. The message names the value.
struct ResultFault {
  std::string message;
};

/// Where a value is in a result.
struct ValueLocation {
  std::vector<std::string> fields;    ///< the names that lead to it, the outermost first
  std::vector<std::size_t> elements;  ///< the positions in the lists that contain it, from 1
};

/// Returns the pieces of a message as one string.
std::string Concat(std::initializer_list<std::string_view> pieces);

/// Combines what is wrong with a value and where it is.
ResultFault LocateFault(const ValueFault& fault, const ValueLocation& location);

/// Returns the fault for an invalid field name.
ResultFault LocateNameFault(const ValueFault& fault, const std::string& name);

}  // namespace Kestrel::Formats
