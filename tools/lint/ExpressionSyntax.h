// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <bitset>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Kestrel::Lint {

using ByteSet = std::bitset<256>;

/// A regular expression as a tree.
struct ExpressionNode {
  enum class Kind { Bytes, Sequence, Alternatives, Repeat };

  Kind kind = Kind::Sequence;
  ByteSet bytes;  // of Bytes
  std::vector<ExpressionNode> children;
  std::size_t least = 0;              // of Repeat
  std::optional<std::size_t> most{};  // of Repeat; nothing when there is no limit
};

/// Reads an expression in the syntax of constraints. Returns nothing if the expression contains
/// something that is not regular or not supported here, such as back-references, assertions, flags,
/// or anchors inside it. Does not detect every syntax error.
std::optional<ExpressionNode> ParseExpression(const std::string& text);

/// Returns a node that matches exactly `text`.
ExpressionNode LiteralExpression(const std::string& text);

}  // namespace Kestrel::Lint
