// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <string_view>

namespace Kestrel::Vexil {

/// An option of the tool itself, which precedes the path.
struct DispatcherOption {
  /// Without dashes; a short option has one letter.
  std::string_view name;
  std::string_view description;
  bool hasValue;
  bool isRepeatable;
};

/// All options, in byte order of their names.
inline constexpr std::array<DispatcherOption, 8> kDispatcherOptions = {
    {{"format-param", "Set a parameter of the formatter: key=value.", true, true},
     {"formatter", "Print with this formatter.", true, false},
     {"h", "Show the dispatcher options.", false, false},
     {"help", "Show the dispatcher options.", false, false},
     {"input", "Read command lines from this file, or from STDIN.", true, false},
     {"plugin", "Load this plug-in.", true, true},
     {"plugin-dir", "Load all plug-ins in this folder.", true, true},
     {"screen-width", "Format for this number of columns.", true, false}}};

/// Returns the option with exactly this name, or null.
const DispatcherOption* FindDispatcherOption(std::string_view name);

}  // namespace Kestrel::Vexil
