// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string_view>

#include "vexil/formats/FormatOptions.h"

namespace Kestrel::Formats {

/// What a string means, which decides how it is printed.
enum class Style { Plain, Name, Integer, Boolean, Good, Warning, Bad };

/// The escape sequences that may be printed.
class Palette {
 public:
  /// Without sequences.
  Palette() = default;

  /// Without `hasSequences`, `hasColors` has no effect.
  Palette(bool hasSequences, bool hasColors)
      : hasSequences_(hasSequences), hasColors_(hasSequences && hasColors) {}

  /// Returns the palette for a call. Unless `options` says otherwise, there are sequences if the
  /// result goes to a terminal that understands them, and the environment variable NO_COLOR removes
  /// the colours.
  static Palette For(const FormatOptions& options);

  bool HasSequences() const { return hasSequences_; }

  /// Returns the sequence that begins a string of that style; empty if the string is printed
  /// unchanged.
  std::string_view Begin(Style style) const;

  /// The sequence that ends such a string.
  static constexpr std::string_view kEnd = "\x1b[0m";

 private:
  bool hasSequences_ = false;
  bool hasColors_ = false;
};

}  // namespace Kestrel::Formats
