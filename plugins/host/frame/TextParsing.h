// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string_view>
#include <vector>

namespace Kestrel::Host {

// White space is a space, a tab, a carriage return or a line feed. The views that these functions
// return point into `text`.

bool StartsWith(std::string_view text, std::string_view prefix);

/// `text` without the white space at both ends.
std::string_view Trim(std::string_view text);

/// The pieces between separators, including empty ones; at least one.
std::vector<std::string_view> Split(std::string_view text, char separator);

/// The words between runs of white space.
std::vector<std::string_view> SplitWords(std::string_view text);

/// The lines of `text`; a line feed at the end does not start another one.
std::vector<std::string_view> SplitLines(std::string_view text);

/// The decimal number, with white space around it or not, that `text` consists of. Nothing for
/// anything else and for a number beyond 64 bits.
std::optional<long> ParseNumber(std::string_view text);

/// The numbers of a list such as "0-3,8", as the kernel writes sets of processors. Leaves out each
/// piece that is no number or range, and each range of more than 65536 numbers.
std::vector<long> ParseNumberList(std::string_view text);

// Arithmetic on numbers from outside: a result beyond 64 bits becomes the nearest long.
long ClampedSum(long left, long right);
long ClampedDifference(long left, long right);
long ClampedProduct(long left, long right);

}  // namespace Kestrel::Host
