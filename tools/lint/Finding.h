// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string>

#include "tools/lint/Rules.h"

namespace Kestrel::Lint {

/// A place in a file, counted from 1. A column is a character, not a byte.
struct Position {
  std::size_t line = 1;
  std::size_t column = 1;
};

/// One thing that is wrong in one file.
struct Finding {
  std::string file;
  Position position;
  const Rule* rule = nullptr;
  /// What is wrong, a semicolon, and what to do.
  std::string message;
};

/// Compares by file, place, rule and message.
bool operator<(const Finding& left, const Finding& right);
bool operator==(const Finding& left, const Finding& right);

}  // namespace Kestrel::Lint
