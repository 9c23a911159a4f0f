// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string>

namespace Kestrel::AutoCli {

/// Reads the decimal integer that `text` begins with, after white space and with an optional sign;
/// whatever follows it is left alone. False, with `value` unchanged, when there is none or it does
/// not fit in 64 bits.
bool ReadLeadingInteger(const std::string& text, std::int64_t& value);

}  // namespace Kestrel::AutoCli
