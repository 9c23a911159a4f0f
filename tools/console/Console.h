// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <utility>

namespace Kestrel::Console {

/// The standard streams of a program whose messages begin with its name.
class Console {
 public:
  explicit Console(std::string program) : program_(std::move(program)) {}

  /// Writes "PROGRAM: `text`" to standard error. On a terminal, control characters are visible.
  void Complain(const std::string& text) const;

  /// Writes `text` to standard output. Returns whether all of it was written; complains if not.
  bool Print(const std::string& text) const;

 private:
  const std::string program_;
};

}  // namespace Kestrel::Console
