// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Kestrel::Host {

/// Formats a number of hundredths as a decimal fraction: 46 is "0.46".
std::string FormatHundredths(long hundredths);

/// Parses a decimal number without a sign, such as 5 or 0.46, and returns its hundredths, ignoring
/// further digits. Returns nothing for anything else, and if the hundredths do not fit into 64
/// bits.
std::optional<long> ParseHundredths(std::string_view text);

}  // namespace Kestrel::Host
