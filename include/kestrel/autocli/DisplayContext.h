// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

namespace Kestrel::AutoCli {

/// The size of the screen for which a formatter prints. A byte takes one column.
struct DisplayContext {
  /// The number of columns; 0 if it is unlimited, as without a terminal. Formatters then wrap no
  /// lines.
  std::uint16_t width = 0;

  /// The number of rows; 0 if it is unknown, as without a terminal.
  std::uint16_t height = 0;
};

}  // namespace Kestrel::AutoCli
