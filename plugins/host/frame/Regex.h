// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

namespace Kestrel::Host {

/// A user's regular expression in Perl syntax, to be searched for anywhere in a text.
class Regex {
 public:
  /// Throws KestrelException with the reason when the expression is invalid.
  explicit Regex(const std::string& expression);
  Regex(const Regex&) = delete;
  Regex& operator=(const Regex&) = delete;
  ~Regex();

  /// Throws KestrelException when the search backtracks too much to finish.
  bool IsFoundIn(const std::string& text) const;

 private:
  struct Compiled;

  std::string expression_;
  std::unique_ptr<const Compiled> compiled_;
};

}  // namespace Kestrel::Host
