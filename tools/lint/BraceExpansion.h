// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <vector>

namespace Kestrel::Lint {

/// A byte of a word, and whether quotes or a backslash protect it. A quoted NUL marks the place of
/// a pair of quotes, because even empty quotes make a word.
struct RawByte {
  char byte;
  bool isQuoted;
};
using RawWord = std::vector<RawByte>;

/// Returns the words into which bash expands braces such as "{a,b}" and "{1..3}"; at most a few
/// dozen.
std::vector<RawWord> ExpandBraces(const RawWord& word);

}  // namespace Kestrel::Lint
