// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/DispatcherOptions.h"

#include <algorithm>

namespace Kestrel::Vexil {

const DispatcherOption* FindDispatcherOption(std::string_view name) {
  const auto* const found =
      std::find_if(kDispatcherOptions.begin(), kDispatcherOptions.end(),
                   [name](const DispatcherOption& option) { return option.name == name; });
  return found == kDispatcherOptions.end() ? nullptr : found;
}

}  // namespace Kestrel::Vexil
