// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>

namespace Kestrel::AutoCli {

/// The number of spaces per level of nesting, in every formatter that indents.
constexpr std::size_t kIndentStep = 3;

/// Returns the number of spaces of the indentation at `level`; 0 for a level below 1.
constexpr std::size_t IndentOf(long level) {
  return level < 1 ? 0 : kIndentStep * static_cast<std::size_t>(level);
}

}  // namespace Kestrel::AutoCli
