// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <vector>

namespace Kestrel::Lint {

/// A byte of a word, and whether quotes or a backslash protect it. A quoted NUL stands for quotes,
/// which may be empty.
struct RawByte {
  char byte;
  bool isQuoted;
};
using RawWord = std::vector<RawByte>;

/// The words that bash makes of braces such as "{a,b}" and "{1..3}", at most some dozens.
std::vector<RawWord> ExpandBraces(const RawWord& word);

}  // namespace Kestrel::Lint
