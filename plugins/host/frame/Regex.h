// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

namespace Kestrel::Host {

/// A regular expression in Perl syntax, given by the user, which may match any part of a string.
class Regex {
 public:
  /// Throws KestrelException with the reason if the expression is invalid.
  explicit Regex(const std::string& expression);
  Regex(const Regex&) = delete;
  Regex& operator=(const Regex&) = delete;
  ~Regex();

  /// Throws KestrelException if the search backtracks too often.
  bool IsFoundIn(const std::string& text) const;

 private:
  struct Compiled;

  std::string expression_;
  std::unique_ptr<const Compiled> compiled_;
};

}  // namespace Kestrel::Host
