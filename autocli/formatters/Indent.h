// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>

namespace Kestrel::AutoCli {

/// How many blanks a level of nesting adds, in every formatter that indents.
constexpr std::size_t kIndentStep = 3;

/// The width of the indentation at a level; nothing below level 1.
constexpr std::size_t IndentOf(long level) {
  return level < 1 ? 0 : kIndentStep * static_cast<std::size_t>(level);
}

}  // namespace Kestrel::AutoCli
