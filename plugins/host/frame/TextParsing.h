// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Host {

// White space means spaces, tabs, carriage returns and line feeds. Returned views point into
// `text`.

/// Replaces the ASCII capital letters by lower-case letters, regardless of the locale.
std::string LowerCase(std::string_view text);

bool StartsWith(std::string_view text, std::string_view prefix);

/// Returns `text` without white space at its ends.
std::string_view Trim(std::string_view text);

/// Splits at every separator. Pieces may be empty; there is at least one.
std::vector<std::string_view> Split(std::string_view text, char separator);

/// Splits at runs of white space. No word is empty.
std::vector<std::string_view> SplitWords(std::string_view text);

/// Splits into lines. A final line feed does not start another line.
std::vector<std::string_view> SplitLines(std::string_view text);

/// Parses a decimal integer, which may have a minus sign. White space around it is ignored. Returns
/// nothing for anything else, and for a number that does not fit into 64 bits.
std::optional<long> ParseNumber(std::string_view text);

/// Parses a list such as "0-3,8", the form in which the kernel writes sets of processors. Skips
/// pieces that are neither numbers nor ranges, and ranges of more than 65536 numbers.
std::vector<long> ParseNumberList(std::string_view text);

// Arithmetic on untrusted numbers: a result that does not fit into 64 bits becomes the nearest
// number that does.
long ClampedSum(long left, long right);
long ClampedDifference(long left, long right);
long ClampedProduct(long left, long right);

}  // namespace Kestrel::Host
