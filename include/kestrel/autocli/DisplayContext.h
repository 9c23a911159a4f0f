// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

namespace Kestrel::AutoCli {

/// The size of the terminal that a formatter prints for. A byte of text fills one column.
struct DisplayContext {
  /// Columns; 0 when there is no terminal, and then no formatter wraps a line.
  std::uint16_t width = 0;

  /// Rows; 0 when there is no terminal.
  std::uint16_t height = 0;
};

}  // namespace Kestrel::AutoCli
