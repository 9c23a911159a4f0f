// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

struct pcre2_real_code_8;

namespace Kestrel::Host {

/// A regular expression in Perl syntax, given by the user. It may match any part of a string.
///
/// A full stop matches any character, including a line feed. Strings are UTF-8; a byte that is not
/// valid UTF-8 matches no character of the expression. An expression that is itself not valid UTF-8
/// is matched byte by byte.
class Regex {
 public:
  /// Throws KestrelException with the reason if the expression is invalid.
  explicit Regex(const std::string& expression);
  Regex(const Regex&) = delete;
  Regex& operator=(const Regex&) = delete;
  ~Regex();

  /// Throws KestrelException with the reason if the search fails, for example because it backtracks
  /// too often, and std::bad_alloc if memory runs out.
  bool IsFoundIn(const std::string& text) const;

 private:
  struct CodeDeleter {
    void operator()(pcre2_real_code_8* code) const;
  };

  std::string expression_;
  std::unique_ptr<pcre2_real_code_8, CodeDeleter> code_;
};

}  // namespace Kestrel::Host
