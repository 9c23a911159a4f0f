// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

namespace Kestrel::CallSpec {

/// A compiled regular expression.
class Expression {
 public:
  virtual ~Expression() = default;

  /// Whether the expression matches the whole of `value`. False if matching would take too many
  /// steps or too much memory.
  virtual bool MatchesWhole(const std::string& value) const = 0;
};

/// Compiles `text`, an expression in the Perl syntax of Boost.Regex. Throws the error of
/// Boost.Regex if the expression is invalid.
///
/// With the shared library, Boost.Regex is in a separate module, which the first call loads.
/// Loading it takes a third of the tool's start time, and few command lines need it. Throws
/// KestrelException if the module cannot be loaded.
std::unique_ptr<const Expression> CompileExpression(const std::string& text);

}  // namespace Kestrel::CallSpec
