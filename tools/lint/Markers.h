// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Lint {

/// A marker of a template.
struct Marker {
  enum class Kind { Value, Conditional, List, MultiList };

  Kind kind = Kind::Value;
  std::string name;
  std::size_t begin = 0;
  std::size_t end = 0;  // the byte after the marker
};

/// A fault in the form of a marker.
struct MarkerFault {
  const char* rule;
  std::size_t position;
  std::string what;
  std::string advice;
  std::string name;  // the parameter that was probably meant
};

/// The markers of a template and the faults in their form.
struct MarkerList {
  std::vector<Marker> markers;
  std::vector<MarkerFault> faults;
};

/// Finds the markers of a template for parameters of these names, in the order of their beginnings.
MarkerList FindMarkers(std::string_view text, const std::vector<std::string>& names);

}  // namespace Kestrel::Lint
