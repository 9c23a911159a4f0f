// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

namespace Kestrel::Host {

/// A user's regular expression (Perl syntax) that is looked for anywhere in a text.
class TextPattern {
 public:
  /// Throws KestrelException with the reason when the expression is none.
  explicit TextPattern(const std::string& expression);
  TextPattern(const TextPattern&) = delete;
  TextPattern& operator=(const TextPattern&) = delete;
  ~TextPattern();

  /// Throws KestrelException when the search takes too long to be worth it.
  bool IsIn(const std::string& text) const;

 private:
  struct Compiled;

  std::string expression_;
  std::unique_ptr<const Compiled> compiled_;
};

}  // namespace Kestrel::Host
