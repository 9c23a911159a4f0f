// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/PrettyRequest.h"

#include <cstdlib>
#include <string_view>

namespace Kestrel::Vexil {

bool IsPrettyRequested() {
  const char* const formatter = std::getenv("VEXIL_TERMINAL_FORMATTER");
  return formatter != nullptr && std::string_view(formatter) == "pretty";
}

bool YieldsToPretty(const std::string& formatter) {
  return formatter == "table" || formatter == "simple";
}

}  // namespace Kestrel::Vexil
