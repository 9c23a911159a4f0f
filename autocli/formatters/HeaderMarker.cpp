// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/formatters/HeaderMarker.h"

#include <cstddef>

namespace Kestrel::AutoCli {

std::string_view FindHeaderMarker(std::string_view header) {
  const std::size_t close = header.rfind('%');
  if (close == std::string_view::npos || close < 2) {
    return {};
  }
  const std::size_t open = header.rfind('%', close - 2);
  if (open == std::string_view::npos) {
    return {};
  }
  return header.substr(open + 1, close - open - 1);
}

}  // namespace Kestrel::AutoCli
